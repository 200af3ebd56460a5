// What the tool does on a terminal: colours, and no streams.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "command_test.h"

namespace h265tool {
namespace {

using test::Bytes;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr char kEscape[] = "\033[";

std::string WithoutColours(const std::string &text) {
    return std::regex_replace(text, std::regex("\033\\[[0-9;]*m"), "");
}

class Terminal : public CommandTest {
 protected:
    const std::string sample_ = "'" + Sample("progressive-hrd-vui.hevc") + "'";
    const std::string inspect_ = "TOOL inspect " + sample_;
};

TEST_F(Terminal, HasColoursByItself) {
    const Outcome outcome = ShellOnTerminal(inspect_);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, IsEmpty());
    EXPECT_THAT(outcome.out, HasSubstr(kEscape));
    EXPECT_EQ(outcome.out, Shell("TOOL inspect --color always " + sample_).out);
    EXPECT_EQ(outcome.out, ShellOnTerminal("TOOL inspect --color auto " + sample_).out);
}

TEST_F(Terminal, ColoursAreAllThatItChanges) {
    for (const std::string sample :
         {"slices.hevc", "captions-a53.hevc", "interlaced-field-hrd.hevc", "temporal-layers.hevc"}) {
        for (const std::string options : {"", "--human "}) {
            const std::string call = "TOOL inspect " + options + "'" + Sample(sample) + "'";
            EXPECT_EQ(WithoutColours(ShellOnTerminal(call).out), Shell(call).out) << sample;
        }
    }
}

TEST_F(Terminal, HasNoColoursWhereTheyAreNotWanted) {
    const std::string plain = Shell(inspect_).out;
    EXPECT_THAT(plain, Not(HasSubstr(kEscape)));
    EXPECT_EQ(ShellOnTerminal("export NO_COLOR=1; " + inspect_).out, plain);
    EXPECT_EQ(ShellOnTerminal("export NO_COLOR=0; " + inspect_ + " --color auto").out, plain);
    EXPECT_EQ(ShellOnTerminal("export TERM=dumb; " + inspect_).out, plain);
    EXPECT_EQ(ShellOnTerminal("unset TERM; " + inspect_).out, plain);
    EXPECT_EQ(ShellOnTerminal(inspect_ + " --color never").out, plain);
    EXPECT_EQ(ShellOnTerminal(inspect_ + " --color=never").out, plain);
    EXPECT_EQ(ShellOnTerminal(inspect_ + " | cat").out, plain);
    EXPECT_EQ(ShellOnTerminal(inspect_ + " >'" + Path("lines") + "'; cat '" + Path("lines") + "'").out,
              plain);
    EXPECT_EQ(Shell(inspect_ + " --color auto").out, plain);
}

TEST_F(Terminal, AnEmptyNoColorCountsAsNone) {
    EXPECT_THAT(ShellOnTerminal("export NO_COLOR=; " + inspect_).out, HasSubstr(kEscape));
}

// The option is more than the environment: it is about this very call.
TEST_F(Terminal, AlwaysIsAlways) {
    const std::string coloured = ShellOnTerminal(inspect_).out;
    EXPECT_EQ(Shell(inspect_ + " --color always").out, coloured);
    EXPECT_EQ(Shell("export NO_COLOR=1 TERM=dumb; " + inspect_ + " --color always").out, coloured);
}

TEST_F(Terminal, OtherOutputHasNoColours) {
    for (const std::string call : {"TOOL inspect --json ", "TOOL inspect --json --color always ",
                                   "TOOL show ", "TOOL extract --captions --afd "}) {
        const std::string stream = "'" + Sample("captions-a53.hevc") + "'";
        EXPECT_EQ(ShellOnTerminal(call + stream).out, Shell(call + stream).out) << call;
        EXPECT_THAT(Shell(call + stream).out, Not(HasSubstr(kEscape))) << call;
    }
}

TEST_F(Terminal, KeyPicturesParameterSetsAndErrorsStandOut) {
    Bytes bytes = FileBytes(Sample("progressive-hrd-vui.hevc"));
    bytes.insert(bytes.end(), {0, 0, 1, 0x44, 1, 0, 0, 1, 0x4E, 1,    0x89, 0x20,
                               0, 0, 1, 0xC2, 1, 7, 0, 0, 1,    0x40, 0x09, 1});
    const std::string stream = Written("stream.hevc", bytes);
    const Outcome outcome = ShellOnTerminal("TOOL inspect '" + stream + "'");
    EXPECT_EQ(outcome.status, 1);
    const std::vector<std::string> lines = outcome.Lines();
    ASSERT_GT(lines.size(), 20U);
    const auto line = [](const std::string &numbers, const std::string &colour, const std::string &name,
                         const std::string &gap, const std::string &rest) {
        return "\033[2m" + numbers + "  " + colour + name + (colour.empty() ? "" : "\033[0m") + gap +
               "\033[2m  layer 0  tid 0\033[0m  " + colour + rest + (colour.empty() ? "" : "\033[0m");
    };
    EXPECT_EQ(lines[0],
              line("         0\033[0m       28", "\033[36m", "VPS_NUT", "       ", "VPS 0: 1 sub-layer"));
    EXPECT_THAT(lines[1], HasSubstr("\033[36mSPS_NUT\033[0m"));
    EXPECT_THAT(lines[2], HasSubstr("\033[36mPPS 0: of SPS 0\033[0m"));
    EXPECT_EQ(lines[6], line("       132\033[0m     2430", "\033[1;32m", "IDR_N_LP", "      ",
                             "first slice segment, address 0, I, POC LSBs 0"));
    EXPECT_EQ(lines[7],
              line("      2562\033[0m        7", "\033[2m", "AUD_NUT", "       ", "pic_type 1: P, I"));
    EXPECT_EQ(lines[8], line("      2569\033[0m       10", "", "PREFIX_SEI_NUT", "",
                             "pic_timing: CPB removal delay 1, DPB output delay 6"));
    EXPECT_THAT(lines.back(),
                HasSubstr("\033[2mVPS_NUT\033[0m       \033[2m  layer 1  tid 0\033[0m  \033[2mnot parsed: "));
    EXPECT_THAT(lines, Contains(HasSubstr("\033[1;31mPPS_NUT\033[0m")));
    EXPECT_THAT(lines, Contains(HasSubstr("\033[1;31mPREFIX_SEI_NUT\033[0m")));
    EXPECT_THAT(lines, Contains(HasSubstr("\033[1;31merror: forbidden_zero_bit is 1\033[0m")));
}

TEST_F(Terminal, StreamsAreNotWrittenToIt) {
    for (const std::string call : {"TOOL insert --aud ", "TOOL edit --sar 4:3 "}) {
        for (const std::string out : {"-", "/dev/tty", "/dev/stdout", "\"$(tty)\""}) {
            const Outcome outcome = ShellOnTerminal(call + sample_ + " -o " + out);
            EXPECT_EQ(outcome.status, 2) << call << out;
            EXPECT_EQ(outcome.out.size(), 0U) << call << out;
            EXPECT_THAT(outcome.err,
                        StartsWith(out == "-" ? "h265tool: standard output: " : "h265tool: /dev/"));
            EXPECT_THAT(outcome.err, HasSubstr(": it is a terminal, which is no place for a stream\n"));
        }
        const Outcome redirected = ShellOnTerminal(call + sample_ + " -o - >'" + Path("out.hevc") +
                                                   "'; wc -c <'" + Path("out.hevc") + "'");
        EXPECT_EQ(redirected.status, 0);
        EXPECT_GT(std::stoi(redirected.out), 9000);
        EXPECT_EQ(ShellOnTerminal(call + sample_ + " -o /dev/null").status, 0);
    }
}

}  // namespace
}  // namespace h265tool
