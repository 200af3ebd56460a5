#include <gmock/gmock.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;

// A channel that is open while this lives.
class Channel {
 public:
    explicit Channel(const char *name) : opened_(_DoDbgInit(name, &handle)) {}
    ~Channel() { Close(); }
    Channel(const Channel &) = delete;
    Channel &operator=(const Channel &) = delete;

    void Close() { _DoDbgUninitEx(&handle, "Test", "test.cpp", 1); }
    BOOL opened() const { return opened_; }

    HDBG handle = reinterpret_cast<HDBG>(1);  // what an opening must not leave behind

 private:
    BOOL opened_;
};

TEST(Channels, OpenedTwiceAreOne) {
    Channel first("TEST");
    Channel second("TEST");
    EXPECT_EQ(first.opened(), TRUE);
    EXPECT_EQ(second.opened(), TRUE);
    ASSERT_NE(first.handle, nullptr);
    EXPECT_EQ(first.handle, second.handle);
}

TEST(Channels, OfOtherNamesAreOthers) {
    Channel test("TEST");
    Channel library("H265LIB");
    EXPECT_EQ(library.handle, g_hH265LibDbg);
    EXPECT_NE(test.handle, library.handle);
}

TEST(Channels, OpenAtTheDefaultLevelEachTime) {
    Channel first("TEST");
    EXPECT_EQ(first.handle->nMaxLevel, DBGTRACE_DEFAULT_LEVEL);
    EXPECT_EQ(DBGTRACE_DEFAULT_LEVEL, 3);
    first.handle->nMaxLevel = 8;
    Channel second("TEST");
    EXPECT_EQ(second.handle->nMaxLevel, DBGTRACE_DEFAULT_LEVEL);
}

TEST(Channels, ClosingSetsTheHandleToNull) {
    Channel first("TEST");
    Channel second("TEST");
    const HDBG stays = first.handle;
    first.Close();
    EXPECT_EQ(first.handle, nullptr);
    EXPECT_EQ(second.handle, stays);
    second.Close();
    EXPECT_EQ(second.handle, nullptr);
    EXPECT_EQ(stays->nMaxLevel, DBGTRACE_DEFAULT_LEVEL);
}

TEST(Channels, KeepTheirHandleForGood) {
    Channel first("TEST");
    const HDBG handle = first.handle;
    first.Close();
    Channel again("TEST");
    EXPECT_EQ(again.handle, handle);
}

TEST(Channels, ClosedTwiceDoNoHarm) {
    Channel channel("TEST");
    HDBG copy = channel.handle;
    channel.Close();
    const TraceCapture trace;
    _DoDbgUninitEx(&copy, "Test", "test.cpp", 1);
    EXPECT_EQ(copy, nullptr);
    _DoDbgUninitEx(&copy, "Test", "test.cpp", 1);
    EXPECT_EQ(copy, nullptr);
    EXPECT_THAT(trace.messages(), IsEmpty());
    Channel again("TEST");
    EXPECT_EQ(again.opened(), TRUE);
}

TEST(Channels, NeedAName) {
    const TraceCapture trace;
    for (const char *name : {static_cast<const char *>(nullptr), ""}) {
        Channel channel(name);
        EXPECT_EQ(channel.opened(), FALSE);
        EXPECT_EQ(channel.handle, nullptr);
    }
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST(Channels, NullHandleVariablesAreReported) {
    const TraceCapture trace;
    EXPECT_EQ(_DoDbgInit("TEST", nullptr), FALSE);
    _DoDbgUninitEx(nullptr, "Caller", "caller.cpp", 17);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("phDbg != NULL"), AssertionOf("phDbg != NULL")));
    EXPECT_EQ(trace.messages()[0].function, "_DoDbgInit");
    EXPECT_EQ(trace.messages()[0].file, "channels.cpp");
    EXPECT_EQ(trace.messages()[1].function, "Caller");
    EXPECT_EQ(trace.messages()[1].file, "caller.cpp");
    EXPECT_EQ(trace.messages()[1].line, 17);
}

