#include <fcntl.h>
#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

#include "contract/captured_stderr.h"
#include "support/interposed_services.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class Message : public testing::Test {
 protected:
    void SetUp() override { ASSERT_EQ(_DoDbgInit("TEST", &channel_), TRUE); }
    void TearDown() override { _DoDbgUninitEx(&channel_, "Test", "test.cpp", 1); }

    void Print(const std::string &text) const {
        _DoDbgPrintEx(channel_, 6, "Function", "file.cpp", 12, "%s", text.c_str());
    }

    HDBG channel_ = nullptr;
};

// ---- a sink ----------------------------------------------------------------------------------------------

TEST_F(Message, ReachesTheSinkInItsParts) {
    const TraceCapture trace;
    _DoDbgPrintEx(channel_, 6, "Function", "file.cpp", 12, "%s:%d, %c%%\n", "length", -7, 'x');
    ASSERT_EQ(trace.messages().size(), 1u);
    const TracedMessage &message = trace.messages()[0];
    EXPECT_EQ(message.channel, "TEST");
    EXPECT_EQ(message.level, 6);
    EXPECT_EQ(message.function, "Function");
    EXPECT_EQ(message.file, "file.cpp");
    EXPECT_EQ(message.line, 12);
    EXPECT_EQ(message.text, "length:-7, x%\n");
}

TEST_F(Message, ReachesTheSinkPieceByPiece) {
    const TraceCapture trace;
    Print("no line end");
    Print("");
    Print("two\nlines\n");
    std::vector<std::string> texts;
    for (const TracedMessage &message : trace.messages())
        texts.push_back(message.text);
    EXPECT_THAT(texts, ElementsAre("no line end", "", "two\nlines\n"));
}

TEST_F(Message, IsNotFilteredAgain) {
    const TraceCapture trace;
    channel_->nMaxLevel = 0;
    Print("detail\n");
    EXPECT_EQ(trace.messages().size(), 1u);
}

