// The reader of an access unit delimiter.

#ifndef H265D_FRAMING_AU_DELIMITER_H
#define H265D_FRAMING_AU_DELIMITER_H

#include "bitbuffer.h"
#include "h265.h"

extern "C" {

// Reads the delimiter as if the two bytes of the NAL unit header were still in front of it.
BOOL _parse_aud(bitbuffer_t *aud_bb, aud_h265_t *aud_data);

}  // extern "C"

#endif