// What a host that puts its own service in place of this one may have handed out.
TEST(Channels, OfAnotherServiceAreForgotten) {
    for (const DWORD index :
         {DWORD{0}, DWORD{DBGTRACE_MAX_CHANNELS - 1}, DWORD{DBGTRACE_MAX_CHANNELS}, ~DWORD{0}}) {
        tagHDBG foreign = {index, 7};
        HDBG handle = &foreign;
        const TraceCapture trace;
        _DoDbgUninitEx(&handle, "Test", "test.cpp", 1);
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(foreign.dwReserved, index);
        EXPECT_EQ(foreign.nMaxLevel, 7);
        EXPECT_THAT(trace.messages(), IsEmpty());
    }
}

// ---- in a process of their own: what uses up places in the table, or is reported once --------------------

[[noreturn]] void ExitWithResult() {
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

#define EXPECT_IN_OWN_PROCESS(check) EXPECT_EXIT((check(), ExitWithResult()), ExitedWithCode(0), "")

TEST(ChannelNames, HaveALimit) {
    EXPECT_IN_OWN_PROCESS([] {
        const std::string longest(DBGTRACE_CHANNEL_NAME_SIZE - 1, 'N');
        Channel fits(longest.c_str());
        EXPECT_EQ(fits.opened(), TRUE);
        ASSERT_NE(fits.handle, nullptr);
        Channel too_long((longest + 'N').c_str());
        EXPECT_EQ(too_long.opened(), FALSE);
        EXPECT_EQ(too_long.handle, nullptr);

        const TraceCapture trace;
        _DoDbgPrintEx(fits.handle, 3, "F", "f.cpp", 1, "text\n");
        EXPECT_EQ(trace.messages().at(0).channel, longest);
    });
}

TEST(ChannelTable, HoldsSoManyNames) {
    EXPECT_IN_OWN_PROCESS([] {
        int opened = 0;
        while (Channel(("FILL" + std::to_string(opened)).c_str()).opened() == TRUE)
            opened++;
        // those of the two libraries and of assertions are there before, and maybe that of the other tests
        EXPECT_LE(opened, DBGTRACE_MAX_CHANNELS - 3);
        EXPECT_GE(opened, DBGTRACE_MAX_CHANNELS - 4);

        Channel one_more("ONE MORE");
        EXPECT_EQ(one_more.opened(), FALSE);
        EXPECT_EQ(one_more.handle, nullptr);
        Channel known("FILL0");
        EXPECT_EQ(known.opened(), TRUE);
        EXPECT_EQ(Channel("H265LIB").opened(), TRUE);
    });
}

int LevelOf(const char *name) {
    return Channel(name).handle->nMaxLevel;
}

TEST(ChannelLevels, FollowTheEnvironment) {
    EXPECT_IN_OWN_PROCESS([] {
        ::setenv("DBGTRACE_LEVEL", "6", 1);
        EXPECT_EQ(LevelOf("ONE"), 6);
        EXPECT_EQ(LevelOf("OTHER"), 6);
        ::setenv("DBGTRACE_LEVEL_ONE", "8", 1);
        EXPECT_EQ(LevelOf("ONE"), 8);
        EXPECT_EQ(LevelOf("OTHER"), 6);
        ::unsetenv("DBGTRACE_LEVEL");
        EXPECT_EQ(LevelOf("ONE"), 8);
        EXPECT_EQ(LevelOf("OTHER"), DBGTRACE_DEFAULT_LEVEL);
        for (const int level : {0, -1, 12}) {
            ::setenv("DBGTRACE_LEVEL_ONE", std::to_string(level).c_str(), 1);
            EXPECT_EQ(LevelOf("ONE"), level);
        }
        ::setenv("DBGTRACE_LEVEL_ONE", "99999999999999999999", 1);
        EXPECT_EQ(LevelOf("ONE"), INT_MAX);
    });
}

TEST(ChannelLevels, OfTheLongestNameFollowTheEnvironment) {
    EXPECT_IN_OWN_PROCESS([] {
        const std::string longest(DBGTRACE_CHANNEL_NAME_SIZE - 1, 'N');
        ::setenv(("DBGTRACE_LEVEL_" + longest).c_str(), "7", 1);
        EXPECT_EQ(LevelOf(longest.c_str()), 7);
    });
}

// What is reported while this lives: texts of the service itself.
class Reports {
 public:
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (const TracedMessage &message : trace_.messages()) {
            EXPECT_EQ(message.channel, "DBGTRACE");
            EXPECT_EQ(message.level, 3);
            EXPECT_EQ(message.file, "channels.cpp");
            texts.push_back(message.text);
        }
        return texts;
    }

 private:
    const TraceCapture trace_;
};

