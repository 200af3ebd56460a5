#include "rewriting/output_file.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "command_test.h"

namespace h265tool {
namespace {

using test::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class OutputFileTest : public CommandTest {
 protected:
    // What ends a process that gets `number` while its output is half written: a signal, else 0.
    int EndOfInterrupted(int number, bool ignored) const {
        const pid_t process = fork();
        if (process == 0) {
            signal(number, ignored ? SIG_IGN : SIG_DFL);
            OutputFile out(Path("out.hevc"));
            out.Write(Bytes(1000000, 7));
            if (Files().size() != 1)
                _exit(1);
            raise(number);
            out.Commit();
            _exit(0);
        }
        int status = 0;
        waitpid(process, &status, 0);
        return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status) == 0 ? 0 : -1;
    }
};

TEST_F(OutputFileTest, IsThereWhenItIsComplete) {
    {
        OutputFile out(Path("out.hevc"));
        out.Write(Bytes(1000000, 7));
        EXPECT_THAT(Files(), SizeIs(1));
        EXPECT_FALSE(Files().front() == "out.hevc");
        out.Commit();
    }
    EXPECT_THAT(Files(), ElementsAre("out.hevc"));
    EXPECT_TRUE(FileBytes(Path("out.hevc")) == Bytes(1000000, 7));
}

TEST_F(OutputFileTest, LeavesNothingWithoutCommit) {
    OutputFile(Path("out.hevc")).Write(Bytes(1000000, 7));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(OutputFileTest, LeavesNothingWhenItIsInterrupted) {
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        EXPECT_EQ(EndOfInterrupted(number, false), number);
        EXPECT_THAT(Files(), IsEmpty());
    }
}

TEST_F(OutputFileTest, GoesOnWhenTheSignalIsIgnored) {
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        EXPECT_EQ(EndOfInterrupted(number, true), 0);
        EXPECT_THAT(Files(), ElementsAre("out.hevc"));
        unlink(Path("out.hevc").c_str());
    }
}

TEST_F(OutputFileTest, TakesSignalsAsBeforeOnceItIsComplete) {
    {
        OutputFile out(Path("out.hevc"));
        out.Commit();
    }
    struct sigaction action {};
    sigaction(SIGTERM, nullptr, &action);
    EXPECT_TRUE(action.sa_handler == SIG_DFL);
}

}  // namespace
}  // namespace h265tool
