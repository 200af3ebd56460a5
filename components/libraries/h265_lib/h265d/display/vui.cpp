#include "h265d/display/show.h"
#include "h265d/display/sub_structures.h"

namespace {

constexpr int kLevel = kInformation;

}  // namespace

void _display_vui(const vui_h265_t *vui, unsigned char sps_max_sub_layers_minus1) {
    ASSERT_ARGUMENT(vui != NULL);
    if (vui == nullptr)
        return;
    TRACE(kFunction, "Called.\n");
    SHOW_FLAG(vui, aspect_ratio_info_present_flag);
    if (vui->aspect_ratio_info_present_flag) {
        SHOW_U(vui, aspect_ratio_idc);
        if (vui->aspect_ratio_idc == IH265ENC_ASPECTRATIO_EXTENDED) {
            SHOW_U(vui, sar_width);
            SHOW_U(vui, sar_height);
        }
    }
    SHOW_FLAG(vui, overscan_info_present_flag);
    if (vui->overscan_info_present_flag)
        SHOW_FLAG(vui, overscan_appropriate_flag);
    SHOW_FLAG(vui, video_signal_type_present_flag);
    if (vui->video_signal_type_present_flag) {
        SHOW_U(vui, video_format);
        SHOW_FLAG(vui, video_full_range_flag);
        SHOW_FLAG(vui, colour_description_present_flag);
        if (vui->colour_description_present_flag) {
            SHOW_U(vui, colour_primaries);
            SHOW_U(vui, transfer_characteristics);
            SHOW_U(vui, matrix_coeffs);
        }
    }
    SHOW_FLAG(vui, chroma_loc_info_present_flag);
    if (vui->chroma_loc_info_present_flag) {
        SHOW_U(vui, chroma_sample_loc_type_top_field);
        SHOW_U(vui, chroma_sample_loc_type_bottom_field);
    }
    SHOW_FLAG(vui, neutral_chroma_indication_flag);
    SHOW_FLAG(vui, field_seq_flag);
    SHOW_FLAG(vui, frame_field_info_present_flag);
    SHOW_FLAG(vui, default_display_window_flag);
    if (vui->default_display_window_flag) {
        SHOW_U(vui, def_disp_win_left_offset);
        SHOW_U(vui, def_disp_win_right_offset);
        SHOW_U(vui, def_disp_win_top_offset);
        SHOW_U(vui, def_disp_win_bottom_offset);
    }
    // the texts of the timing block lack the prefix of the fields
    SHOW("timing_info_present_flag=%d.\n", vui->vui_timing_info_present_flag);
    if (vui->vui_timing_info_present_flag) {
        SHOW("num_units_in_tick=%u.\n", AS_U(vui->vui_num_units_in_tick));
        SHOW("time_scale=%u.\n", AS_U(vui->vui_time_scale));
        SHOW("poc_proportional_to_timing_flag=%d.\n", vui->vui_poc_proportional_to_timing_flag);
        if (vui->vui_poc_proportional_to_timing_flag)
            SHOW("num_ticks_poc_diff_one_minus1=%u.\n", AS_U(vui->vui_num_ticks_poc_diff_one_minus1));
        SHOW("hrd_parameters_present_flag=%d.\n", vui->vui_hrd_parameters_present_flag);
        if (vui->vui_hrd_parameters_present_flag)
            _display_hrd(&vui->nal_hrd, 1, sps_max_sub_layers_minus1);
    }
    SHOW_FLAG(vui, bitstream_restriction_flag);
    if (vui->bitstream_restriction_flag) {
        SHOW_FLAG(vui, tiles_fixed_structure_flag);
        SHOW_FLAG(vui, motion_vectors_over_pic_boundaries_flag);
        SHOW_FLAG(vui, restricted_ref_pic_lists_flag);
        SHOW_U(vui, min_spatial_segmentation_idc);
        SHOW_U(vui, max_bytes_per_pic_denom);
        SHOW_U(vui, max_bits_per_min_cu_denom);
        SHOW_U(vui, log2_max_mv_length_horizontal);
        SHOW_U(vui, log2_max_mv_length_vertical);
    }
}
