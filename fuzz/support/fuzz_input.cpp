#include "support/fuzz_input.h"

#include <algorithm>

namespace fuzz {

FuzzInput FuzzInput::Random(uint64_t seed) {
    constexpr size_t kSize = 256;
    FuzzInput input;
    for (size_t i = 0; i < kSize; i++)
        input.bytes_.push_back(static_cast<unsigned char>(NextRandom(&seed)));
    return input;
}

uint64_t FuzzInput::Bits(unsigned int n) {
    uint64_t value = 0;
    for (unsigned int taken = 0; taken < n; taken += 8)
        value = value << 8 | Byte();
    return n < 64 ? value & ((uint64_t{1} << n) - 1) : value;
}

uint32_t FuzzInput::Below(uint32_t end) {
    const unsigned int width = end <= 1U << 8 ? 8 : end <= 1U << 16 ? 16 : 24;
    return static_cast<uint32_t>(Bits(width)) % end;
}

uint32_t FuzzInput::Number() {
    constexpr uint8_t kByteFollows = 0xE0;
    constexpr uint8_t kWordFollows = 0xF8;
    const uint8_t first = Byte();
    if (first < kByteFollows)
        return first % 16;
    return static_cast<uint32_t>(Bits(first < kWordFollows ? 8 : 32));
}

Bytes FuzzInput::Take(size_t count) {
    count = std::min(count, bytes_.size() - next_);
    const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(next_);
    next_ += count;
    return Bytes(begin, begin + static_cast<std::ptrdiff_t>(count));
}

uint64_t NextRandom(uint64_t *state) {
    uint64_t mixed = *state += 0x9E3779B97F4A7C15;
    mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
    return mixed ^ mixed >> 31;
}

}  // namespace fuzz
