// Big-endian words at byte positions: what reading and writing of bits is made of.

#ifndef COMMON_WORDS_H
#define COMMON_WORDS_H

#include <cstdint>

namespace bitbuffer {

// Eight bytes as a big-endian number. Compilers make one load and one byte swap of it.
inline uint64_t LoadWord(const unsigned char *bytes) {
    return uint64_t{bytes[0]} << 56 | uint64_t{bytes[1]} << 48 | uint64_t{bytes[2]} << 40 |
           uint64_t{bytes[3]} << 32 | uint64_t{bytes[4]} << 24 | uint64_t{bytes[5]} << 16 |
           uint64_t{bytes[6]} << 8 | uint64_t{bytes[7]};
}

// Written out for the same reason: one byte swap and one store.
inline void StoreWord(unsigned char *bytes, uint64_t word) {
    bytes[0] = static_cast<unsigned char>(word >> 56);
    bytes[1] = static_cast<unsigned char>(word >> 48);
    bytes[2] = static_cast<unsigned char>(word >> 40);
    bytes[3] = static_cast<unsigned char>(word >> 32);
    bytes[4] = static_cast<unsigned char>(word >> 24);
    bytes[5] = static_cast<unsigned char>(word >> 16);
    bytes[6] = static_cast<unsigned char>(word >> 8);
    bytes[7] = static_cast<unsigned char>(word);
}

// The same for four bytes.
inline uint32_t LoadHalfWord(const unsigned char *bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | uint32_t{bytes[3]};
}

inline void StoreHalfWord(unsigned char *bytes, uint32_t word) {
    bytes[0] = static_cast<unsigned char>(word >> 24);
    bytes[1] = static_cast<unsigned char>(word >> 16);
    bytes[2] = static_cast<unsigned char>(word >> 8);
    bytes[3] = static_cast<unsigned char>(word);
}

inline bool HasZeroByte(uint64_t word) {
    return ((word - 0x0101010101010101U) & ~word & 0x8080808080808080U) != 0;
}

}  // namespace bitbuffer

#endif
