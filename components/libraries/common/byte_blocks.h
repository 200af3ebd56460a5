// The fast part of inserting and removing emulation prevention bytes: blocks of bytes in vectors.
//
// Written with the compiler's vector types, so that one text serves SSE2, NEON and machines without either;
// only the mask of a comparison has a form of its own for each.

#ifndef COMMON_BYTE_BLOCKS_H
#define COMMON_BYTE_BLOCKS_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "words.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_NEON) && defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace byte_blocks {

typedef unsigned char Vector __attribute__((vector_size(16)));

constexpr size_t kVector = sizeof(Vector);
constexpr size_t kBlock = 4 * kVector;  // as many bytes as a mask has bits

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

// Whether any byte is zero.
inline bool HasZero(Vector bytes) {
#if defined(__SSE2__)
    return _mm_movemask_epi8(reinterpret_cast<__m128i>(bytes == 0)) != 0;
#elif defined(__ARM_NEON) && defined(__aarch64__)
    return vminvq_u8(bytes) == 0;
#else
    for (size_t i = 0; i < kVector; i++) {
        if (bytes[i] == 0)
            return true;
    }
    return false;
#endif
}

// The bytes of a vector for which a comparison holds (0xFF; 0x00 where it does not).
class Places {
 public:
    Places() = default;
    explicit Places(Vector comparison) {
#if defined(__SSE2__)
        mask_ = static_cast<unsigned int>(_mm_movemask_epi8(reinterpret_cast<__m128i>(comparison)));
#elif defined(__ARM_NEON) && defined(__aarch64__)
        const uint8x8_t nibbles = vshrn_n_u16(vreinterpretq_u16_u8(comparison), 4);
        mask_ = vget_lane_u64(vreinterpret_u64_u8(nibbles), 0);
#else
        for (size_t i = 0; i < kVector; i++)
            mask_ |= Mask{comparison[i] & 1U} << i;
#endif
    }

    bool none() const {
        return mask_ == 0;
    }
    size_t first() const {
        return static_cast<size_t>(std::countr_zero(mask_)) / kBitsOfAByte;
    }

 private:
#if defined(__ARM_NEON) && defined(__aarch64__)
    using Mask = uint64_t;
    static constexpr size_t kBitsOfAByte = 4;
#else
    using Mask = unsigned int;
    static constexpr size_t kBitsOfAByte = 1;
#endif
    Mask mask_ = 0;
};

// A bit for each byte of a block of comparisons (0xFF or 0x00 each), the lowest for the first byte.
inline uint64_t Mask(Vector a, Vector b, Vector c, Vector d) {
#if defined(__SSE2__)
    const auto bits = [](Vector vector) {
        return static_cast<uint64_t>(
            static_cast<unsigned int>(_mm_movemask_epi8(reinterpret_cast<__m128i>(vector))));
    };
    return bits(a) | bits(b) << 16 | bits(c) << 32 | bits(d) << 48;
#elif defined(__ARM_NEON) && defined(__aarch64__)
    constexpr Vector kBits = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const uint8x16_t ab = vpaddq_u8(a & kBits, b & kBits);
    const uint8x16_t cd = vpaddq_u8(c & kBits, d & kBits);
    const uint8x16_t abcd = vpaddq_u8(ab, cd);
    return vgetq_lane_u64(vreinterpretq_u64_u8(vpaddq_u8(abcd, abcd)), 0);
#else
    uint64_t mask = 0;
    for (size_t i = 0; i < kVector; i++)
        mask |= uint64_t{a[i] & 1U} << i | uint64_t{b[i] & 1U} << (16 + i) | uint64_t{c[i] & 1U} << (32 + i) |
                uint64_t{d[i] & 1U} << (48 + i);
    return mask;
#endif
}

// A byte or-ed with its successor: zero where both are.
inline Vector Pairs(const unsigned char *bytes, Vector first) {
    return first | Load(bytes + 1);
}

// Whether a zero byte may be followed by another, be it the first of the next vector: of two bytes in a row,
// one is at an odd position, and seldom is one of these zero.
inline bool MayHaveZeroPair(Vector bytes) {
    constexpr Vector kEven = {0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0};
    return HasZero(bytes | kEven);
}

// The bytes of a block, and where they come from.
class Block {
 public:
    explicit Block(const unsigned char *source)
        : source_(source),
          a_(Load(source)),
          b_(Load(source + kVector)),
          c_(Load(source + 2 * kVector)),
          d_(Load(source + 3 * kVector)) {}

