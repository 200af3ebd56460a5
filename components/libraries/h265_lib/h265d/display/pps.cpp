#include "h265d/display/show.h"

namespace {

constexpr int kLevel = kDisplay;

}  // namespace

void H265Lib_Display_pps(const pps_h265_t *pps) {
    ASSERT_ARGUMENT(pps != NULL);
    if (pps == nullptr)
        return;
    SHOW("PPS structure:\n");
    SHOW("++++++++++++++++++\n");
    SHOW_U(pps, pps_pic_parameter_set_id);
    SHOW_U(pps, pps_seq_parameter_set_id);
    SHOW_FLAG(pps, dependent_slice_segments_enabled_flag);
    SHOW_FLAG(pps, output_flag_present_flag);
    SHOW_U(pps, num_extra_slice_header_bits);
    SHOW_FLAG(pps, sign_data_hiding_enabled_flag);
    SHOW_FLAG(pps, cabac_init_present_flag);
    SHOW_U(pps, num_ref_idx_l0_default_active_minus1);
    SHOW_U(pps, num_ref_idx_l1_default_active_minus1);
    SHOW_D(pps, init_qp_minus26);
    SHOW_FLAG(pps, constrained_intra_pred_flag);
    SHOW_FLAG(pps, transform_skip_enabled_flag);
    SHOW_FLAG(pps, cu_qp_delta_enabled_flag);
    if (pps->cu_qp_delta_enabled_flag)
        SHOW_U(pps, diff_cu_qp_delta_depth);
    SHOW_D(pps, pps_cb_qp_offset);
    SHOW_D(pps, pps_cb_qp_offset);  // twice, and never the cr offset, on purpose
    SHOW_FLAG(pps, pps_slice_chroma_qp_offsets_present_flag);
    SHOW_FLAG(pps, weighted_pred_flag);
    SHOW_FLAG(pps, weighted_bipred_flag);
    SHOW_FLAG(pps, transquant_bypass_enabled_flag);
    SHOW_FLAG(pps, tiles_enabled_flag);
    SHOW_FLAG(pps, entropy_coding_sync_enabled_flag);
    if (pps->tiles_enabled_flag) {
        SHOW_U(pps, num_tile_columns_minus1);
        SHOW_U(pps, num_tile_rows_minus1);
        SHOW_FLAG(pps, uniform_spacing_flag);
        if (!pps->uniform_spacing_flag) {
            for (int i = 0; i < Shown(pps->num_tile_columns_minus1, H265_PPS_TILE_COLUMNS); i++)
                SHOW_U(pps, column_width_minus1, i);
            for (int i = 0; i < Shown(pps->num_tile_rows_minus1, H265_PPS_TILE_ROWS); i++)
                SHOW_U(pps, row_height_minus1, i);
        }
        SHOW_FLAG(pps, loop_filter_across_tiles_enabled_flag);
    }
    SHOW_FLAG(pps, pps_loop_filter_across_slices_enabled_flag);
    SHOW_FLAG(pps, deblocking_filter_control_present_flag);
    if (pps->deblocking_filter_control_present_flag) {
        SHOW_FLAG(pps, deblocking_filter_override_enabled_flag);
        SHOW_FLAG(pps, pps_deblocking_filter_disabled_flag);
        if (!pps->pps_deblocking_filter_disabled_flag) {
            SHOW_D(pps, pps_beta_offset_div2);
            SHOW_D(pps, pps_tc_offset_div2);
        }
    }
    SHOW_FLAG(pps, pps_scaling_list_data_present_flag);
    if (pps->pps_scaling_list_data_present_flag)
        SHOW("scaling list data is not parsed.\n");
    SHOW_FLAG(pps, lists_modification_present_flag);
    SHOW_U(pps, log2_parallel_merge_level_minus2);
    SHOW_FLAG(pps, slice_segment_header_extension_present_flag);
    SHOW_FLAG(pps, pps_extension_present_flag);
    if (pps->pps_extension_present_flag) {
        SHOW_FLAG(pps, pps_range_extension_flag);
        SHOW_FLAG(pps, pps_multilayer_extension_flag);
        SHOW_FLAG(pps, pps_3d_extension_flag);
        SHOW_FLAG(pps, pps_scc_extension_flag);
        SHOW_U(pps, pps_extension_4bits);
    }
    SHOW("+++++++++++++++++++++++++++++\n");
}
