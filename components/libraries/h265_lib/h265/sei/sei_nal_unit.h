// What every SEI builder begins its NAL unit with.

#ifndef H265_SEI_SEI_NAL_UNIT_H
#define H265_SEI_SEI_NAL_UNIT_H

#include <cstring>

#include "bitbuffer.h"

// Start code; header: nal_unit_type 39 (prefix SEI), layer 0, temporal id 0.
inline constexpr unsigned char kSeiNalPrefix[] = {0x00, 0x00, 0x01, 0x4E, 0x01};
inline constexpr int kSeiNalPrefixSize = sizeof kSeiNalPrefix;

inline constexpr unsigned char kTrailingBits = 0x80;  // rbsp_trailing_bits( ) at a byte boundary

// Writes the prefix, and the SODB behind it with emulation prevention. Returns the number of bytes behind the
// prefix; 0 when they do not fit or the SODB is empty (the prefix may stand then).
inline int EncapsulateSei(const unsigned char *sodb, int sodb_length, unsigned char *buffer, int capacity) {
    if (capacity < kSeiNalPrefixSize)
        return 0;
    std::memcpy(buffer, kSeiNalPrefix, kSeiNalPrefixSize);
    return RBSP_encapsulation_within_NAL(sodb, sodb_length, buffer + kSeiNalPrefixSize,
                                         capacity - kSeiNalPrefixSize);
}

#endif
