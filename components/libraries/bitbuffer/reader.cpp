// Reading: fixed-width fields, Exp-Golomb codes and bit strings.

#include <bit>
#include <cstring>

#include "bits.h"

namespace bitbuffer {
namespace {

// Takes n bits, 1 to 57; the caller has checked that they are there.
inline uint64_t Take(bitbuffer_t &bb, unsigned int n) {
    const uint64_t word = LoadAtCursor(bb) << bb.bit_offset % 8;
    bb.bit_offset += n;
    return word >> (64 - n);
}

// u(n), n from 1 to max_bits.
template <unsigned int max_bits, typename Value>
inline int GetBits(bitbuffer_t &bb, unsigned int n, Value *value) {
    if (n < 1 || n > max_bits || n > BitsLeft(bb)) [[unlikely]]
        return -1;
    if constexpr (max_bits > kFieldInOneWord) {
        uint64_t high = 0;
        if (n > 32) {
            high = Take(bb, n - 32) << 32;
            n = 32;
        }
        *value = high | Take(bb, n);
    } else {
        *value = static_cast<Value>(Take(bb, n));
    }
    return 0;
}

// ue(v), clause 9.2. The longest code word that still gives 32 bits has 32 leading zeros.
int GetGolomb(bitbuffer_t &bb, uint32_t *value) {
    const unsigned int left = BitsLeft(bb);
    if (left == 0)
        return -1;
    const uint64_t word = LoadAtCursor(bb) << bb.bit_offset % 8;
    const unsigned int zeros = static_cast<unsigned int>(std::countl_zero(word));
    const unsigned int length = 2 * zeros + 1;
    if (zeros > 32 || length > left)
        return -1;
    if (length <= kFieldInOneWord) [[likely]] {
        *value = static_cast<uint32_t>((word >> (64 - length)) - 1);
        bb.bit_offset += length;
        return 0;
    }
    bitbuffer_t code = bb;
    code.bit_offset += zeros;
    const uint64_t number = Take(code, zeros + 1) - 1;
    if (number > UINT32_MAX)
        return -1;
    *value = static_cast<uint32_t>(number);
    bb.bit_offset = code.bit_offset;
    return 0;
}

}  // namespace
}  // namespace bitbuffer

using bitbuffer::GetBits;

int GetNextBitEx(bitbuffer_t *bb, int *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return GetBits<1>(*bb, 1, value);
}

int GetNextNBitsAsUint8(bitbuffer_t *bb, unsigned int n, uint8_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return GetBits<8>(*bb, n, value);
}

int GetNextNBitsAsUint16(bitbuffer_t *bb, unsigned int n, uint16_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return GetBits<16>(*bb, n, value);
}

int GetNextNBitsAsUint32(bitbuffer_t *bb, unsigned int n, uint32_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return GetBits<32>(*bb, n, value);
}

int GetNextNBitsAsUint64(bitbuffer_t *bb, unsigned int n, uint64_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return GetBits<64>(*bb, n, value);
}

int GetNextNBitsAsInt32(bitbuffer_t *bb, unsigned int n, int32_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    uint32_t bits = 0;
    if (GetBits<32>(*bb, n, &bits) == -1)
        return -1;
    const unsigned int unused = 32 - n;
    *value = static_cast<int32_t>(bits << unused) >> unused;  // the sign bit fills the unused ones
    return 0;
}

int GetUint32Golomb(bitbuffer_t *bb, uint32_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    return bitbuffer::GetGolomb(*bb, value);
}

int GetInt32Golomb(bitbuffer_t *bb, int32_t *value) {
    if (MISSING(bb) || MISSING(value)) [[unlikely]]
        return -1;
    const unsigned int start = bb->bit_offset;
    uint32_t code = 0;
    if (bitbuffer::GetGolomb(*bb, &code) == -1)
        return -1;
    if (code == UINT32_MAX) {  // would be 2^31
        bb->bit_offset = start;
        return -1;
    }
    const int32_t magnitude = static_cast<int32_t>(code / 2 + code % 2);
    *value = code % 2 != 0 ? magnitude : -magnitude;
    return 0;
}

int GetNextNBitsAsStringEx(bitbuffer_t *bb, unsigned int n, unsigned char *destination,
                           unsigned int capacity) {
    if (MISSING(bb) || MISSING(destination))
        return -1;
    if (n == 0)
        return 0;
    if (n > bitbuffer::BitsLeft(*bb) || (uint64_t{n} + 7) / 8 > capacity)
        return -1;
    if (bb->bit_offset % 8 == 0) {
        std::memcpy(destination, bb->bit_buffer + bb->bit_offset / 8, n / 8);
        destination += n / 8;
        bb->bit_offset += n / 8 * 8;
    } else {
        for (; n >= 64; n -= 64, destination += 8) {
            const uint64_t high = bitbuffer::Take(*bb, 32);
            bitbuffer::StoreWord(destination, high << 32 | bitbuffer::Take(*bb, 32));
        }
        for (; n >= 8; n -= 8)
            *destination++ = static_cast<unsigned char>(bitbuffer::Take(*bb, 8));
    }
    if (n % 8 != 0)
        *destination = static_cast<unsigned char>(bitbuffer::Take(*bb, n % 8) << (8 - n % 8));
    return 0;
}