TEST_F(Message, WithoutChannelIsNone) {
    const TraceCapture trace;
    _DoDbgPrintEx(nullptr, 3, "Function", "file.cpp", 12, "text\n");
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST_F(Message, TooLongForTheSinkIsCut) {
    const TraceCapture trace;
    const std::string longest = std::string(DBGTRACE_MESSAGE_SIZE - 2, 'x') + "\n";
    Print(longest);
    Print("x" + longest);
    Print(std::string(100'000, 'x'));
    const std::string cut = std::string(DBGTRACE_MESSAGE_SIZE - 5, 'x') + "...\n";
    ASSERT_EQ(trace.messages().size(), 3u);
    EXPECT_EQ(trace.messages()[0].text, longest);
    EXPECT_EQ(trace.messages()[1].text, cut);
    EXPECT_EQ(trace.messages()[2].text, cut);
}

TEST_F(Message, SinkHasTheUserItWasGivenWith) {
    int users[2] = {};
    const DbgTraceSink count = [](const DbgTraceMessage *, void *user) { ++*static_cast<int *>(user); };
    DbgTraceSetSink(count, &users[0]);
    Print("text\n");
    DbgTraceSetSink(count, &users[1]);
    Print("text\n");
    Print("text\n");
    DbgTraceSetSink(nullptr, nullptr);
    EXPECT_THAT(users, ElementsAre(1, 2));
}

// ---- standard error --------------------------------------------------------------------------------------

class MessageOnStderr : public Message {
 protected:
    // Wherever the tests before have left the line.
    void SetUp() override {
        Message::SetUp();
        Print("\n");
        captured_.Writes();
    }

    static constexpr char kPrefix[] = "TEST 6 Function (file.cpp:12): ";
    static constexpr size_t kRoom =
        DBGTRACE_MESSAGE_SIZE - sizeof kPrefix;  // the zero of either counted once

    CapturedStderr captured_;
};

TEST_F(MessageOnStderr, IsOneWriteBehindAPrefix) {
    _DoDbgPrintEx(channel_, 6, "Function", "file.cpp", 12, "%s:%d.\n", "length", 7);
    _DoDbgPrintEx(channel_, -1, "Other", "other.cpp", 345678, "two\nlines\n");
    EXPECT_THAT(captured_.Writes(), ElementsAre("TEST 6 Function (file.cpp:12): length:7.\n",
                                                "TEST -1 Other (other.cpp:345678): two\nlines\n"));
}

TEST_F(MessageOnStderr, HasNoPrefixInTheMiddleOfALine) {
    Print("one");
    Print(", two");
    Print("");
    _DoDbgPrintEx(g_hH265LibDbg, 3, "Other", "other.cpp", 1, ", three\n");
    Print("four\n");
    std::string all;
    for (const std::string &write : captured_.Writes())
        all += write;
    EXPECT_EQ(all, std::string(kPrefix) + "one, two, three\n" + kPrefix + "four\n");
}

TEST_F(MessageOnStderr, WithoutTextLeavesItsPrefixToTheNext) {
    Print("");
    Print("text\n");
    EXPECT_THAT(captured_.Writes(), ElementsAre(kPrefix, "text\n"));
}

TEST_F(MessageOnStderr, IsCutWhenTooLong) {
    const std::string longest = std::string(kRoom - 1, 'x') + "\n";
    Print(longest);
    Print("x" + longest);
    Print(std::string(100'000, 'x'));
    Print("next\n");
    const std::string cut = kPrefix + std::string(kRoom - 4, 'x') + "...\n";
    EXPECT_EQ(cut.size(), size_t{DBGTRACE_MESSAGE_SIZE - 1});
    EXPECT_THAT(captured_.Writes(),
                ElementsAre(kPrefix + longest, cut, cut, kPrefix + std::string("next\n")));
}

TEST_F(MessageOnStderr, IsCutWhenThePrefixAloneIsTooLong) {
    const std::string function(5000, 'f');
    _DoDbgPrintEx(channel_, 6, function.c_str(), "file.cpp", 12, "text\n");
    Print("next\n");
    const std::string cut = "TEST 6 " + std::string(DBGTRACE_MESSAGE_SIZE - 12, 'f') + "...\n";
    EXPECT_THAT(captured_.Writes(), ElementsAre(cut, kPrefix + std::string("next\n")));
}

TEST_F(MessageOnStderr, ComesBackWhenTheSinkIsTakenAway) {
    {
        const TraceCapture trace;
        Print("to the sink");
        EXPECT_EQ(trace.messages().size(), 1u);
    }
    Print("to standard error\n");
    EXPECT_THAT(captured_.Writes(), ElementsAre(kPrefix + std::string("to standard error\n")));
}

TEST_F(MessageOnStderr, ThatCannotBeWrittenIsLost) {
    const int before = ::dup(STDERR_FILENO);
    const int full = ::open("/dev/full", O_WRONLY);
    ASSERT_NE(full, -1);
    ::dup2(full, STDERR_FILENO);
    Print("lost\n");
    ::dup2(before, STDERR_FILENO);
    ::close(before);
    ::close(full);
    Print("next\n");
    EXPECT_THAT(captured_.Writes(), ElementsAre(kPrefix + std::string("next\n")));
}

TEST_F(MessageOnStderr, ThatIsInterruptedIsWrittenAgain) {
    InterruptWrites(3);
    Print("text\n");
    EXPECT_THAT(captured_.Writes(), ElementsAre(kPrefix + std::string("text\n")));
}

// No locale is set: a character beyond ASCII has no bytes.
TEST_F(MessageOnStderr, ThatCannotBeFormattedHasNoText) {
    const wchar_t wide[] = {0x2F800, 0};
    _DoDbgPrintEx(channel_, 6, "Function", "file.cpp", 12, "%ls\n", wide);
    Print("next\n");
    EXPECT_THAT(captured_.Writes(), ElementsAre(kPrefix, "next\n"));
    const TraceCapture trace;
    _DoDbgPrintEx(channel_, 6, "Function", "file.cpp", 12, "%ls\n", wide);
    ASSERT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].text, "");
}

TEST_F(MessageOnStderr, FromManyThreadsStaysWhole) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; i++)
        threads.emplace_back([this] {
            for (int j = 0; j < 20; j++)
                Print("text\n");
        });
    for (std::thread &thread : threads)
        thread.join();
    const std::vector<std::string> writes = captured_.Writes();
    EXPECT_EQ(writes.size(), 80u);
    EXPECT_THAT(writes, Each(kPrefix + std::string("text\n")));
}

}  // namespace
}  // namespace test
