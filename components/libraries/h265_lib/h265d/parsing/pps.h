// pic_parameter_set_rbsp( ), ITU-T H.265 clause 7.3.2.3.

#ifndef H265D_PARSING_PPS_H
#define H265D_PARSING_PPS_H

#include "bitbuffer.h"
#include "h265/pps.h"

extern "C" {

// Reads from the first byte behind the NAL unit header, up to pps_extension_4bits. Returns 0, or -1 at the
// first element that cannot be read.
int _parse_pps(bitbuffer_t *pps_nalu_bb, pps_h265_t *pps);

}  // extern "C"

#endif
