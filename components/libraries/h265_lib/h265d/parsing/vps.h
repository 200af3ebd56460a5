// video_parameter_set_rbsp( ), ITU-T H.265 clause 7.3.2.1.

#ifndef H265D_PARSING_VPS_H
#define H265D_PARSING_VPS_H

#include "bitbuffer.h"
#include "h265/vps.h"

extern "C" {

// Reads from the first byte behind the NAL unit header. Returns 0, or -1 at the first element that cannot be
// read.
int _parse_vps(bitbuffer_t *vps_nalu_bb, vps_h265_t *pVps);

}  // extern "C"

#endif
