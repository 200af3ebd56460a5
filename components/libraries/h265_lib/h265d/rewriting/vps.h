// Marking a VPS as interlaced.

#ifndef H265D_REWRITING_VPS_H
#define H265D_REWRITING_VPS_H

#include "bitbuffer.h"
#include "h265/vps.h"

extern "C" {

// Overwrites the source flags at the positions that the record holds. Returns a count that is not negative,
// or -1.
int _modify_vps_parameters(bitbuffer_t *vps_bb, int VPSSodbLength, const vps_h265_t *pVpsElements);

}  // extern "C"

#endif
