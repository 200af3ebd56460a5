// Changing the pic_struct of a picture timing message.

#ifndef H265D_REWRITING_PIC_TIMING_H
#define H265D_REWRITING_PIC_TIMING_H

#include "bitbuffer.h"
#include "h265.h"

extern "C" {

// Overwrites the pic_struct of the payload at PayloadIndex. Returns the number of bytes up to there, or -1.
int _modify_sei_pictiming_parameters(bitbuffer_t *sei_nalu_bb, int SEISodbLength, const vui_h265_t *pVUI,
                                     UINT PayloadIndex, const sei_h265_pic_timing_t *pPt);

}  // extern "C"

#endif
