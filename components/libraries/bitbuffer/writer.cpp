// Writing: fixed-width fields, Exp-Golomb codes and bit strings. Bits around a field stay as they are.

#include <bit>
#include <cstring>

#include "bits.h"

namespace bitbuffer {
namespace {

// Puts the low n bits of a value, 1 to 64; the caller has checked that there is room. Only the bytes of the
// field are touched: a load that overlaps a wider store of the field before would have to wait for it.
inline void Put(bitbuffer_t &bb, unsigned int n, uint64_t value) {
    unsigned char *byte = bb.bit_buffer + bb.bit_offset / 8;
    unsigned int room = 8 - bb.bit_offset % 8;
    bb.bit_offset += n;
    for (; n >= room; byte++, room = 8) {
        n -= room;
        const unsigned int mask = 0xFFU >> (8 - room);
        *byte = static_cast<unsigned char>((*byte & ~mask) | (static_cast<unsigned int>(value >> n) & mask));
    }
    if (n > 0) {
        const unsigned int mask = (0xFFU >> (8 - n)) << (room - n);
        *byte = static_cast<unsigned char>((*byte & ~mask) |
                                           (static_cast<unsigned int>(value << (room - n)) & mask));
    }
}

// Puts whole words of a bit string between two bytes of the destination. Returns the number of bits put.
unsigned int PutWords(bitbuffer_t &bb, unsigned int n, const unsigned char *source) {
    const unsigned int shift = bb.bit_offset % 8;  // not 0
    unsigned char *const destination = bb.bit_buffer + bb.bit_offset / 8;
    uint64_t carry = destination[0] >> (8 - shift);  // the bits that the next word begins with
    unsigned int done = 0;
    for (; n - done >= 64; done += 64) {
        const uint64_t word = LoadWord(source + done / 8);
        StoreWord(destination + done / 8, carry << (64 - shift) | word >> shift);
        carry = word;
    }
    bb.bit_offset += done - shift;
    Put(bb, shift, carry);
    return done;
}

inline int PutBits(bitbuffer_t &bb, unsigned int n, unsigned int max_bits, uint64_t value) {
    if (n < 1 || n > max_bits || n > BitsLeft(bb)) [[unlikely]]
        return -1;
    Put(bb, n, value);
    return 0;
}

}  // namespace
}  // namespace bitbuffer

using bitbuffer::PutBits;

int __DoSetNextBit(bitbuffer_t *bb, int bit, const char *function, const char *file, int line) {
    if (bb == nullptr) [[unlikely]] {
        _DoAssert("bb != NULL", function, file, line);
        return -1;
    }
    return PutBits(*bb, 1, 1, bit != 0);
}

int SetNextNBitsFromUint8(bitbuffer_t *bb, unsigned int n, uint8_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    return PutBits(*bb, n, 8, value);
}

int SetNextNBitsFromUint16(bitbuffer_t *bb, unsigned int n, uint16_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    return PutBits(*bb, n, 16, value);
}

int SetNextNBitsFromUint32(bitbuffer_t *bb, unsigned int n, uint32_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    return PutBits(*bb, n, 32, value);
}

int SetNextNBitsFromInt32(bitbuffer_t *bb, unsigned int n, int32_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    return PutBits(*bb, n, 32, static_cast<uint32_t>(value));
}

int SetUint32Golomb(bitbuffer_t *bb, uint32_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    const uint64_t code = uint64_t{value} + 1;
    const unsigned int width = static_cast<unsigned int>(std::bit_width(code));  // 1 to 33
    if (2 * width - 1 > bitbuffer::BitsLeft(*bb))
        return -1;
    if (width > 1)
        bitbuffer::Put(*bb, width - 1, 0);
    bitbuffer::Put(*bb, width, code);
    return 0;
}

int SetNextNBitsFromString(bitbuffer_t *bb, unsigned int n, const unsigned char *source) {
    if (MISSING(bb) || MISSING(source))
        return -1;
    if (n == 0)
        return 0;
    if (n > bitbuffer::BitsLeft(*bb))
        return -1;
    if (bb->bit_offset % 8 == 0) {
        std::memcpy(bb->bit_buffer + bb->bit_offset / 8, source, n / 8);
        source += n / 8;
        bb->bit_offset += n / 8 * 8;
    } else {
        const unsigned int done = n >= 64 ? bitbuffer::PutWords(*bb, n, source) : 0;
        n -= done;
        source += done / 8;
        for (; n >= 8; n -= 8)
            bitbuffer::Put(*bb, 8, *source++);
    }
    if (n % 8 != 0)
        bitbuffer::Put(*bb, n % 8, static_cast<unsigned int>(*source) >> (8 - n % 8));
    return 0;
}
