// Picture timing: pic_timing( payloadSize ), ITU-T H.265 clause D.2.3, in a reduced form.

#ifndef H265_SEI_PIC_TIMING_H
#define H265_SEI_PIC_TIMING_H

#include "bitbuffer.h"
#include "h265.h"

extern "C" {

// Writes the message and the trailing bits of the NAL unit. Returns the number of bytes, or -1.
int _set_pictiming_elements(bitbuffer_t *pictiming_bb, int PicTimingSodbLength, const vui_h265_t *pVui,
                            const sei_h265_pic_timing_t *pPt);

}  // extern "C"

#endif
