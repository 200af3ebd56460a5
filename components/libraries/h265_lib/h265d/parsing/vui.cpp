#include "h265d/parsing/vui.h"

#include "common/read.h"
#include "h265d/parsing/hrd.h"

namespace {

// What picture timing SEI messages are read with when the SPS has timing information but no HRD.
void SetHrdDefaults(vui_h265_t *vui) {
    vui->CpbDpbDelaysPresentFlag = 0;
    vui->nal_hrd.au_cpb_removal_delay_length_minus1 = 23;
    vui->nal_hrd.dpb_output_delay_length_minus1 = 23;
    vui->nal_hrd.dpb_output_delay_du_length_minus1 = 0;
    vui->nal_hrd.du_cpb_removal_delay_increment_length_minus1 = 0;
}

}  // namespace

int _parse_vui_parameters(bitbuffer_t *sps_nalu_bb, unsigned char sps_max_sub_layers_minus1,
                          vui_h265_t *vui) {
    if (sps_nalu_bb == nullptr || vui == nullptr)
        return -1;
    TRACE(kFunction, "Called.\n");

    BitReader bb(sps_nalu_bb);
    READ_FLAG(bb, vui, aspect_ratio_info_present_flag);
    if (vui->aspect_ratio_info_present_flag) {
        READ_U(bb, 8, vui, aspect_ratio_idc);
        if (vui->aspect_ratio_idc == IH265ENC_ASPECTRATIO_EXTENDED) {
            READ_U(bb, 16, vui, sar_width);
            READ_U(bb, 16, vui, sar_height);
        }
    }
    // reported under the name of an element before it
    READ_FLAG_AS(bb, vui->overscan_info_present_flag, "cannot parse aspect_ratio_info_present_flag.\n");
    if (vui->overscan_info_present_flag)
        READ_FLAG(bb, vui, overscan_appropriate_flag);
    READ_FLAG(bb, vui, video_signal_type_present_flag);
    if (vui->video_signal_type_present_flag) {
        READ_U(bb, 3, vui, video_format);
        READ_FLAG(bb, vui, video_full_range_flag);
        READ_FLAG(bb, vui, colour_description_present_flag);
        if (vui->colour_description_present_flag) {
            READ_U(bb, 8, vui, colour_primaries);
            READ_U(bb, 8, vui, transfer_characteristics);
            READ_U(bb, 8, vui, matrix_coeffs);
        }
    }
    READ_FLAG(bb, vui, chroma_loc_info_present_flag);
    if (vui->chroma_loc_info_present_flag) {
        READ_UE(bb, vui, chroma_sample_loc_type_top_field);
        READ_UE(bb, vui, chroma_sample_loc_type_bottom_field);
    }
    READ_FLAG(bb, vui, neutral_chroma_indication_flag);
    READ_FLAG(bb, vui, field_seq_flag);
    READ_FLAG(bb, vui, frame_field_info_present_flag);
    READ_FLAG(bb, vui, default_display_window_flag);
    if (vui->default_display_window_flag) {
        READ_UE(bb, vui, def_disp_win_left_offset);
        READ_UE(bb, vui, def_disp_win_right_offset);
        READ_UE(bb, vui, def_disp_win_top_offset);
        READ_UE(bb, vui, def_disp_win_bottom_offset);
    }
    READ_FLAG(bb, vui, vui_timing_info_present_flag);
    if (vui->vui_timing_info_present_flag) {
        vui->vui_timing_info_bitoffset = static_cast<int>(bb.offset());
        READ_U(bb, 32, vui, vui_num_units_in_tick);
        READ_U(bb, 32, vui, vui_time_scale);
        READ_FLAG(bb, vui, vui_poc_proportional_to_timing_flag);
        if (vui->vui_poc_proportional_to_timing_flag)
            READ_UE(bb, vui, vui_num_ticks_poc_diff_one_minus1);
        READ_FLAG(bb, vui, vui_hrd_parameters_present_flag);
        // the position behind the flag, although the text says "Before"
        vui->vui_hrd_parameters_present_flag_bitoffset = static_cast<int>(bb.offset());
        TRACE(kFunction, "Before vui_hrd_parameters_present_flag BitOffset:%d.\n", bb.offset());
        if (vui->vui_hrd_parameters_present_flag)
            READ_STRUCTURE(_parse_hrd(bb.Lend(), 1, sps_max_sub_layers_minus1, &vui->CpbDpbDelaysPresentFlag,
                                      &vui->nal_hrd),
                           "failed to parse hrd parameters.\n");
        else
            SetHrdDefaults(vui);
    }
    TRACE(kFunction, "Before bitstream_restriction_flag CurrentBitOffset:%d.\n", bb.offset());
    READ_FLAG(bb, vui, bitstream_restriction_flag);
    if (vui->bitstream_restriction_flag) {
        READ_FLAG(bb, vui, tiles_fixed_structure_flag);
        READ_FLAG(bb, vui, motion_vectors_over_pic_boundaries_flag);
        // reported under the name of its neighbour
        READ_FLAG_AS(bb, vui->restricted_ref_pic_lists_flag,
                     "cannot parse motion_vectors_over_pic_boundaries_flag.\n");
        READ_UE(bb, vui, min_spatial_segmentation_idc);
        READ_UE(bb, vui, max_bytes_per_pic_denom);
        READ_UE(bb, vui, max_bits_per_min_cu_denom);
        READ_UE(bb, vui, log2_max_mv_length_horizontal);
        READ_UE(bb, vui, log2_max_mv_length_vertical);
        TRACE(kFunction, "After log2_max_mv_length_vertical CurrentBitOffset:%d.\n", bb.offset());
    }
    TRACE(kFunction, "Done.\n");
    return 0;
}
