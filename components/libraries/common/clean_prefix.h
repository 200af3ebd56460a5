// The fast part of inserting and removing emulation prevention bytes: stretches without two zero bytes in a
// row need no look at single bytes.
//
// Written with the compiler's vector types, so that one text serves SSE2, NEON and machines without either.

#ifndef COMMON_CLEAN_PREFIX_H
#define COMMON_CLEAN_PREFIX_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace emulation_prevention {

// How many bytes to look at one by one after a stretch has ended, before trying for the next one: dense
// patterns then cost little more than a byte loop.
constexpr size_t kBytesAfterStretch = 64;

typedef unsigned char Vector __attribute__((vector_size(16)));
typedef uint64_t VectorHalves __attribute__((vector_size(16)));

constexpr size_t kVector = sizeof(Vector);
constexpr size_t kBlock = 4 * kVector;

inline Vector Load(const unsigned char *bytes) {
    Vector vector;
    std::memcpy(&vector, bytes, kVector);
    return vector;
}

inline void Store(unsigned char *bytes, Vector vector) {
    std::memcpy(bytes, &vector, kVector);
}

inline Vector Min(Vector a, Vector b) {
    return a < b ? a : b;
}

inline bool HasZero(Vector bytes) {
    const VectorHalves zeros = reinterpret_cast<VectorHalves>(bytes == 0);
    return (zeros[0] | zeros[1]) != 0;
}

// Copies whole blocks from source to destination up to the first block in which a zero byte is followed by
// another, be it the first of the next block. Returns the number of bytes copied, at most length - 1. A null
// destination: nothing is copied, only measured.
inline size_t CopyCleanPrefix(const unsigned char *source, size_t length, unsigned char *destination) {
    size_t at = 0;
    for (; length - at > kBlock; at += kBlock) {
        const unsigned char *const from = source + at;
        const Vector a = Load(from);
        const Vector b = Load(from + kVector);
        const Vector c = Load(from + 2 * kVector);
        const Vector d = Load(from + 3 * kVector);
        // A byte or-ed with its successor is zero where both are; the minimum tells whether any is.
        const Vector ab = Min(a | Load(from + 1), b | Load(from + kVector + 1));
        const Vector cd = Min(c | Load(from + 2 * kVector + 1), d | Load(from + 3 * kVector + 1));
        if (HasZero(Min(ab, cd)))
            break;
        if (destination == nullptr)
            continue;
        unsigned char *const to = destination + at;
        Store(to, a);
        Store(to + kVector, b);
        Store(to + 2 * kVector, c);
        Store(to + 3 * kVector, d);
    }
    return at;
}

}  // namespace emulation_prevention

#endif
