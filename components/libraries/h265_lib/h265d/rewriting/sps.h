// Rewriting an SPS: source flags, picture size, conformance window and VUI.

#ifndef H265D_REWRITING_SPS_H
#define H265D_REWRITING_SPS_H

#include "bitbuffer.h"
#include "h265/sps.h"

extern "C" {

// Both return the length of the new SODB in bytes, or -1.

int _modify_sps_parameters(bitbuffer_t *sps_bb, int SpsSodbLength, const sps_h265_t *pSpsElements,
                           bitbuffer_t *new_sps_bb, int NewSpsSodbLength);

// The VUI alone.
int _set_sps_vui_parameters(bitbuffer_t *sps_nalu_bb, int SpsSodbLength, const sps_h265_t *sps,
                            bitbuffer_t *new_sps_nalu_bb, int NewSpsSodbLength);

}  // extern "C"

#endif
