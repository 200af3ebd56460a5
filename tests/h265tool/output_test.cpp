#include "output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <string>

namespace h265tool {
namespace {

// Standard output leads to `descriptor` while this is alive.
class StandardOutput {
 public:
    explicit StandardOutput(int descriptor) : before_(dup(STDOUT_FILENO)) { dup2(descriptor, STDOUT_FILENO); }
    ~StandardOutput() {
        dup2(before_, STDOUT_FILENO);
        close(before_);
    }
    StandardOutput(const StandardOutput &) = delete;
    StandardOutput &operator=(const StandardOutput &) = delete;

 private:
    int before_;
};

std::string Arrived(int descriptor) {
    std::array<char, 100> text{};
    const ssize_t count = read(descriptor, text.data(), text.size());
    return std::string(text.data(), count > 0 ? static_cast<size_t>(count) : 0);
}

TEST(OutputTest, LinesAppearOnATerminalAtOnce) {
    struct termios settings {};
    cfmakeraw(&settings);
    cfsetspeed(&settings, B38400);
    int other_end = -1;
    int terminal = -1;
    ASSERT_EQ(openpty(&other_end, &terminal, nullptr, &settings, nullptr), 0);
    {
        const StandardOutput redirected(terminal);
        Output output;
        output.Line("first");
        EXPECT_EQ(Arrived(other_end), "first\n");
        output.Line("second");
        EXPECT_EQ(Arrived(other_end), "second\n");
    }
    close(terminal);
    close(other_end);
}

TEST(OutputTest, LinesWaitForEachOtherInFrontOfAPipe) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    {
        const StandardOutput redirected(ends[1]);
        Output output;
        output.Line("first");
        EXPECT_EQ(Arrived(ends[0]), "");
        output.Line("second");
        output.Flush();
        EXPECT_EQ(Arrived(ends[0]), "first\nsecond\n");
    }
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
}  // namespace h265tool
