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

// Whether one of the first kBlock bytes and its successor are zero; looks at one byte more than the block.
bool BlockHasZeroPair(const unsigned char *block) {
    constexpr size_t kStep = sizeof(Vector);
    // of two bytes in a row, one is at an odd position: seldom is there a zero at one of these alone
    constexpr Vector kEven = {0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0};
    const Vector lowest =
        Min(Min(Load(block), Load(block + kStep)), Min(Load(block + 2 * kStep), Load(block + 3 * kStep)));
    if (!HasZero(lowest | kEven))
        return false;
    for (size_t at = 0; at < kBlock; at += kStep) {
        if (HasZero(Load(block + at) | Load(block + at + 1)))  // zero where both are
            return true;
    }
    return false;
}

}  // namespace

size_t FindZeroPair(std::span<const unsigned char> bytes) {
    const unsigned char *const data = bytes.data();
    size_t at = 0;
    while (bytes.size() - at > kBlock && !BlockHasZeroPair(data + at))
        at += kBlock;
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
