// Big-endian words at byte positions: what reading and writing of bits is made of.

#ifndef COMMON_WORDS_H
#define COMMON_WORDS_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace bitbuffer {

// Between the machine's order of bytes and big-endian, in either direction.
inline uint64_t BigEndian(uint64_t word) {
    return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

inline uint32_t BigEndian(uint32_t half_word) {
    return std::endian::native == std::endian::little ? __builtin_bswap32(half_word) : half_word;
}

// Eight bytes as a big-endian number. By way of memcpy, so that it is one load and one byte swap whatever is
// made of the number, and one store below.
inline uint64_t LoadWord(const unsigned char *bytes) {
    uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return BigEndian(word);
}

inline void StoreWord(unsigned char *bytes, uint64_t word) {
    word = BigEndian(word);
    std::memcpy(bytes, &word, sizeof word);
}

// The same for four bytes.
inline uint32_t LoadHalfWord(const unsigned char *bytes) {
    uint32_t half_word = 0;
    std::memcpy(&half_word, bytes, sizeof half_word);
    return BigEndian(half_word);
}

inline void StoreHalfWord(unsigned char *bytes, uint32_t half_word) {
    half_word = BigEndian(half_word);
    std::memcpy(bytes, &half_word, sizeof half_word);
}

inline bool HasZeroByte(uint64_t word) {
    return ((word - 0x0101010101010101U) & ~word & 0x8080808080808080U) != 0;
}

}  // namespace bitbuffer

#endif
