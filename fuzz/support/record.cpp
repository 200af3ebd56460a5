#include "support/record.h"

#include <algorithm>
#include <cstring>

namespace fuzz {
namespace {

enum Content { kZeros, kOneByte, kRandom, kSmallNumbers, kContents };

// Words of the sequence, each under a mask; a large record has the same ones again and again, at other
// places.
void FillWithRandom(uint64_t seed, uint64_t mask, unsigned char *bytes, size_t size) {
    constexpr size_t kPattern = 2052;  // bytes; no power of two, so that entries of arrays differ
    const size_t drawn = std::min(size, kPattern);
    for (size_t i = 0; i < drawn; i += sizeof(uint64_t)) {
        const uint64_t word = NextRandom(&seed) & mask;
        std::memcpy(bytes + i, &word, std::min(sizeof word, drawn - i));
    }
    for (size_t i = drawn; i < size; i += kPattern)
        std::memcpy(bytes + i, bytes, std::min(kPattern, size - i));
}

}  // namespace

void Fill(FuzzInput *input, unsigned char *bytes, size_t size) {
    constexpr uint64_t kSmall = 0x0000000F00000007;  // in either half of a word, and as a word not small
    switch (input->Below(kContents)) {
        case kOneByte:
            std::memset(bytes, input->Byte(), size);
            break;
        case kRandom:
            FillWithRandom(input->Bits(16), UINT64_MAX, bytes, size);
            break;
        case kSmallNumbers: {
            const uint64_t seed = input->Bits(16);
            FillWithRandom(seed, input->Flag() ? kSmall : kSmall & UINT32_MAX, bytes, size);
            break;
        }
        default:
            std::memset(bytes, 0, size);
            break;
    }
    for (uint32_t places = input->Below(8); places > 0; places--) {
        const size_t place = input->Below(static_cast<uint32_t>(size));
        bytes[place] = input->Byte();
    }
}

}  // namespace fuzz
