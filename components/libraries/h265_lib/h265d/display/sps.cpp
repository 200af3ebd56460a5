#include "h265d/display/show.h"
#include "h265d/display/sub_structures.h"

namespace {

constexpr int kLevel = kDisplay;

}  // namespace

void H265Lib_Display_sps(const sps_h265_t *sps) {
    ASSERT_ARGUMENT(sps != NULL);
    if (sps == nullptr)
        return;
    SHOW("SPS structure:\n");
    SHOW("++++++++++++++++++\n");
    SHOW_U(sps, sps_video_parameter_set_id);
    SHOW_D(sps, sps_max_sub_layers_minus1);
    SHOW_FLAG(sps, sps_temporal_id_nesting_flag);
    _display_profile_tier_level(&sps->ptl, sps->sps_max_sub_layers_minus1);
    SHOW_U(sps, seq_parameter_set_id);
    SHOW_U(sps, chroma_format_idc);
    if (sps->chroma_format_idc == 3)
        SHOW_FLAG(sps, separate_colour_plane_flag);
    SHOW_U(sps, pic_width_in_luma_samples);
    SHOW_U(sps, pic_height_in_luma_samples);
    SHOW_FLAG(sps, conformance_window_flag);
    if (sps->conformance_window_flag) {
        SHOW_U(sps, conf_win_left_offset);
        SHOW_U(sps, conf_win_right_offset);
        SHOW_U(sps, conf_win_top_offset);
        SHOW_U(sps, conf_win_bottom_offset);
    }
    SHOW_U(sps, bit_depth_luma_minus8);
    SHOW_U(sps, bit_depth_chroma_minus8);
    SHOW_U(sps, log2_max_pic_order_cnt_lsb_minus4);
    SHOW_FLAG(sps, sps_sub_layer_ordering_info_present_flag);
    for (int i = sps->sps_sub_layer_ordering_info_present_flag ? 0 : sps->sps_max_sub_layers_minus1;
         i <= sps->sps_max_sub_layers_minus1 && i < H265_SPS_SUB_LAYERS; i++) {
        SHOW_U(sps, sps_max_dec_pic_buffering_minus1, i);
        SHOW_U(sps, sps_max_num_reorder_pics, i);
        SHOW_U(sps, sps_max_latency_increase_plus1, i);
    }
    SHOW_U(sps, log2_min_luma_coding_block_size_minus3);
    SHOW_U(sps, log2_diff_max_min_luma_coding_block_size);
    SHOW_U(sps, log2_min_luma_transform_block_size_minus2);
    SHOW_U(sps, log2_diff_max_min_luma_transform_block_size);
    SHOW_U(sps, max_transform_hierarchy_depth_inter);
    SHOW_U(sps, max_transform_hierarchy_depth_intra);
    SHOW_FLAG(sps, scaling_list_enabled_flag);
    if (sps->scaling_list_enabled_flag) {
        SHOW_FLAG(sps, sps_scaling_list_data_present_flag);
        if (sps->sps_scaling_list_data_present_flag &&  // GCOVR_EXCL_BR_LINE: the display cannot fail
            _display_scaling_list_data(&sps->scaling_list) != 0)
            SHOW("failed to display scaling list data.\n");  // GCOVR_EXCL_LINE: the display cannot fail
    }
    SHOW_FLAG(sps, amp_enabled_flag);
    SHOW_FLAG(sps, sample_adaptive_offset_flag);
    SHOW_FLAG(sps, pcm_enabled_flag);
    if (sps->pcm_enabled_flag) {
        SHOW_U(sps, pcm_sample_bit_depth_luma_minus1);
        SHOW_U(sps, pcm_sample_bit_depth_chroma_minus1);
        SHOW_U(sps, log2_min_pcm_luma_coding_block_size_minus3);
        SHOW_U(sps, log2_diff_max_min_pcm_luma_coding_block_size);
        SHOW_FLAG(sps, pcm_loop_filter_disabled_flag);
    }
    SHOW_U(sps, num_short_term_ref_pics_sets);
    DerivedRefPicSets derived_sets;
    for (int i = 0; i < Shown(sps->num_short_term_ref_pics_sets, H265_SPS_SHORT_TERM_REF_PIC_SETS); i++)
        _display_short_term_ref_pic_set(&sps->strps[i], static_cast<UINT64>(i),
                                        sps->num_short_term_ref_pics_sets, &derived_sets);
    SHOW_FLAG(sps, long_term_ref_pics_present_flag);
    if (sps->long_term_ref_pics_present_flag) {
        SHOW_U(sps, num_long_term_ref_pics_sps);
        for (int i = 0; i < Shown(sps->num_long_term_ref_pics_sps, H265_SPS_LONG_TERM_REF_PICS); i++) {
            SHOW_U(sps, lt_ref_pic_poc_lsb_sps, i);
            SHOW_FLAG(sps, used_by_current_pic_lt_sps_flag, i);
        }
    }
    SHOW_FLAG(sps, sps_temporal_mvp_enabled_flag);
    SHOW_FLAG(sps, strong_intra_smoothing_enabled_flag);
    SHOW_FLAG(sps, vui_parameters_present_flag);
    if (sps->vui_parameters_present_flag)
        _display_vui(&sps->vui, sps->sps_max_sub_layers_minus1);
    SHOW_FLAG(sps, sps_extension_present_flag);
    if (sps->sps_extension_present_flag) {
        SHOW_FLAG(sps, sps_range_extension_flag);
        SHOW_FLAG(sps, sps_multilayer_extension_flag);
        SHOW_FLAG(sps, sps_3d_extension_flag);
        SHOW_FLAG(sps, sps_scc_extension_flag);
        SHOW_U(sps, sps_extension_4bits);
        if (sps->sps_range_extension_flag) {
            SHOW_FLAG(sps, transform_skip_rotation_enabled_flag);
            SHOW_FLAG(sps, transform_skip_context_enabled_flag);
            SHOW_FLAG(sps, implicit_rdpcm_enabled_flag);
            SHOW_FLAG(sps, explicit_rdpcm_enabled_flag);
            SHOW_FLAG(sps, extended_precision_processing_flag);
            SHOW_FLAG(sps, intra_smoothing_disabled_flag);
            SHOW_FLAG(sps, high_precision_offsets_enabled_flag);
            SHOW_FLAG(sps, persistent_rice_adaptation_enabled_flag);
            SHOW_FLAG(sps, cabac_bypass_alignment_enabled_flag);
        }
    }
    SHOW("+++++++++++++++++++++++++++++\n");
}
