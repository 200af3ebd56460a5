// A clock and a heap under the tests' control: the static libraries' calls of time and calloc come here.

#ifndef TESTS_SUPPORT_INTERPOSED_H
#define TESTS_SUPPORT_INTERPOSED_H

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

// While alive, the n-th call of calloc (counted from 1) and all later ones fail.
class FailingAllocations {
 public:
    explicit FailingAllocations(int first_failure);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations &) = delete;
    FailingAllocations &operator=(const FailingAllocations &) = delete;
    static int Calls();  // since the construction
};

}  // namespace test

#endif
