#include "rewriting/scratch_file.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "command_test.h"

namespace h265tool {
namespace {

using test::Bytes;
using ::testing::IsEmpty;

class ScratchFileTest : public CommandTest {
 protected:
    void SetUp() override {
        if (const char *const directory = std::getenv("TMPDIR"))
            before_ = directory;
        setenv("TMPDIR", Path("").c_str(), 1);
    }
    void TearDown() override { before_.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", before_.c_str(), 1); }

 private:
    std::string before_;
};

TEST_F(ScratchFileTest, HasNoNameAndIsReadFromTheStart) {
    ScratchFile file;
    file.Write(Bytes{1, 2, 3});
    EXPECT_EQ(FileBytes(file.Path()), (Bytes{1, 2, 3}));
    file.Write(Bytes{4});
    EXPECT_EQ(FileBytes(file.Path()), (Bytes{1, 2, 3, 4}));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(ScratchFileTest, SaysWhenTheDirectoryIsNotThere) {
    setenv("TMPDIR", Path("nowhere").c_str(), 1);
    EXPECT_THROW(ScratchFile(), ScratchFileError);
    EXPECT_EQ(ScratchFile::Directory(), Path("nowhere"));
    setenv("TMPDIR", "", 1);
    EXPECT_EQ(ScratchFile::Directory(), "/tmp");
}

}  // namespace
}  // namespace h265tool
