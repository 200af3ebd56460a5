// Display of what VPS and SPS share, at level 6, field by field: a field is printed when its syntax element
// is present (ITU-T H.265 clauses 7.3.3, 7.3.4, 7.3.7, E.2.1 to E.2.3), with the differences noted in the
// sources. Entries beyond the arrays of a record are not printed.

#ifndef H265D_DISPLAY_SUB_STRUCTURES_H
#define H265D_DISPLAY_SUB_STRUCTURES_H

#include "h265/sps.h"
#include "h265d/parsing/derived_ref_pic_sets.h"

extern "C" {

void _display_profile_tier_level(const profile_tier_level_t *ptl, unsigned char maxNumSubLayersMinus1);

// Says that the lists are not printed. Returns 0.
int _display_scaling_list_data(const scaling_list_data_t *sld);

// The sets of an SPS are displayed in order, from index 0 on: the flags that a predicted set has follow from
// the sets before it, which derived_sets, the caller's, keeps from call to call. Returns 0.
int _display_short_term_ref_pic_set(const short_term_ref_pic_set_t *strps, UINT64 StRpsIndex,
                                    UINT64 NumShortTermRefPicSets, DerivedRefPicSets *derived_sets);

void _display_sub_layer_hrd_parameters(const sub_layer_hrd_parameters_t *slhp,
                                       int sub_pic_hrd_params_present_flag, int cpb_cnt_minus1);

void _display_hrd(const hrd_h265_t *hrd, int commonInfPresentFlag, int MaxNumSubLayersMinus1);

void _display_vui(const vui_h265_t *vui, unsigned char sps_max_sub_layers_minus1);

}  // extern "C"

#endif