    // Whether a zero byte in it is followed by another, be it the first of the next block.
    bool HasZeroPair() const {
        if (!MayHaveZeroPair(Min(Min(a_, b_), Min(c_, d_))))
            return false;
        const Vector ab = Min(Pairs(source_, a_), Pairs(source_ + kVector, b_));
        const Vector cd = Min(Pairs(source_ + 2 * kVector, c_), Pairs(source_ + 3 * kVector, d_));
        return HasZero(Min(ab, cd));
    }

    void CopyTo(unsigned char *destination) const {
        Store(destination, a_);
        Store(destination + kVector, b_);
        Store(destination + 2 * kVector, c_);
        Store(destination + 3 * kVector, d_);
    }

 private:
    const unsigned char *source_;
    Vector a_, b_, c_, d_;
};

// 0xFF where two zero bytes and a byte for which `third` holds begin, else 0x00: for a vector of bytes, and
// the two behind it.
template <typename Third>
Vector Triplets(const unsigned char *bytes, Third third) {
    return reinterpret_cast<Vector>((Pairs(bytes, Load(bytes)) == 0) & third(Load(bytes + 2)));
}

// How many bytes are looked at for a vector of them.
constexpr size_t kTriplets = kVector + 2;

// At which of a vector's bytes they begin.
template <typename Third>
Places TripletPlaces(const unsigned char *bytes, Third third) {
    return MayHaveZeroPair(Load(bytes)) ? Places(Triplets(bytes, third)) : Places();
}

// The positions in a block at which they begin.
template <typename Third>
uint64_t FindTriplets(const unsigned char *block, Third third) {
    return Mask(Triplets(block, third), Triplets(block + kVector, third),
                Triplets(block + 2 * kVector, third), Triplets(block + 3 * kVector, third));
}

// Copies less than kTriplets bytes, but at least four, if they begin nowhere among them. Returns whether it
// did. `third` is of words here, and makes a zero byte of each byte for which it holds.
template <typename Third>
bool CopyShort(const unsigned char *source, size_t length, unsigned char *destination, Third third) {
    using namespace bitbuffer;
    // whether they begin among the first n bytes of a word
    const auto has_triplet = [third](uint64_t word, size_t n) {
        return HasZeroByte(word | word << 8 | third(word << 16) | ~uint64_t{0} >> 8 * (n - 2));
    };
    if (length < 4)
        return false;
    if (length < 8) {
        const uint32_t first = LoadHalfWord(source);
        const uint32_t last = LoadHalfWord(source + length - 4);
        if (has_triplet(uint64_t{first} << 32 | uint64_t{last} << 8 * (8 - length), length))
            return false;
        std::memcpy(destination, source, 4);
        std::memcpy(destination + length - 4, source + length - 4, 4);
        return true;
    }
    // three words, each of which begins where two bytes of the one in front of it are left, or before
    const size_t middle_at = std::min<size_t>(length - 8, 6);
    const uint64_t first = LoadWord(source);
    const uint64_t middle = LoadWord(source + middle_at);
    const uint64_t last = LoadWord(source + length - 8);
    if (has_triplet(first, 8) || has_triplet(middle, 8) || has_triplet(last, 8))
        return false;
    if (length > 16)
        destination[8] = source[8];
    std::memcpy(destination, source, 8);
    std::memcpy(destination + length - 8, source + length - 8, 8);
    return true;
}

// Copies n bytes a vector at a time: less than a vector more is read, and written. Most are less than a
// vector.
inline void CopyVectors(const unsigned char *source, size_t n, unsigned char *destination) {
    Store(destination, Load(source));
    for (size_t i = kVector; i < n; i += kVector)
        Store(destination + i, Load(source + i));
}

// Copies a block in pieces, each of which ends two bytes behind a position in `triplets`: the last one
// perhaps in the next block. `between` changes the pointers behind each of those. Moves both pointers behind
// what was taken and what was written; behind that a vector more may have been read, and overwritten.
template <typename Between>
void CopyBlockInPieces(uint64_t triplets, const unsigned char **source, unsigned char **destination,
                       Between between) {
    const unsigned char *const block = *source;
    const unsigned char *in = block;
    unsigned char *out = *destination;
    const auto copy_up_to = [&in, &out](const unsigned char *end) {
        CopyVectors(in, static_cast<size_t>(end - in), out);
        out += end - in;
        in = end;
    };
    for (; triplets != 0; triplets &= triplets - 1) {
        copy_up_to(block + std::countr_zero(triplets) + 2);
        between(&in, &out);
    }
    if (in < block + kBlock)
        copy_up_to(block + kBlock);
    *source = in;
    *destination = out;
}

}  // namespace byte_blocks

#endif
