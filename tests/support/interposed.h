// A clock and a heap under the tests' control: the static libraries' calls of time, malloc, calloc, realloc
// and free come here.

#ifndef TESTS_SUPPORT_INTERPOSED_H
#define TESTS_SUPPORT_INTERPOSED_H

#include <climits>
#include <ctime>

namespace test {

// While alive, time() gives the set time.
class ControlledClock {
 public:
    explicit ControlledClock(std::time_t now);
    ~ControlledClock();
    ControlledClock(const ControlledClock &) = delete;
    ControlledClock &operator=(const ControlledClock &) = delete;
    void Set(std::time_t now);
};

// A time later than any that a test of this process has set or seen: rate limits are over. Each call gives
// a later one.
std::time_t FreshTime();

// While alive, some of this thread's allocations fail: those from the first to the last number given (counted
// from 1; by default all from the first on, and none when that is 0). Counts blocks, too.
class FailingAllocations {
 public:
    explicit FailingAllocations(int first_failure, int last_failure = INT_MAX);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations &) = delete;
    FailingAllocations &operator=(const FailingAllocations &) = delete;

    // Since the construction: attempts to allocate; and blocks allocated less blocks released.
    static int Calls();
    static int LiveBlocks();
};

}  // namespace test

#endif
