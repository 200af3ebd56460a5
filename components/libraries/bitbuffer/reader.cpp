// Reading: fixed-width fields, Exp-Golomb codes and bit strings.

#include <cstring>

#include "bit_reader.h"
#include "missing.h"
#include "words.h"

using bitbuffer::BitReader;

int GetNextBitEx(bitbuffer_t *bb, int *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return BitReader(bb).GetFlag(value);
}

int GetNextNBitsAsUint8(bitbuffer_t *bb, unsigned int n, uint8_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return BitReader(bb).GetBits<8>(n, value);
}

int GetNextNBitsAsUint16(bitbuffer_t *bb, unsigned int n, uint16_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return BitReader(bb).GetBits<16>(n, value);
}

int GetNextNBitsAsUint32(bitbuffer_t *bb, unsigned int n, uint32_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return BitReader(bb).GetBits<32>(n, value);
}

int GetNextNBitsAsUint64(bitbuffer_t *bb, unsigned int n, uint64_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return BitReader(bb).GetBits<64>(n, value);
}

int GetNextNBitsAsInt32(bitbuffer_t *bb, unsigned int n, int32_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return BitReader(bb).GetSigned(n, value);
}

int GetUint32Golomb(bitbuffer_t *bb, uint32_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return BitReader(bb).GetGolomb(value);
}

int GetInt32Golomb(bitbuffer_t *bb, int32_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return BitReader(bb).GetSignedGolomb(value);
}

int GetNextNBitsAsStringEx(bitbuffer_t *bb, unsigned int n, unsigned char *destination,
                           unsigned int capacity) {
    if (MISSING(bb) || MISSING(destination))
        return -1;
    if (n == 0)
        return 0;
    BitReader reader(bb);
    if (n > reader.BitsLeft() || (uint64_t{n} + 7) / 8 > capacity)
        return -1;
    const auto take = [&reader](unsigned int bits) {
        reader.HasInWindow(bits);
        return reader.Take(bits);
    };
    if (reader.offset() % 8 == 0) {
        std::memcpy(destination, bb->bit_buffer + reader.offset() / 8, n / 8);
        destination += n / 8;
        reader.Skip(n / 8 * 8);
    } else {
        for (; n >= 32; n -= 32, destination += 4)
            bitbuffer::StoreHalfWord(destination, static_cast<uint32_t>(take(32)));
        for (; n >= 8; n -= 8)
            *destination++ = static_cast<unsigned char>(take(8));
    }
    if (n % 8 != 0)
        *destination = static_cast<unsigned char>(take(n % 8) << (8 - n % 8));
    return 0;
}
