// time_code( payloadSize ), ITU-T H.265 clause D.2.27.

#ifndef H265D_SEI_TIME_CODE_H
#define H265D_SEI_TIME_CODE_H

#include "bitbuffer.h"
#include "h265.h"

extern "C" {

// Reads the message at pMsgHeader->payload_index. Returns FALSE at the first element that cannot be read,
// with a code of that element, the line of its read, in *pLine.
BOOL _parse_sei_timecode(bitbuffer_t *pSeiTimeCodeBb, const SEI_message_t *pMsgHeader,
                         sei_h265_time_code_t *pTc, int *pLine);

}  // extern "C"

#endif
