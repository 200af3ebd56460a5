#include "json/put.h"

namespace h265tool {

// vui_parameters( ), clause E.2.1.
Json ToJson(const vui_h265_t &vui, int max_sub_layers_minus1) {
    Json json;
    PUT(json, vui, aspect_ratio_info_present_flag);
    if (vui.aspect_ratio_info_present_flag) {
        PUT(json, vui, aspect_ratio_idc);
        if (vui.aspect_ratio_idc == IH265ENC_ASPECTRATIO_EXTENDED) {
            PUT(json, vui, sar_width);
            PUT(json, vui, sar_height);
        }
    }
    PUT(json, vui, overscan_info_present_flag);
    if (vui.overscan_info_present_flag)
        PUT(json, vui, overscan_appropriate_flag);
    PUT(json, vui, video_signal_type_present_flag);
    if (vui.video_signal_type_present_flag) {
        PUT(json, vui, video_format);
        PUT(json, vui, video_full_range_flag);
        PUT(json, vui, colour_description_present_flag);
        if (vui.colour_description_present_flag) {
            PUT(json, vui, colour_primaries);
            PUT(json, vui, transfer_characteristics);
            PUT(json, vui, matrix_coeffs);
        }
    }
    PUT(json, vui, chroma_loc_info_present_flag);
    if (vui.chroma_loc_info_present_flag) {
        PUT(json, vui, chroma_sample_loc_type_top_field);
        PUT(json, vui, chroma_sample_loc_type_bottom_field);
    }
    PUT(json, vui, neutral_chroma_indication_flag);
    PUT(json, vui, field_seq_flag);
    PUT(json, vui, frame_field_info_present_flag);
    PUT(json, vui, default_display_window_flag);
    if (vui.default_display_window_flag) {
        PUT(json, vui, def_disp_win_left_offset);
        PUT(json, vui, def_disp_win_right_offset);
        PUT(json, vui, def_disp_win_top_offset);
        PUT(json, vui, def_disp_win_bottom_offset);
    }
    PUT(json, vui, vui_timing_info_present_flag);
    if (vui.vui_timing_info_present_flag) {
        PUT(json, vui, vui_num_units_in_tick);
        PUT(json, vui, vui_time_scale);
        PUT(json, vui, vui_poc_proportional_to_timing_flag);
        if (vui.vui_poc_proportional_to_timing_flag)
            PUT(json, vui, vui_num_ticks_poc_diff_one_minus1);
        PUT(json, vui, vui_hrd_parameters_present_flag);
        if (vui.vui_hrd_parameters_present_flag)
            json["nal_hrd"] = ToJson(vui.nal_hrd, true, max_sub_layers_minus1);
    }
    PUT(json, vui, bitstream_restriction_flag);
    if (vui.bitstream_restriction_flag) {
        PUT(json, vui, tiles_fixed_structure_flag);
        PUT(json, vui, motion_vectors_over_pic_boundaries_flag);
        PUT(json, vui, restricted_ref_pic_lists_flag);
        PUT(json, vui, min_spatial_segmentation_idc);
        PUT(json, vui, max_bytes_per_pic_denom);
        PUT(json, vui, max_bits_per_min_cu_denom);
        PUT(json, vui, log2_max_mv_length_horizontal);
        PUT(json, vui, log2_max_mv_length_vertical);
    }
    return json;
}

}  // namespace h265tool