std::string Ignored(const std::string &variable, const std::string &value) {
    return variable + "=" + value + " is not a level, ignored.\n";
}

const char *const kBadLevels[] = {"", "x", "five", "5x", "5 ", "0x5", "5.5", "-"};

TEST(BadChannelLevel, OfEveryChannelIsReportedOnceAndIgnored) {
    for (const char *value : kBadLevels) {
        EXPECT_IN_OWN_PROCESS([value] {
            ::setenv("DBGTRACE_LEVEL", value, 1);
            const Reports reports;
            EXPECT_EQ(LevelOf("ONE"), DBGTRACE_DEFAULT_LEVEL);
            EXPECT_EQ(LevelOf("ONE"), DBGTRACE_DEFAULT_LEVEL);
            EXPECT_EQ(LevelOf("OTHER"), DBGTRACE_DEFAULT_LEVEL);
            EXPECT_THAT(reports.Texts(), ElementsAre(Ignored("DBGTRACE_LEVEL", value)));
        });
    }
}

TEST(BadChannelLevel, OfOneChannelIsReportedOnceAndLeavesThatOfEveryChannel) {
    for (const char *value : kBadLevels) {
        EXPECT_IN_OWN_PROCESS([value] {
            ::setenv("DBGTRACE_LEVEL", "6", 1);
            ::setenv("DBGTRACE_LEVEL_ONE", value, 1);
            ::setenv("DBGTRACE_LEVEL_OTHER", value, 1);
            const Reports reports;
            EXPECT_EQ(LevelOf("ONE"), 6);
            EXPECT_EQ(LevelOf("ONE"), 6);
            EXPECT_EQ(LevelOf("OTHER"), 6);
            EXPECT_THAT(reports.Texts(), ElementsAre(Ignored("DBGTRACE_LEVEL_ONE", value),
                                                     Ignored("DBGTRACE_LEVEL_OTHER", value)));
        });
    }
}

// ---- assertions ------------------------------------------------------------------------------------------

void ExpectFromCaller(const TracedMessage &message, const std::string &text) {
    EXPECT_EQ(message.channel, "ASSERT");
    EXPECT_EQ(message.level, 3);
    EXPECT_EQ(message.function, "Caller");
    EXPECT_EQ(message.file, "caller.cpp");
    EXPECT_EQ(message.line, 17);
    EXPECT_EQ(message.text, text);
}

TEST(Assertions, QuoteTheExpression) {
    const TraceCapture trace;
    _DoAssert("buffer_len >= 4 && 100%d", "Caller", "caller.cpp", 17);
    ASSERT_EQ(trace.messages().size(), 1u);
    ExpectFromCaller(trace.messages()[0], "Assertion failed: buffer_len >= 4 && 100%d\n");
}

TEST(Assertions, OfATextGiveTheText) {
    const TraceCapture trace;
    _DoTextAssert("Caller", "caller.cpp", 17, "Too many tiles columns! 100%d");
    ASSERT_EQ(trace.messages().size(), 1u);
    ExpectFromCaller(trace.messages()[0], "Too many tiles columns! 100%d\n");
}

TEST(Assertions, FollowTheLevelOfTheirChannel) {
    Channel channel("ASSERT");
    ASSERT_EQ(channel.opened(), TRUE);
    const TraceCapture trace;
    channel.handle->nMaxLevel = 2;
    _DoAssert("bb != NULL", "Caller", "caller.cpp", 17);
    _DoTextAssert("Caller", "caller.cpp", 17, "Too many tiles columns!");
    EXPECT_THAT(trace.messages(), IsEmpty());
    channel.handle->nMaxLevel = 3;
    _DoAssert("bb != NULL", "Caller", "caller.cpp", 17);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL")));
}

TEST(Assertions, DoNotDependOnTheLibrarysChannel) {
    const TraceCapture trace(0);
    _DoAssert("bb != NULL", "Caller", "caller.cpp", 17);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL")));
}

}  // namespace
}  // namespace test
