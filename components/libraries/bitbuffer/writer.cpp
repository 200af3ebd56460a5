// Writing: fixed-width fields, Exp-Golomb codes and bit strings. Bits around a field stay as they are.

#include <bit>
#include <cstring>

#include "bits.h"

namespace bitbuffer {
namespace {

// Puts the low n bits of a value, 1 to 57; the caller has checked that there is room.
inline void Put(bitbuffer_t &bb, unsigned int n, uint64_t value) {
    const unsigned int shift = 64 - n - bb.bit_offset % 8;
    const uint64_t mask = (~uint64_t{0} >> (64 - n)) << shift;
    StoreAtCursor(bb, (LoadAtCursor(bb) & ~mask) | ((value << shift) & mask));
    bb.bit_offset += n;
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
        for (; n >= 64; n -= 64, source += 8) {
            const uint64_t word = bitbuffer::LoadWord(source);
            bitbuffer::Put(*bb, 32, word >> 32);
            bitbuffer::Put(*bb, 32, word);
        }
        for (; n >= 8; n -= 8)
            bitbuffer::Put(*bb, 8, *source++);
    }
    if (n % 8 != 0)
        bitbuffer::Put(*bb, n % 8, static_cast<unsigned int>(*source) >> (8 - n % 8));
    return 0;
}
