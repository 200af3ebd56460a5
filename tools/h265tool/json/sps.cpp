#include "json/put.h"

namespace h265tool {
namespace {

// sps_range_extension( ), clause 7.3.2.2.2.
void PutRangeExtension(const sps_h265_t &sps, Json *json) {
    PUT(*json, sps, transform_skip_rotation_enabled_flag);
    PUT(*json, sps, transform_skip_context_enabled_flag);
    PUT(*json, sps, implicit_rdpcm_enabled_flag);
    PUT(*json, sps, explicit_rdpcm_enabled_flag);
    PUT(*json, sps, extended_precision_processing_flag);
    PUT(*json, sps, intra_smoothing_disabled_flag);
    PUT(*json, sps, high_precision_offsets_enabled_flag);
    PUT(*json, sps, persistent_rice_adaptation_enabled_flag);
    PUT(*json, sps, cabac_bypass_alignment_enabled_flag);
}

}  // namespace

// seq_parameter_set_rbsp( ), clause 7.3.2.2.
Json ToJson(const sps_h265_t &sps) {
    Json json;
    PUT(json, sps, sps_video_parameter_set_id);
    PUT(json, sps, sps_max_sub_layers_minus1);
    PUT(json, sps, sps_temporal_id_nesting_flag);
    json["ptl"] = ToJson(sps.ptl, sps.sps_max_sub_layers_minus1);
    PUT(json, sps, seq_parameter_set_id);
    PUT(json, sps, chroma_format_idc);
    if (sps.chroma_format_idc == 3)
        PUT(json, sps, separate_colour_plane_flag);
    PUT(json, sps, pic_width_in_luma_samples);
    PUT(json, sps, pic_height_in_luma_samples);
    PUT(json, sps, conformance_window_flag);
    if (sps.conformance_window_flag) {
        PUT(json, sps, conf_win_left_offset);
        PUT(json, sps, conf_win_right_offset);
        PUT(json, sps, conf_win_top_offset);
        PUT(json, sps, conf_win_bottom_offset);
    }
    PUT(json, sps, bit_depth_luma_minus8);
    PUT(json, sps, bit_depth_chroma_minus8);
    PUT(json, sps, log2_max_pic_order_cnt_lsb_minus4);
    PUT(json, sps, sps_sub_layer_ordering_info_present_flag);
    for (int i = sps.sps_sub_layer_ordering_info_present_flag ? 0 : sps.sps_max_sub_layers_minus1;
         i <= sps.sps_max_sub_layers_minus1; i++) {
        PUT(json, sps, sps_max_dec_pic_buffering_minus1, i);
        PUT(json, sps, sps_max_num_reorder_pics, i);
        PUT(json, sps, sps_max_latency_increase_plus1, i);
    }
    PUT(json, sps, log2_min_luma_coding_block_size_minus3);
    PUT(json, sps, log2_diff_max_min_luma_coding_block_size);
    PUT(json, sps, log2_min_luma_transform_block_size_minus2);
    PUT(json, sps, log2_diff_max_min_luma_transform_block_size);
    PUT(json, sps, max_transform_hierarchy_depth_inter);
    PUT(json, sps, max_transform_hierarchy_depth_intra);
    PUT(json, sps, scaling_list_enabled_flag);
    if (sps.scaling_list_enabled_flag) {
        PUT(json, sps, sps_scaling_list_data_present_flag);
        if (sps.sps_scaling_list_data_present_flag)
            json["scaling_list"] = ToJson(sps.scaling_list);
    }
    PUT(json, sps, amp_enabled_flag);
    PUT(json, sps, sample_adaptive_offset_flag);
    PUT(json, sps, pcm_enabled_flag);
    if (sps.pcm_enabled_flag) {
        PUT(json, sps, pcm_sample_bit_depth_luma_minus1);
        PUT(json, sps, pcm_sample_bit_depth_chroma_minus1);
        PUT(json, sps, log2_min_pcm_luma_coding_block_size_minus3);
        PUT(json, sps, log2_diff_max_min_pcm_luma_coding_block_size);
        PUT(json, sps, pcm_loop_filter_disabled_flag);
    }
    PUT(json, sps, num_short_term_ref_pics_sets);
    if (sps.num_short_term_ref_pics_sets > 0)
        json["strps"] = ShortTermRefPicSetsToJson(sps);
    PUT(json, sps, long_term_ref_pics_present_flag);
    if (sps.long_term_ref_pics_present_flag) {
        PUT(json, sps, num_long_term_ref_pics_sps);
        for (int i = 0; i < static_cast<int>(sps.num_long_term_ref_pics_sps); i++) {
            PUT(json, sps, lt_ref_pic_poc_lsb_sps, i);
            PUT(json, sps, used_by_current_pic_lt_sps_flag, i);
        }
    }
    PUT(json, sps, sps_temporal_mvp_enabled_flag);
    PUT(json, sps, strong_intra_smoothing_enabled_flag);
    PUT(json, sps, vui_parameters_present_flag);
    if (sps.vui_parameters_present_flag)
        json["vui"] = ToJson(sps.vui, sps.sps_max_sub_layers_minus1);
    PUT(json, sps, sps_extension_present_flag);
    if (sps.sps_extension_present_flag) {
        PUT(json, sps, sps_range_extension_flag);
        PUT(json, sps, sps_multilayer_extension_flag);
        PUT(json, sps, sps_3d_extension_flag);
        PUT(json, sps, sps_scc_extension_flag);
        PUT(json, sps, sps_extension_4bits);
        if (sps.sps_range_extension_flag)
            PutRangeExtension(sps, &json);
        if (sps.sps_extension_4bits)
            PUT(json, sps, sps_extension_data_flag);
    }
    return json;
}

}  // namespace h265tool
