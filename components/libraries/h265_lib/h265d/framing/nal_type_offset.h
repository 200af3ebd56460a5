// The start code in front of a NAL unit, ITU-T H.265 clause B.2.

#ifndef H265D_FRAMING_NAL_TYPE_OFFSET_H
#define H265D_FRAMING_NAL_TYPE_OFFSET_H

#include "xtypes.h"

extern "C" {

// Finds the byte that holds nal_unit_type behind a start code of three or four bytes at the very start of
// the buffer. Returns FALSE, with *pnOffset untouched, when there is none.
BOOL _GetNALTypeOffset(const unsigned char *pBuffer, int buffer_len, int *pnOffset);

}  // extern "C"

#endif
