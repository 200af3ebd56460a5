#include "support/interposed.h"

#include <cstdlib>

namespace {

bool clock_controlled = false;
std::time_t controlled_now = 0;
std::time_t fresh_time = 10'000'000'000;  // far beyond the real time

int allocations = 0;
int first_failure = 0;  // 0: none

}  // namespace

extern "C" {

// The linker directs the libraries' calls here (--wrap).
std::time_t __real_time(std::time_t *result);
void *__real_calloc(size_t count, size_t size);

std::time_t __wrap_time(std::time_t *result);
std::time_t __wrap_time(std::time_t *result) {
    if (!clock_controlled)
        return __real_time(result);
    if (result != nullptr)
        *result = controlled_now;
    return controlled_now;
}

void *__wrap_calloc(size_t count, size_t size);
void *__wrap_calloc(size_t count, size_t size) {
    allocations++;
    if (first_failure > 0 && allocations >= first_failure)
        return nullptr;
    return __real_calloc(count, size);
}

}  // extern "C"

namespace test {

ControlledClock::ControlledClock(std::time_t now) {
    clock_controlled = true;
    controlled_now = now;
}

ControlledClock::~ControlledClock() {
    clock_controlled = false;
}

void ControlledClock::Set(std::time_t now) {
    controlled_now = now;
}

std::time_t FreshTime() {
    return fresh_time += 1'000'000;
}

FailingAllocations::FailingAllocations(int first) {
    allocations = 0;
    first_failure = first;
}

FailingAllocations::~FailingAllocations() {
    first_failure = 0;
}

int FailingAllocations::Calls() {
    return allocations;
}

}  // namespace test
