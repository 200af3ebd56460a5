// Streams that come from standard input or go to standard output, as in pipelines.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_test.h"

namespace h265tool {
namespace {

using test::Bytes;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

// Each verb that writes, with something to do.
constexpr const char *kInsert = "TOOL insert --afd 10 --timecode 10:00:00:00 ";
constexpr const char *kEdit = "TOOL edit --sar 4:3 --interlaced ";

class Pipe : public CommandTest {
 protected:
    static std::string Text(const Bytes &bytes) { return {bytes.begin(), bytes.end()}; }

    const std::string sample_ = "'" + Sample("progressive-hrd-vui.hevc") + "'";
};

TEST_F(Pipe, VerbsThatPrintReadStandardInput) {
    for (const std::string call :
         {"TOOL inspect ", "TOOL inspect --json ", "TOOL extract --captions ", "TOOL show "}) {
        const std::string stream = "'" + Sample("captions-a53.hevc") + "'";
        const Outcome from_file = Shell(call + stream);
        EXPECT_THAT(from_file.out, Not(IsEmpty())) << call;
        for (const std::string &piped : {"cat " + stream + " | " + call + "-", call + "- <" + stream}) {
            const Outcome outcome = Shell(piped);
            EXPECT_EQ(outcome.status, 0) << piped;
            EXPECT_EQ(outcome.out, from_file.out) << piped;
            EXPECT_THAT(outcome.err, IsEmpty()) << piped;
        }
    }
}

TEST_F(Pipe, VerbsThatWriteTakeStandardInputAndOutput) {
    for (const std::string call : {kInsert, kEdit}) {
        ASSERT_EQ(Shell(call + sample_ + " -o '" + Path("out.hevc") + "'").status, 0);
        const std::string expected = Text(FileBytes(Path("out.hevc")));
        EXPECT_TRUE(expected != Text(FileBytes(Sample("progressive-hrd-vui.hevc"))));
        for (const std::string &piped :
             {call + sample_ + " -o -", call + sample_ + " --output=-",
              "cat " + sample_ + " | " + call + "- -o -", call + "- -o - <" + sample_,
              call + sample_ + " -o /dev/stdout | cat",
              call + sample_ + " -o - >'" + Path("by-shell") + "'; cat '" + Path("by-shell") + "'"}) {
            const Outcome outcome = Shell(piped);
            EXPECT_EQ(outcome.status, 0) << piped;
            EXPECT_TRUE(outcome.out == expected) << piped;
            EXPECT_THAT(outcome.err, IsEmpty()) << piped;
        }
    }
}

TEST_F(Pipe, VerbsWorkBehindEachOther) {
    const Outcome outcome =
        Shell(std::string(kInsert) + sample_ + " -o - | " + kEdit + "- -o - | TOOL inspect -");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("AFD: 10"));
    EXPECT_THAT(outcome.err, IsEmpty());
}

TEST_F(Pipe, FilesOfOptionsMayComeFromStandardInput) {
    const std::string scc = "printf 'Scenarist_SCC V1.0\\n\\n00:00:00:01\\t9420 c8e9\\n'";
    const Outcome captions =
        Shell(scc + " | TOOL insert " + sample_ + " --captions - -o - | TOOL extract --captions -");
    EXPECT_THAT(captions.out, HasSubstr("field 1 \"Hi\""));
    const Outcome hrd =
        Shell("echo '{\"bit_rate_scale\": 5}' | TOOL edit " + sample_ +
              " --hrd - -o - | TOOL inspect --json - | grep -o '\"bit_rate_scale\":[0-9]*' | head -n 1");
    EXPECT_EQ(hrd.out, "\"bit_rate_scale\":5\n");
    for (const auto &[call, option] :
         {std::pair("TOOL insert - --captions -", "--captions"), std::pair("TOOL edit - --hrd -", "--hrd")}) {
        const Outcome both = Shell(std::string(call) + " -o - <" + sample_);
        EXPECT_EQ(both.status, 2);
        EXPECT_EQ(both.err,
                  std::string("h265tool: ") + option + ": the stream comes from standard input already\n");
        EXPECT_EQ(both.out.size(), 0U);
    }
    EXPECT_EQ(Shell("TOOL edit " + sample_ + " --hrd - -o - <&-").err,
              "h265tool: standard input: Bad file descriptor\n");
}

TEST_F(Pipe, NothingIsSentWhenTheStreamIsWrong) {
    Bytes bytes = FileBytes(Sample("slices.hevc"));
    bytes.insert(bytes.end(),
                 {0, 0, 1, 0x42, 1, 0x55, 0, 0, 1, 2, 1, 0, 1});  // an SPS and a slice, cut short
    const std::string broken = "'" + Written("broken.hevc", bytes) + "'";
    for (const std::string call : {kInsert, kEdit}) {
        for (const std::string out : {"-", "/dev/stdout"}) {
            const Outcome outcome = Shell("cat " + broken + " | { " + call + " - -o " + out + " | cat; }");
            EXPECT_EQ(outcome.out.size(), 0U) << call;
            EXPECT_THAT(outcome.err, HasSubstr("NAL unit at ")) << call;
        }
    }
}

// A file size limit ends the second pass: much of the stream is written by then.
TEST_F(Pipe, NothingIsSentWhenWritingFails) {
    const std::string many =
        "for i in 1 2 3 4 5 6 7 8; do cat " + sample_ + "; done >'" + Path("in.hevc") + "'";
    ASSERT_EQ(Shell(many).status, 0);
    for (const std::string call : {kInsert, kEdit}) {
        const Outcome outcome =
            Shell("trap '' XFSZ; ulimit -f 8; " + call + "'" + Path("in.hevc") + "' -o - | cat");
        EXPECT_EQ(outcome.out.size(), 0U) << call;
        EXPECT_THAT(outcome.err, HasSubstr(": File too large\n")) << call;
    }
}

TEST_F(Pipe, ANamedPipeGetsAllOfIt) {
    for (const std::string call : {kInsert, kEdit}) {
        const std::string pipe = "'" + Path("pipe") + "'";
        const Outcome outcome = Shell("mkfifo " + pipe + "; " + call + sample_ + " -o " + pipe + " & cat " +
                                      pipe + "; wait $!; status=$?; rm " + pipe + "; exit $status");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_TRUE(outcome.out == Shell(call + sample_ + " -o -").out) << call;
        EXPECT_THAT(outcome.err, IsEmpty());
    }
}

TEST_F(Pipe, TemporaryFilesAreWhereTmpdirSays) {
    for (const std::string call : {kInsert, kEdit}) {
        const std::string piped = "cat " + sample_ + " | " + call + "- -o -";
        const Outcome missing = Shell("export TMPDIR=/nowhere; " + piped);
        EXPECT_EQ(missing.status, 2);
        EXPECT_EQ(missing.err, "h265tool: temporary file in /nowhere: No such file or directory\n");
        EXPECT_EQ(missing.out.size(), 0U);
        EXPECT_EQ(Shell("export TMPDIR='" + Path("") + "'; " + piped).status, 0);
        EXPECT_EQ(Shell("export TMPDIR=; " + piped).status, 0);
        EXPECT_THAT(Files(), IsEmpty());
    }
}

TEST_F(Pipe, OneFileIsNotReadAndWritten) {
    const Bytes before = FileBytes(Sample("slices.hevc"));
    const std::string in = Written("in.hevc", before);
    for (const std::string call : {kInsert, kEdit}) {
        for (const std::string &appending :
             {call + "'" + in + "' -o - >>'" + in + "'", call + "- -o - <'" + in + "' >>'" + in + "'"}) {
            const Outcome outcome = Shell(appending);
            EXPECT_EQ(outcome.status, 2);
            EXPECT_THAT(outcome.err, StartsWith("h265tool: standard output: it is the same file as "));
        }
    }
    EXPECT_TRUE(FileBytes(in) == before);
    EXPECT_THAT(Files(), ElementsAre("in.hevc"));
}

TEST_F(Pipe, StopsQuietlyWhenItsReaderHasGone) {
    for (const std::string call : {kInsert, kEdit}) {
        for (const std::string disposition : {"trap '' PIPE", ":"}) {
            const Outcome outcome = Shell(disposition + "; " + call + sample_ + " -o - | :");
            EXPECT_THAT(outcome.err, IsEmpty()) << call;
        }
    }
}

}  // namespace
}  // namespace h265tool
