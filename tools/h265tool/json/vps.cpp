#include <algorithm>

#include "json/put.h"

namespace h265tool {
namespace {

// Entries of the stream that the record holds: it drops what is beyond its bounds.
int Kept(UINT64 count, int bound) {
    return static_cast<int>(std::min(count, static_cast<UINT64>(bound)));
}

}  // namespace

// video_parameter_set_rbsp( ), clause 7.3.2.1.
Json ToJson(const vps_h265_t &vps) {
    Json json;
    PUT(json, vps, vps_video_parameter_set_id);
    PUT(json, vps, vps_base_layer_internal_flag);
    PUT(json, vps, vps_base_layer_available_flag);
    PUT(json, vps, vps_max_layers_minus1);
    PUT(json, vps, vps_max_sub_layers_minus1);
    PUT(json, vps, vps_temporal_id_nesting_flag);
    PUT(json, vps, vps_reserved_0xffff_16bits);
    json["ptl"] = ToJson(vps.ptl, vps.vps_max_sub_layers_minus1);
    PUT(json, vps, vps_sub_layer_ordering_info_present_flag);
    const int sub_layers = Kept(vps.vps_max_sub_layers_minus1 + UINT64{1}, H265_VPS_SUB_LAYERS);
    for (int i = vps.vps_sub_layer_ordering_info_present_flag ? 0 : vps.vps_max_sub_layers_minus1;
         i < sub_layers; i++) {
        PUT(json, vps, vps_max_dec_pic_buffering_minus1, i);
        PUT(json, vps, vps_max_num_reorder_pics, i);
        PUT(json, vps, vps_max_latency_increase_plus1, i);
    }
    PUT(json, vps, vps_max_layer_id);
    PUT(json, vps, vps_num_layers_sets_minus1);
    for (int i = 1; i < Kept(vps.vps_num_layers_sets_minus1 + 1, H265_VPS_LAYER_SETS); i++) {
        for (int j = 0; j < Kept(vps.vps_max_layer_id + UINT64{1}, H265_VPS_LAYER_IDS); j++)
            PUT(json, vps, layer_id_included_flag, i, j);
    }
    PUT(json, vps, vps_timing_info_present_flag);
    if (vps.vps_timing_info_present_flag) {
        PUT(json, vps, vps_num_units_in_tick);
        PUT(json, vps, vps_time_scale);
        PUT(json, vps, vps_poc_proportional_to_timing_flag);
        if (vps.vps_poc_proportional_to_timing_flag)
            PUT(json, vps, vps_num_ticks_poc_diff_one_minus1);
        PUT(json, vps, vps_num_hrd_parameters);
        for (int i = 0; i < Kept(vps.vps_num_hrd_parameters, H265_VPS_HRDS); i++) {
            PUT(json, vps, hrd_layer_set_idx, i);
            if (i > 0)
                PUT(json, vps, cprms_present_flag, i);
            json["vps_hrd_parameters"][static_cast<size_t>(i)] = ToJson(
                vps.vps_hrd_parameters[i], vps.cprms_present_flag[i] != 0, vps.vps_max_sub_layers_minus1);
        }
    }
    PUT(json, vps, vps_extenstion_flag);
    if (vps.vps_extenstion_flag)
        PUT(json, vps, vps_extenstion_data_flag);
    return json;
}

}  // namespace h265tool
