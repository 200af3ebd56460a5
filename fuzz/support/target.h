// What every fuzzer begins with: the function that the fuzzing engine, or the replay, calls with an input.

#ifndef FUZZ_SUPPORT_TARGET_H
#define FUZZ_SUPPORT_TARGET_H

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

#endif
