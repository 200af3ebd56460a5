// Big-endian words at byte positions: what reading and writing of bits is made of.

#ifndef BITBUFFER_BITS_H
#define BITBUFFER_BITS_H

#include <cstddef>
#include <cstdint>

#include "bitbuffer.h"

namespace bitbuffer {

// Whether a pointer is missing, which is reported in the calling operation's name.
#define MISSING(pointer) \
    ((pointer) == nullptr && (_DoAssert(#pointer " != NULL", __func__, __FILE_NAME__, __LINE__), true))

// The bits between the cursor and the end; none when the cursor was moved behind the end, or has no bytes.
inline unsigned int BitsLeft(const bitbuffer_t &bb) {
    return bb.num_bits > bb.bit_offset && bb.bit_buffer != nullptr ? bb.num_bits - bb.bit_offset : 0;
}

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

// The word that starts at the cursor's byte, with zeros behind the end of the buffer.
inline uint64_t LoadAtCursor(const bitbuffer_t &bb) {
    const unsigned char *bytes = bb.bit_buffer + bb.bit_offset / 8;
    const size_t left = (size_t{bb.num_bits} + 7) / 8 - bb.bit_offset / 8;
    if (left >= 8)
        return LoadWord(bytes);
    uint64_t word = 0;
    for (size_t i = 0; i < left; i++)
        word |= uint64_t{bytes[i]} << (56 - 8 * i);
    return word;
}

// The widest field that one word can hold at any bit position of its first byte.
constexpr unsigned int kFieldInOneWord = 57;

}  // namespace bitbuffer

#endif
