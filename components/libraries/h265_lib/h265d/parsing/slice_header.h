// The beginning of slice_segment_header( ), ITU-T H.265 clause 7.3.6.1.

#ifndef H265D_PARSING_SLICE_HEADER_H
#define H265D_PARSING_SLICE_HEADER_H

#include "bitbuffer.h"
#include "h265.h"

extern "C" {

// Reads from the first byte behind the NAL unit header, up to slice_pic_order_cnt_lsb. Returns 0, or -1 at
// the first element that cannot be read.
int _parse_slice_header(bitbuffer_t *pNal_bb, const sps_h265_t *sps, const pps_h265_t *pps, int nal_unit_type,
                        ssh_h265_t *pSh);

}  // extern "C"

#endif
