// seq_parameter_set_rbsp( ), ITU-T H.265 clause 7.3.2.2.

#ifndef H265D_PARSING_SPS_H
#define H265D_PARSING_SPS_H

#include "bitbuffer.h"
#include "h265/sps.h"

extern "C" {

// Reads from the first byte behind the NAL unit header. Returns 0, or -1 at the first element that cannot be
// read.
int _parse_sps(bitbuffer_t *sps_nalu_bb, sps_h265_t *sps);

}  // extern "C"

#endif
