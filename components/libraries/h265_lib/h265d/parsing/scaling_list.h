// scaling_list_data( ), ITU-T H.265 clause 7.3.4.

#ifndef H265D_PARSING_SCALING_LIST_H
#define H265D_PARSING_SCALING_LIST_H

#include "bitbuffer.h"
#include "h265/scaling_list.h"

// sizeId 3 has the matrices 0 and 3 only.
inline int ScalingListMatrixStep(int sizeId) {
    return sizeId == 3 ? 3 : 1;
}

inline int ScalingListCoefNum(int sizeId) {
    return sizeId == 0 ? 16 : H265_SCALING_LIST_COEFFICIENTS;
}

// The running coefficient. The remainder has the sign of the dividend: deltas out of range give negative
// coefficients.
inline INT64 NextScalingListCoef(INT64 nextCoef, INT64 delta) {
    return (nextCoef + delta + 256) % 256;
}

extern "C" {

// Returns 0, or -1 at the first element that cannot be read.
int _parse_scaling_list(bitbuffer_t *sps_nalu_bb, scaling_list_data_t *sl);

}  // extern "C"

#endif
