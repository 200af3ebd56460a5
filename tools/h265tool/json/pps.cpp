#include <algorithm>

#include "json/put.h"

namespace h265tool {
namespace {

void PutTiles(const pps_h265_t &pps, Json *json) {
    PUT(*json, pps, num_tile_columns_minus1);
    PUT(*json, pps, num_tile_rows_minus1);
    PUT(*json, pps, uniform_spacing_flag);
    if (!pps.uniform_spacing_flag) {
        // what is beyond the record's bounds was dropped
        const int columns =
            static_cast<int>(std::min<UINT64>(pps.num_tile_columns_minus1, H265_PPS_TILE_COLUMNS));
        const int rows = static_cast<int>(std::min<UINT64>(pps.num_tile_rows_minus1, H265_PPS_TILE_ROWS));
        for (int i = 0; i < columns; i++)
            PUT(*json, pps, column_width_minus1, i);
        for (int i = 0; i < rows; i++)
            PUT(*json, pps, row_height_minus1, i);
    }
    PUT(*json, pps, loop_filter_across_tiles_enabled_flag);
}

// scaling_list_data( ) of a PPS, clause 7.3.4: its fields are the record's own.
void PutScalingList(const pps_h265_t &pps, Json *json) {
    for (int sizeId = 0; sizeId < H265_SCALING_LIST_SIZES; sizeId++) {
        for (int matrixId = 0; matrixId < H265_SCALING_LIST_MATRICES;
             matrixId += ScalingListMatrixStep(sizeId)) {
            PUT(*json, pps, scaling_list_pred_mode_flag, sizeId, matrixId);
            if (!pps.scaling_list_pred_mode_flag[sizeId][matrixId]) {
                PUT(*json, pps, scaling_list_pred_matrix_id_delta, sizeId, matrixId);
                continue;
            }
            if (sizeId > 1)
                PUT(*json, pps, scaling_list_dc_coef_minus8, sizeId - 2, matrixId);
            for (int i = 0; i < ScalingListCoefNum(sizeId); i++)
                PUT(*json, pps, scaling_list, sizeId, matrixId, i);
        }
    }
}

}  // namespace

// pic_parameter_set_rbsp( ), clause 7.3.2.3.
Json ToJson(const pps_h265_t &pps) {
    Json json;
    PUT(json, pps, pps_pic_parameter_set_id);
    PUT(json, pps, pps_seq_parameter_set_id);
    PUT(json, pps, dependent_slice_segments_enabled_flag);
    PUT(json, pps, output_flag_present_flag);
    PUT(json, pps, num_extra_slice_header_bits);
    PUT(json, pps, sign_data_hiding_enabled_flag);
    PUT(json, pps, cabac_init_present_flag);
    PUT(json, pps, num_ref_idx_l0_default_active_minus1);
    PUT(json, pps, num_ref_idx_l1_default_active_minus1);
    PUT(json, pps, init_qp_minus26);
    PUT(json, pps, constrained_intra_pred_flag);
    PUT(json, pps, transform_skip_enabled_flag);
    PUT(json, pps, cu_qp_delta_enabled_flag);
    if (pps.cu_qp_delta_enabled_flag)
        PUT(json, pps, diff_cu_qp_delta_depth);
    PUT(json, pps, pps_cb_qp_offset);
    PUT(json, pps, pps_cr_qp_offset);
    PUT(json, pps, pps_slice_chroma_qp_offsets_present_flag);
    PUT(json, pps, weighted_pred_flag);
    PUT(json, pps, weighted_bipred_flag);
    PUT(json, pps, transquant_bypass_enabled_flag);
    PUT(json, pps, tiles_enabled_flag);
    PUT(json, pps, entropy_coding_sync_enabled_flag);
    if (pps.tiles_enabled_flag)
        PutTiles(pps, &json);
    PUT(json, pps, pps_loop_filter_across_slices_enabled_flag);
    PUT(json, pps, deblocking_filter_control_present_flag);
    if (pps.deblocking_filter_control_present_flag) {
        PUT(json, pps, deblocking_filter_override_enabled_flag);
        PUT(json, pps, pps_deblocking_filter_disabled_flag);
        if (!pps.pps_deblocking_filter_disabled_flag) {
            PUT(json, pps, pps_beta_offset_div2);
            PUT(json, pps, pps_tc_offset_div2);
        }
    }
    PUT(json, pps, pps_scaling_list_data_present_flag);
    if (pps.pps_scaling_list_data_present_flag)
        PutScalingList(pps, &json);
    PUT(json, pps, lists_modification_present_flag);
    PUT(json, pps, log2_parallel_merge_level_minus2);
    PUT(json, pps, slice_segment_header_extension_present_flag);
    PUT(json, pps, pps_extension_present_flag);
    if (pps.pps_extension_present_flag) {
        PUT(json, pps, pps_range_extension_flag);
        PUT(json, pps, pps_multilayer_extension_flag);
        PUT(json, pps, pps_3d_extension_flag);
        PUT(json, pps, pps_scc_extension_flag);
        PUT(json, pps, pps_extension_4bits);
        if (pps.pps_extension_4bits)
            PUT(json, pps, pps_extension_data_flag);
    }
    return json;
}

}  // namespace h265tool
