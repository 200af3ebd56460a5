// Writing hrd_parameters( ) and sub_layer_hrd_parameters( ), ITU-T H.265 clauses E.2.2 and E.2.3.

#ifndef H265D_REWRITING_HRD_H
#define H265D_REWRITING_HRD_H

#include "bitbuffer.h"
#include "h265/hrd.h"

extern "C" {

// Both return 0, or -1 at the first element that cannot be written, or that the record cannot hold.

int _set_hrd_parameters(bitbuffer_t *sps_nalu_bb, int commonInfPresentFlag, int MaxNumSubLayersMinus1,
                        const hrd_h265_t *pHrd);

int _set_sub_layer_hrd_parameters(bitbuffer_t *sps_nalu_bb, int sub_pic_hrd_params_present_flag,
                                  int cpb_cnt_minus1, const sub_layer_hrd_parameters_t *slhp);

}  // extern "C"

#endif
