// The heap: every entry point takes as many blocks as its header says, releases them, and fails cleanly when
// it does not get one.

#include <gtest/gtest.h>

#include <algorithm>

#include "entry_points/call.h"
#include "support/interposed.h"
#include "support/trace_capture.h"

namespace test {
namespace {

struct Outcome {
    int64_t result;
    Bytes outputs;
    bool operator==(const Outcome &) const = default;
};

constexpr uint32_t kFill = 0xA5A5A5A5;

class Allocations : public testing::TestWithParam<EntryPoint> {
 protected:
    // Makes one call of which the n-th allocations from `first` to `last` fail.
    void Make(int first, int last = INT_MAX) {
        call_ = GetParam().prepare(kFill);
        before_ = call_.outputs();
        const FailingAllocations heap(first, last);
        outcome_.result = call_.run();
        allocations_ = FailingAllocations::Calls();
        blocks_left_ = FailingAllocations::LiveBlocks();
    }

    // Behind a call that succeeded.
    Outcome Success() {
        EXPECT_EQ(blocks_left_, GetParam().blocks_left);
        outcome_.outputs = call_.outputs();
        call_.release();
        return outcome_;
    }

    void ExpectCleanFailure() {
        EXPECT_EQ(outcome_.result, 0);  // FALSE
        EXPECT_EQ(blocks_left_, 0);
        if (call_.failed_as_documented)
            EXPECT_TRUE(call_.failed_as_documented());
        else
            EXPECT_EQ(call_.outputs(), before_);
    }

    Call call_;
    Bytes before_;
    Outcome outcome_{};
    int allocations_ = 0;
    int blocks_left_ = 0;

 private:
    TraceCapture trace_;  // of everything
};

TEST_P(Allocations, AreThoseThatTheHeaderNames) {
    Make(0);
    EXPECT_EQ(allocations_, GetParam().allocations);
    Success();
}

TEST_P(Allocations, FailEachInItsTurn) {
    Make(0);
    const Outcome expected = Success();
    for (const int failures : {1, INT_MAX / 2}) {
        for (int first = 1;; first++) {
            SCOPED_TRACE(testing::Message() << failures << " failures from allocation " << first << " on");
            Make(first, first + failures - 1);
            if (allocations_ < first)
                break;
            ExpectCleanFailure();
        }
        EXPECT_EQ(Success(), expected);  // the failures left nothing behind
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Allocations, testing::ValuesIn(EntryPoints()),
                         [](const auto &entry_point) { return NameOf(entry_point.param); });

}  // namespace
}  // namespace test
