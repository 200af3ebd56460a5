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

constexpr size_t kVectorsInBlock = 4;
constexpr size_t kBlock = kVectorsInBlock * sizeof(Vector);

inline Vector LoadVector(const unsigned char *bytes) {
    Vector vector;
    std::memcpy(&vector, bytes, sizeof vector);
    return vector;
}

// Copies whole blocks from source to destination up to the first block in which a zero byte is followed by
// another, be it the first of the next block. Returns the number of bytes copied, at most length - 1. A null
// destination: nothing is copied, only measured.
inline size_t CopyCleanPrefix(const unsigned char *source, size_t length, unsigned char *destination) {
    size_t at = 0;
    while (length - at > kBlock) {
        Vector bytes[kVectorsInBlock];
        Vector pairs{};
        for (size_t i = 0; i < kVectorsInBlock; i++) {
            const unsigned char *place = source + at + i * sizeof(Vector);
            bytes[i] = LoadVector(place);
            pairs |= (bytes[i] | LoadVector(place + 1)) == 0;
        }
        const VectorHalves found = reinterpret_cast<VectorHalves>(pairs);
        if ((found[0] | found[1]) != 0)
            break;
        if (destination != nullptr)
            std::memcpy(destination + at, bytes, kBlock);
        at += kBlock;
    }
    return at;
}

}  // namespace emulation_prevention

#endif
