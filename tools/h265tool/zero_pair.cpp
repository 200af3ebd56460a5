#include "zero_pair.h"

#include <cstdint>
#include <cstring>

namespace h265tool {
namespace {

// The compiler's vector types: one text for SSE2, NEON and machines without either.
using Vector [[gnu::vector_size(16)]] = unsigned char;
using Halves [[gnu::vector_size(16)]] = uint64_t;

constexpr size_t kBlock = 4 * sizeof(Vector);

// Whether one of the first kBlock bytes and its successor are zero; looks at one byte more than the block.
bool BlockHasZeroPair(const unsigned char *block) {
    Vector lowest;
    std::memset(&lowest, 0xFF, sizeof lowest);
    for (size_t at = 0; at < kBlock; at += sizeof(Vector)) {
        Vector bytes;
        Vector successors;
        std::memcpy(&bytes, block + at, sizeof bytes);
        std::memcpy(&successors, block + at + 1, sizeof successors);
        const Vector either = bytes | successors;  // zero where both are
        lowest = either < lowest ? either : lowest;
    }
    const Halves zeros = reinterpret_cast<Halves>(lowest == 0);
    return (zeros[0] | zeros[1]) != 0;
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
