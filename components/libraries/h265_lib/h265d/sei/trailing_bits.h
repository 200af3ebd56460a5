// The end of a SEI NAL unit, for which messages have to be told from rbsp_trailing_bits( ).

#ifndef H265D_SEI_TRAILING_BITS_H
#define H265D_SEI_TRAILING_BITS_H

#include "common/trace.h"

struct TrailingBits {
    int last;            // index of the last byte that is not zero: it holds the stop bit
    int StopBitPos;      // of its lowest set bit, from 1; 8: the byte is trailing bits alone
    int length_without;  // from the NAL unit header on, without zero bytes and a byte of trailing bits alone
};

// The search ends at the NAL unit header, whose second byte is then `last`. The header has to be there.
TrailingBits FindTrailingBits(const TraceSite &site, const unsigned char *nal, int length, int header_offset);

#endif
