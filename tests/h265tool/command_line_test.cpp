// What all verbs have in common on the command line: help, version, exit statuses, standard streams.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_test.h"
#include "h265/version.h"
#include "text.h"

namespace h265tool {
namespace {

using test::Bytes;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr const char *kVerbs[] = {"inspect", "extract", "show", "insert", "edit"};

class CommandLine : public CommandTest {
 protected:
    // The verb with what it needs beside a stream.
    std::string Call(const std::string &verb) const {
        const std::string out = " -o '" + Path("out.hevc") + "'";
        if (verb == "extract")
            return "TOOL extract --captions ";
        if (verb == "insert")
            return "TOOL insert --replace --aud" + out + " ";
        if (verb == "edit")
            return "TOOL edit --sar 4:3" + out + " ";
        return "TOOL " + verb + " ";
    }
};

TEST_F(CommandLine, HelpOfTheToolShowsTheVerbsAndExamples) {
    const Outcome help = Shell("TOOL --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.err, IsEmpty());
    for (const char *verb : kVerbs)
        EXPECT_THAT(help.out, ContainsRegex(Text("\n  ", verb, " +[A-Z]")));
    EXPECT_THAT(help.out, HasSubstr("\nExamples:\n    h265tool inspect in.hevc\n"));
    EXPECT_THAT(help.out, HasSubstr("h265tool VERB --help"));
    EXPECT_THAT(help.out, HasSubstr("h265tool(1)"));
    EXPECT_EQ(Shell("TOOL -h").out, help.out);
}

TEST_F(CommandLine, HelpOfAVerbHasExamplesOfIt) {
    for (const std::string verb : kVerbs) {
        const Outcome help = Shell("TOOL " + verb + " --help");
        EXPECT_EQ(help.status, 0) << verb;
        EXPECT_THAT(help.err, IsEmpty()) << verb;
        const size_t examples = help.out.find("\nExamples:\n  h265tool " + verb + " ");
        ASSERT_NE(examples, std::string::npos) << verb;
        EXPECT_THAT(help.out.substr(examples), HasSubstr("\nExit status:\n  0  ")) << verb;
        EXPECT_EQ(Shell("TOOL " + verb + " -h").out, help.out);
    }
}

// The examples of all verbs are calls that the tool takes: they fail for want of files, not for usage.
TEST_F(CommandLine, ExamplesAreRightCalls) {
    size_t examples = 0;
    for (const std::string verb : {"", "inspect", "extract", "show", "insert", "edit"}) {
        bool in_examples = false;
        for (const std::string &line : Shell("TOOL " + verb + " --help").Lines()) {
            in_examples = line == "Examples:" || (in_examples && !line.empty());
            const size_t begin = line.find("h265tool ");
            if (!in_examples || begin == std::string::npos)
                continue;
            examples++;
            std::string call = line.substr(begin + 9);
            call = call.substr(0, call.find_first_of("|>#"));
            const Outcome outcome = Shell("cd '" + Path("") + "'; TOOL " + call + " </dev/null");
            EXPECT_THAT(outcome.err, Not(HasSubstr("--help"))) << line;
            EXPECT_THAT(outcome.err, ContainsRegex("No such file|it is empty")) << line;
        }
    }
    EXPECT_GE(examples, 20U);
}

TEST_F(CommandLine, PrintsNameAndVersion) {
    const Outcome version = Shell("TOOL --version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out,
              Text("h265tool ", H265_VERSION_MAJOR, ".", H265_VERSION_MINOR, ".", H265_VERSION_PATCH, "\n"));
    EXPECT_THAT(version.err, IsEmpty());
}

TEST_F(CommandLine, WithoutArgumentsPrintsUsageAndFails) {
    const Outcome outcome = Shell("TOOL");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("Usage: h265tool [OPTIONS] VERB\n"));
    EXPECT_EQ(outcome.err, Shell("TOOL --help").out);
}

TEST_F(CommandLine, SaysWhatIsWrongAndWhereHelpIs) {
    const struct {
        const char *arguments;
        const char *reason;
        const char *command;
    } kCases[] = {
        {"inspekt x", "\"inspekt\" is no verb", "h265tool"},
        {"--json", "\"--json\" is no verb", "h265tool"},
        {"inspect", "FILE is required", "h265tool inspect"},
        {"inspect x y", "The following argument was not expected: y", "h265tool inspect"},
        {"show --level 9 x", "--level: Value 9 not in range 0 to 8", "h265tool show"},
        {"insert x", "--output is required", "h265tool insert"},
        {"inspect --color purple x", "--color: purple not in {auto,always,never}", "h265tool inspect"},
        {"inspect --human --json x", "--json excludes --human", "h265tool inspect"},
    };
    for (const auto &[arguments, reason, command] : kCases) {
        const Outcome outcome = Shell(Text("TOOL ", arguments));
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_EQ(outcome.err,
                  Text(command, ": ", reason, "\nRun \"", command, " --help\" for more information.\n"));
    }
}

TEST_F(CommandLine, ExitStatusIs0WhenAllWentWell) {
    for (const std::string verb : kVerbs) {
        const Outcome outcome = Shell(Call(verb) + "'" + Sample("captions-a53.hevc") + "'");
        EXPECT_EQ(outcome.status, 0) << verb;
        EXPECT_THAT(outcome.err, IsEmpty()) << verb;
    }
}

TEST_F(CommandLine, ExitStatusIs1WhenTheStreamIsWrong) {
    Bytes bytes = FileBytes(Sample("slices.hevc"));
    bytes.insert(bytes.end(),
                 {0, 0, 1, 0x42, 1, 0x55, 0, 0, 1, 2, 1, 0, 1});  // an SPS and a slice, cut short
    const std::string broken = Written("broken.hevc", bytes);
    const std::string empty = Written("empty.hevc", Bytes());
    for (const std::string verb : kVerbs) {
        EXPECT_EQ(Shell(Call(verb) + "'" + broken + "'").status, 1) << verb;
        const Outcome outcome = Shell(Call(verb) + "'" + empty + "'");
        EXPECT_EQ(outcome.status, 1) << verb;
        EXPECT_EQ(outcome.err, "h265tool: " + empty + ": it is empty\n") << verb;
    }
}

TEST_F(CommandLine, ExitStatusIs2WhenTheCallOrAFileIsWrong) {
    const std::string sample = " '" + Sample("slices.hevc") + "'";
    for (const std::string verb : kVerbs) {
        for (const std::string &wrong :
             {Call(verb), Call(verb) + sample + sample, Call(verb) + " --wrong" + sample}) {
            const Outcome outcome = Shell(wrong);
            EXPECT_EQ(outcome.status, 2) << wrong;
            EXPECT_THAT(outcome.err, StartsWith("h265tool " + verb + ": ")) << wrong;
        }
        const Outcome missing = Shell(Call(verb) + "/nowhere.hevc");
        EXPECT_EQ(missing.status, 2) << verb;
        EXPECT_EQ(missing.err, "h265tool: /nowhere.hevc: No such file or directory\n") << verb;
        const Outcome closed = Shell(Call(verb) + "- <&-");
        EXPECT_EQ(closed.status, 2) << verb;
        EXPECT_EQ(closed.err, "h265tool: standard input: Bad file descriptor\n") << verb;
    }
}

TEST_F(CommandLine, ExitStatusIs2WhenStandardOutputCannotBeWritten) {
    const std::string sample = " '" + Sample("captions-a53.hevc") + "'";
    for (const std::string arguments :
         {"--help", "--version", "edit --help", "inspect", "inspect --json", "extract --captions", "show",
          "insert --aud -o -", "edit --sar 4:3 -o -"}) {
        const bool reads = arguments.find("--help") == std::string::npos && arguments != "--version";
        const std::string call = "TOOL " + arguments + (reads ? sample : "");
        const Outcome full = Shell(call + " >/dev/full");
        EXPECT_EQ(full.status, 2) << arguments;
        EXPECT_EQ(full.err, "h265tool: standard output: No space left on device\n") << arguments;
        const Outcome closed = Shell(call + " >&-");
        EXPECT_EQ(closed.status, 2) << arguments;
        EXPECT_EQ(closed.err, "h265tool: standard output: Bad file descriptor\n") << arguments;
    }
}

}  // namespace
}  // namespace h265tool
