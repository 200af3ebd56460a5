// Writing: fixed-width fields, Exp-Golomb codes and bit strings. Bits around a field stay as they are.

#include <cstring>

#include "bit_writer.h"
#include "missing.h"
#include "words.h"

using bitbuffer::BitWriter;

int __DoSetNextBit(bitbuffer_t *bb, int bit, const char *function, const char *file, int line) {
    if (bb == nullptr) [[unlikely]] {
        _DoAssert("bb != NULL", function, file, line);
        return -1;
    }
    return BitWriter(bb).PutBits(1, 1, bit != 0);
}

int SetNextNBitsFromUint8(bitbuffer_t *bb, unsigned int n, uint8_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    return BitWriter(bb).PutBits(n, 8, value);
}

int SetNextNBitsFromUint16(bitbuffer_t *bb, unsigned int n, uint16_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    return BitWriter(bb).PutBits(n, 16, value);
}

int SetNextNBitsFromUint32(bitbuffer_t *bb, unsigned int n, uint32_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    return BitWriter(bb).PutBits(n, 32, value);
}

int SetNextNBitsFromInt32(bitbuffer_t *bb, unsigned int n, int32_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    return BitWriter(bb).PutBits(n, 32, static_cast<uint32_t>(value));
}

int SetUint32Golomb(bitbuffer_t *bb, uint32_t value) {
    if (MISSING(bb)) [[unlikely]]
        return -1;
    return BitWriter(bb).PutGolomb(value);
}

int SetNextNBitsFromString(bitbuffer_t *bb, unsigned int n, const unsigned char *source) {
    if (MISSING(bb) || MISSING(source))
        return -1;
    if (n == 0)
        return 0;
    if (n > BitWriter(bb).BitsLeft())
        return -1;
    if (bb->bit_offset % 8 == 0) {
        std::memcpy(bb->bit_buffer + bb->bit_offset / 8, source, n / 8);
        bb->bit_offset += n / 8 * 8;
        source += n / 8;
        n %= 8;
    }
    BitWriter writer(bb);
    for (; n >= 32; n -= 32, source += 4)
        writer.Put(32, bitbuffer::LoadHalfWord(source));
    for (; n >= 8; n -= 8)
        writer.Put(8, *source++);
    if (n > 0)
        writer.Put(n, static_cast<unsigned int>(*source) >> (8 - n));
    return 0;
}
