#include "support/interposed.h"

#include <cstdlib>

namespace {

bool clock_controlled = false;
std::time_t controlled_now = 0;
std::time_t fresh_time = 10'000'000'000;  // far beyond the real time

// The calls of a thread are that thread's own.
thread_local int allocations = 0;
thread_local int live_blocks = 0;
thread_local int first_failure = 0;  // 0: none
thread_local int last_failure = 0;

// One more attempt to allocate; says whether it is one that has to fail.
bool HasToFail() {
    allocations++;
    return first_failure > 0 && allocations >= first_failure && allocations <= last_failure;
}

void *Counted(void *block) {
    live_blocks += block != nullptr;
    return block;
}

}  // namespace

extern "C" {

// The linker directs the libraries' calls here (--wrap).
std::time_t __real_time(std::time_t *result);
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);

std::time_t __wrap_time(std::time_t *result);
std::time_t __wrap_time(std::time_t *result) {
    if (!clock_controlled)
        return __real_time(result);
    if (result != nullptr)
        *result = controlled_now;
    return controlled_now;
}

void *__wrap_malloc(size_t size);
void *__wrap_malloc(size_t size) {
    return HasToFail() ? nullptr : Counted(__real_malloc(size));
}

void *__wrap_calloc(size_t count, size_t size);
void *__wrap_calloc(size_t count, size_t size) {
    return HasToFail() ? nullptr : Counted(__real_calloc(count, size));
}

void *__wrap_realloc(void *block, size_t size);
void *__wrap_realloc(void *block, size_t size) {
    if (HasToFail())
        return nullptr;
    void *const moved = __real_realloc(block, size);
    return block == nullptr ? Counted(moved) : moved;
}

void __wrap_free(void *block);
void __wrap_free(void *block) {
    live_blocks -= block != nullptr;
    __real_free(block);
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

FailingAllocations::FailingAllocations(int first, int last) {
    allocations = 0;
    live_blocks = 0;
    first_failure = first;
    last_failure = last;
}

FailingAllocations::~FailingAllocations() {
    first_failure = 0;
}

int FailingAllocations::Calls() {
    return allocations;
}

int FailingAllocations::LiveBlocks() {
    return live_blocks;
}

}  // namespace test
