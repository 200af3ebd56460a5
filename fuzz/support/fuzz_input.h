// The bytes of a fuzzer's input, drawn one after the other: they decide what a run does.

#ifndef FUZZ_SUPPORT_FUZZ_INPUT_H
#define FUZZ_SUPPORT_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace fuzz {

using Bytes = std::vector<unsigned char>;

class FuzzInput {
 public:
    FuzzInput(const uint8_t *data, size_t size) : bytes_(data, data + size) {}

    // Bytes that follow from a seed, for inputs that have none to spare.
    static FuzzInput Random(uint64_t seed);

    // Everything drawn from an input that is used up is 0.
    uint8_t Byte() { return IsUsedUp() ? 0 : bytes_[next_++]; }
    bool Flag() { return (Byte() & 1) != 0; }
    uint64_t Bits(unsigned int n);  // a number of n bits, n up to 64
    uint32_t Below(uint32_t end);   // end up to 2^24
    uint32_t Number();              // mostly small, sometimes any
    Bytes Take(size_t count);       // fewer when there are no more
    Bytes TakeRest() { return Take(bytes_.size()); }

    bool IsUsedUp() const { return next_ >= bytes_.size(); }

 private:
    FuzzInput() = default;

    Bytes bytes_;
    size_t next_ = 0;
};

// The next number of a sequence of random ones (SplitMix64).
uint64_t NextRandom(uint64_t *state);

}  // namespace fuzz

#endif
