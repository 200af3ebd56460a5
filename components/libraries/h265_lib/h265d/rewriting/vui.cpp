#include "h265d/rewriting/vui.h"

#include "common/write.h"
#include "h265d/rewriting/hrd.h"

int SetVui(bitbuffer_t *new_sps_bb, const sps_h265_t *sps) {
    const vui_h265_t *const vui = &sps->vui;
    BitWriter bb(new_sps_bb);

    SET_FLAG(bb, sps, vui_parameters_present_flag);
    SET_FLAG(bb, vui, aspect_ratio_info_present_flag);
    if (vui->aspect_ratio_info_present_flag) {
        SET_U(bb, 8, vui, aspect_ratio_idc);
        if (vui->aspect_ratio_idc == IH265ENC_ASPECTRATIO_EXTENDED) {
            SET_U(bb, 16, vui, sar_width);
            // reported under the name of its neighbour
            SET_U_AS(bb, 16, vui->sar_height, "Failed to set sar_width.\n");
        }
    }
    SET_FLAG(bb, vui, overscan_info_present_flag);
    if (vui->overscan_info_present_flag)
        SET_FLAG(bb, vui, overscan_appropriate_flag);
    SET_FLAG(bb, vui, video_signal_type_present_flag);
    if (vui->video_signal_type_present_flag) {
        SET_U(bb, 3, vui, video_format);
        SET_FLAG(bb, vui, video_full_range_flag);
        SET_FLAG(bb, vui, colour_description_present_flag);
        if (vui->colour_description_present_flag) {
            SET_U(bb, 8, vui, colour_primaries);
            SET_U(bb, 8, vui, transfer_characteristics);
            SET_U(bb, 8, vui, matrix_coeffs);
        }
    }
    SET_FLAG(bb, vui, chroma_loc_info_present_flag);
    if (vui->chroma_loc_info_present_flag) {
        SET_GOLOMB(bb, vui, chroma_sample_loc_type_top_field);
        SET_GOLOMB(bb, vui, chroma_sample_loc_type_bottom_field);
    }
    SET_FLAG(bb, vui, neutral_chroma_indication_flag);
    SET_FLAG(bb, vui, field_seq_flag);
    // reported under the name of its neighbour
    SET_FLAG_AS(bb, vui->frame_field_info_present_flag, "Failed to set field_seq_flag.\n");
    SET_FLAG(bb, vui, default_display_window_flag);
    if (vui->default_display_window_flag) {
        SET_GOLOMB(bb, vui, def_disp_win_left_offset);
        SET_GOLOMB(bb, vui, def_disp_win_right_offset);
        SET_GOLOMB(bb, vui, def_disp_win_top_offset);
        // reported under the name of its neighbour
        SET_UE_AS(bb, vui->def_disp_win_bottom_offset, "Failed to set def_disp_win_top_offset as golomb.\n");
    }
    SET_FLAG(bb, vui, vui_timing_info_present_flag);
    if (vui->vui_timing_info_present_flag) {
        SET_U(bb, 32, vui, vui_num_units_in_tick);
        SET_U(bb, 32, vui, vui_time_scale);
        SET_FLAG(bb, vui, vui_poc_proportional_to_timing_flag);
        if (vui->vui_poc_proportional_to_timing_flag)
            SET_GOLOMB(bb, vui, vui_num_ticks_poc_diff_one_minus1);
        SET_FLAG(bb, vui, vui_hrd_parameters_present_flag);
        if (vui->vui_hrd_parameters_present_flag)
            SET_STRUCTURE(_set_hrd_parameters(bb.Lend(), 1, sps->sps_max_sub_layers_minus1, &vui->nal_hrd),
                          "Failed to set hrd parameters!\n");
    }
    SET_FLAG(bb, vui, bitstream_restriction_flag);
    TRACE(kFunction, "new_sps_nal_bb has bitstream_restriction_flag=%d.\n", vui->bitstream_restriction_flag);
    if (vui->bitstream_restriction_flag) {
        SET_FLAG(bb, vui, tiles_fixed_structure_flag);
        SET_FLAG(bb, vui, motion_vectors_over_pic_boundaries_flag);
        SET_FLAG(bb, vui, restricted_ref_pic_lists_flag);
        SET_GOLOMB(bb, vui, min_spatial_segmentation_idc);
        SET_GOLOMB(bb, vui, max_bytes_per_pic_denom);
        SET_GOLOMB(bb, vui, max_bits_per_min_cu_denom);
        SET_GOLOMB(bb, vui, log2_max_mv_length_horizontal);
        SET_GOLOMB(bb, vui, log2_max_mv_length_vertical);
    }
    return 0;
}
