// An assertion that fails before the service has opened its channel for them, in the constructor of a library
// that is loaded with it. This one runs in front of the service's, which has the same priority and is linked
// later.

#include <gtest/gtest.h>

#include <cstdio>

#include "dbgtrace.h"

namespace test {
namespace {

char early_message[200];
int early_messages = 0;

void Keep(const DbgTraceMessage *message, void *) {
    early_messages++;
    std::snprintf(early_message, sizeof early_message, "%s %d %s (%s:%d): %s", message->channel,
                  message->level, message->function, message->file, message->line, message->text);
}

[[gnu::constructor(101)]] void AssertEarly() {
    DbgTraceSetSink(Keep, nullptr);
    _DoAssert("bb != NULL", "Early", "early.cpp", 17);
    DbgTraceSetSink(nullptr, nullptr);
}

TEST(EarlyAssertion, IsReported) {
    EXPECT_EQ(early_messages, 1);
    EXPECT_STREQ(early_message, "ASSERT 3 Early (early.cpp:17): Assertion failed: bb != NULL\n");
}

}  // namespace
}  // namespace test
