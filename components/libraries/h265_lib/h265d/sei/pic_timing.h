// pic_timing( payloadSize ), ITU-T H.265 clause D.2.3.

#ifndef H265D_SEI_PIC_TIMING_H
#define H265D_SEI_PIC_TIMING_H

#include "bitbuffer.h"
#include "h265.h"

extern "C" {

// Reads the message at pMsgHeader->payload_index. Returns FALSE at the first element that cannot be read.
BOOL _parse_sei_pic_timing(bitbuffer_t *pSeiPicTimingBb, const SEI_message_t *pMsgHeader,
                           const vui_h265_t *pVui, sei_h265_pic_timing_t *pPt);

}  // extern "C"

#endif
