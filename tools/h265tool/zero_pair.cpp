#include "zero_pair.h"

#include <cstdint>
#include <cstring>

namespace h265tool {
namespace {

// The compiler's vector types: one text for SSE2, NEON and machines without either.
using Vector [[gnu::vector_size(16)]] = unsigned char;
using Halves [[gnu::vector_size(16)]] = uint64_t;

constexpr size_t kBlock = 4 * sizeof(Vector);

Vector Load(const unsigned char *bytes) {
    Vector vector;
    std::memcpy(&vector, bytes, sizeof vector);
    return vector;
}

Vector Min(Vector a, Vector b) {
    return a < b ? a : b;
}

bool HasZero(Vector bytes) {
    const Halves zeros = reinterpret_cast<Halves>(bytes == 0);
    return (zeros[0] | zeros[1]) != 0;
}

// Where the first vector begins of which a byte and its successor are zero; kBlock when there is none. Looks
// at one byte more than the block.
size_t VectorWithZeroPair(const unsigned char *block) {
    constexpr size_t kStep = sizeof(Vector);
    // of two bytes in a row, one is at an odd position: seldom is there a zero at one of these alone
    constexpr Vector kEven = {0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0};
    const Vector lowest =
        Min(Min(Load(block), Load(block + kStep)), Min(Load(block + 2 * kStep), Load(block + 3 * kStep)));
    if (!HasZero(lowest | kEven))
        return kBlock;
    size_t at = 0;
    while (at < kBlock && !HasZero(Load(block + at) | Load(block + at + 1)))  // zero where both are
        at += kStep;
    return at;
}

}  // namespace

size_t FindZeroPair(std::span<const unsigned char> bytes) {
    const unsigned char *const data = bytes.data();
    size_t at = 0;
    size_t passed = kBlock;
    for (; bytes.size() - at > kBlock && passed == kBlock; at += passed)
        passed = VectorWithZeroPair(data + at);
    while (at + 1 < bytes.size()) {
        if (data[at + 1] != 0)
            at += 2;
        else if (data[at] == 0)
            return at;
        else
            at++;
    }
    return bytes.size();
}

}  // namespace h265tool
