#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/trace_capture.h"

extern "C" {

void _H265LIB_AutoInit();
void _H265LIB_AutoShutdown();

}  // extern "C"

namespace test {
namespace {

// As the channel has it when it opens.
void SetLevelInEnvironment(const char *level) {
    setenv("DBGTRACE_LEVEL_H265LIB", level, 1);
}

TEST(Library, OpensItsChannelWhenLoadedAndClosesItWhenUnloaded) {
    HDBG const channel = g_hH265LibDbg;
    const TraceCapture trace(5);
    _H265LIB_AutoShutdown();
    EXPECT_EQ(g_hH265LibDbg, nullptr);
    SetLevelInEnvironment("5");
    _H265LIB_AutoInit();
    EXPECT_EQ(g_hH265LibDbg, channel);  // a name keeps its place
    ASSERT_EQ(trace.messages().size(), 2u);
    EXPECT_EQ(trace.messages()[0].function, "_H265LIB_AutoShutdown");
    EXPECT_EQ(trace.messages()[1].function, "_H265LIB_AutoInit");
    EXPECT_THAT(trace.Texts(5), testing::Each("Called.\n"));
    unsetenv("DBGTRACE_LEVEL_H265LIB");
}

TEST(Library, SaysNothingOfItBelowLevel5) {
    const TraceCapture trace(4);
    _H265LIB_AutoShutdown();
    SetLevelInEnvironment("4");
    _H265LIB_AutoInit();
    EXPECT_THAT(trace.messages(), testing::IsEmpty());
    unsetenv("DBGTRACE_LEVEL_H265LIB");
}

}  // namespace
}  // namespace test
