#include "h265d/display/show.h"
#include "h265d/display/sub_structures.h"

namespace {

constexpr int kLevel = kDisplay;

constexpr int MAX_VPS_NUM_LAYER_SETS_MINUS1 = 1023;  // clause 7.4.3.1

// Layer ids whose flags the record keeps; the name is that of an assertion's text.
constexpr int MAX_VPS_NUM_LAYER_SETS_MINUS1_VALUE = H265_VPS_LAYER_IDS;

// Entry i of a record's array; 0 for an entry that the record cannot hold, whose line is printed all the
// same.
template <int size>
UINT64 EntryOrZero(const UINT64 (&array)[size], int i) {
    return i < size ? array[i] : 0;
}

}  // namespace

void H265Lib_Display_vps(const vps_h265_t *vps) {
    ASSERT_ARGUMENT(vps != NULL);
    if (vps == nullptr)
        return;
    SHOW("VPS structure:\n");
    SHOW("++++++++++++++++++\n");
    SHOW_U(vps, vps_video_parameter_set_id);
    SHOW_FLAG(vps, vps_base_layer_internal_flag);
    SHOW_FLAG(vps, vps_base_layer_available_flag);
    SHOW_U(vps, vps_max_layers_minus1);
    SHOW_U(vps, vps_max_sub_layers_minus1);
    SHOW_FLAG(vps, vps_temporal_id_nesting_flag);
    SHOW("vps_reserved_0xffff_16bits=%u", vps->vps_reserved_0xffff_16bits);  // without a line end
    _display_profile_tier_level(&vps->ptl, vps->vps_max_sub_layers_minus1);
    SHOW_FLAG(vps, vps_sub_layer_ordering_info_present_flag);
    for (int i = vps->vps_sub_layer_ordering_info_present_flag ? 0 : vps->vps_max_sub_layers_minus1;
         i <= vps->vps_max_sub_layers_minus1; i++) {
        SHOW("vps_max_dec_pic_buffering_minus1[%d]=%u.\n", i,
             AS_U(EntryOrZero(vps->vps_max_dec_pic_buffering_minus1, i)));
        SHOW("vps_max_num_reorder_pics[%d]=%u.\n", i, AS_U(EntryOrZero(vps->vps_max_num_reorder_pics, i)));
        SHOW("vps_max_latency_increase_plus1[%d]=%d\n", i,
             AS_D(EntryOrZero(vps->vps_max_latency_increase_plus1, i)));
    }
    // most texts from here on lack the full stop
    SHOW("vps_max_layer_id=%u\n", vps->vps_max_layer_id);
    SHOW("vps_num_layer_sets_minus1=%u\n", AS_U(vps->vps_num_layers_sets_minus1));
    for (int i = 1; i <= Shown(vps->vps_num_layers_sets_minus1, MAX_VPS_NUM_LAYER_SETS_MINUS1); i++) {
        for (int j = 0; j <= vps->vps_max_layer_id; j++) {
            ASSERT_ARGUMENT(j < MAX_VPS_NUM_LAYER_SETS_MINUS1_VALUE);
            const bool kept = i < H265_VPS_LAYER_SETS && j < H265_VPS_LAYER_IDS;
            SHOW("layer_id_included_flag[%d][%d]=%u.\n", i, j,
                 kept ? AS_U(vps->layer_id_included_flag[i][j]) : 0);
        }
    }
    SHOW("vps_timing_info_present_flag=%d\n", vps->vps_timing_info_present_flag);
    if (vps->vps_timing_info_present_flag) {
        SHOW("vps_num_units_in_tick=%u\n", AS_U(vps->vps_num_units_in_tick));
        SHOW("vps_time_scale=%u\n", AS_U(vps->vps_time_scale));
        SHOW("vps_poc_proportional_to_timing_flag=%d\n", vps->vps_poc_proportional_to_timing_flag);
        if (vps->vps_poc_proportional_to_timing_flag)
            SHOW("vps_num_ticks_poc_diff_one_minus1=%d\n", AS_D(vps->vps_num_ticks_poc_diff_one_minus1));
        SHOW("vps_num_hrd_parameters=%u\n", AS_U(vps->vps_num_hrd_parameters));
        for (int i = 0; i < Shown(vps->vps_num_hrd_parameters, H265_VPS_HRDS); i++) {
            SHOW("hrd_layer_set_idx[%u]=%d\n", AS_U(i), AS_D(vps->hrd_layer_set_idx[i]));
            if (i > 0)
                SHOW("cprms_present_flag[%u]=%d\n", AS_U(i), vps->cprms_present_flag[i]);
            _display_hrd(&vps->vps_hrd_parameters[i], vps->cprms_present_flag[i],
                         vps->vps_max_sub_layers_minus1);
        }
    }
    SHOW("vps_extenstion_flag=%d\n", vps->vps_extenstion_flag);
    SHOW("+++++++++++++++++++++++++++++\n");
}
