#include "h265d/parsing/pps.h"

#include <algorithm>

#include "common/read.h"
#include "h265d/framing/parse_frame.h"
#include "h265d/parsing/scaling_list.h"
#include "h265d/parsing/sodb_capacity.h"

namespace {

// The bounds that assertions speak of; an index that equals its bound is still read.
constexpr int MAX_TILE_COLUMN_INDEX = 480;
constexpr int MAX_TILE_ROW_INDEX = 270;

// No H.265 level has pictures with more tile columns or rows (16888 luma samples, blocks of 16). Indices
// beyond it would only be asserted one by one, as many as a hostile count asks for.
constexpr UINT64 MAX_TILES_MINUS1 = 1055 - 1;

int TilesMinus1(UINT64 count_minus1) {
    return static_cast<int>(std::min(count_minus1, MAX_TILES_MINUS1));
}

}  // namespace

int _parse_pps(bitbuffer_t *pps_nalu_bb, pps_h265_t *pps) {
    if (pps_nalu_bb == nullptr || pps == nullptr)
        return -1;
    TRACE(kFunction, "Called.\n");

    BitReader bb(pps_nalu_bb);
    READ_UE(bb, pps, pps_pic_parameter_set_id);
    READ_UE(bb, pps, pps_seq_parameter_set_id);
    READ_FLAG(bb, pps, dependent_slice_segments_enabled_flag);
    READ_FLAG(bb, pps, output_flag_present_flag);
    READ_U(bb, 3, pps, num_extra_slice_header_bits);
    READ_FLAG(bb, pps, sign_data_hiding_enabled_flag);
    READ_FLAG(bb, pps, cabac_init_present_flag);
    READ_UE(bb, pps, num_ref_idx_l0_default_active_minus1);
    READ_UE(bb, pps, num_ref_idx_l1_default_active_minus1);
    READ_SE(bb, pps, init_qp_minus26);
    READ_FLAG(bb, pps, constrained_intra_pred_flag);
    READ_FLAG(bb, pps, transform_skip_enabled_flag);
    READ_FLAG(bb, pps, cu_qp_delta_enabled_flag);
    if (pps->cu_qp_delta_enabled_flag)
        READ_UE(bb, pps, diff_cu_qp_delta_depth);
    READ_SE(bb, pps, pps_cb_qp_offset);
    READ_SE(bb, pps, pps_cr_qp_offset);
    READ_FLAG(bb, pps, pps_slice_chroma_qp_offsets_present_flag);
    READ_FLAG(bb, pps, weighted_pred_flag);
    READ_FLAG(bb, pps, weighted_bipred_flag);
    READ_FLAG(bb, pps, transquant_bypass_enabled_flag);
    READ_FLAG(bb, pps, tiles_enabled_flag);
    READ_FLAG(bb, pps, entropy_coding_sync_enabled_flag);
    if (pps->tiles_enabled_flag) {
        // "tiles" in both texts
        READ_UE_AS(bb, pps->num_tile_columns_minus1, "cannot parse num_tiles_columns_minus1.\n");
        READ_UE_AS(bb, pps->num_tile_rows_minus1, "cannot parse num_tiles_rows_minus1.\n");
        READ_FLAG(bb, pps, uniform_spacing_flag);
        if (!pps->uniform_spacing_flag) {
            for (int i = 0; i < TilesMinus1(pps->num_tile_columns_minus1); i++) {
                if (i > MAX_TILE_COLUMN_INDEX)
                    TEXT_ASSERTION("Too many tiles columns!");
                else
                    READ_UE(bb, pps, column_width_minus1, i);
            }
            for (int i = 0; i < TilesMinus1(pps->num_tile_rows_minus1); i++) {
                if (i > MAX_TILE_ROW_INDEX)
                    TEXT_ASSERTION("Too many tiles rows!");
                else  // reported under the name of the columns
                    READ_UE_AS(bb, pps->row_height_minus1[i], "cannot parse column_width_minus1[%d].\n", i);
            }
        }
        READ_FLAG(bb, pps, loop_filter_across_tiles_enabled_flag);
    }
    READ_FLAG(bb, pps, pps_loop_filter_across_slices_enabled_flag);
    READ_FLAG(bb, pps, deblocking_filter_control_present_flag);
    if (pps->deblocking_filter_control_present_flag) {
        READ_FLAG(bb, pps, deblocking_filter_override_enabled_flag);
        READ_FLAG(bb, pps, pps_deblocking_filter_disabled_flag);
        if (!pps->pps_deblocking_filter_disabled_flag) {
            READ_SE(bb, pps, pps_beta_offset_div2);
            READ_SE(bb, pps, pps_tc_offset_div2);
        }
    }
    // reported under the name of an element before it
    READ_FLAG_AS(bb, pps->pps_scaling_list_data_present_flag,
                 "cannot parse pps_deblocking_filter_disabled_flag.\n");
    if (pps->pps_scaling_list_data_present_flag) {
        // scaling_list_data( ), clause 7.3.4; all reported without indices
        for (int sizeId = 0; sizeId < H265_SCALING_LIST_SIZES; sizeId++) {
            for (int matrixId = 0; matrixId < H265_SCALING_LIST_MATRICES;
                 matrixId += ScalingListMatrixStep(sizeId)) {
                READ_FLAG_AS(bb, pps->scaling_list_pred_mode_flag[sizeId][matrixId],
                             "cannot parse scaling_list_pred_mode_flag.\n");
                if (!pps->scaling_list_pred_mode_flag[sizeId][matrixId]) {
                    READ_UE_AS(bb, pps->scaling_list_pred_matrix_id_delta[sizeId][matrixId],
                               "cannot parse scaling_list_pred_matrix_id_delta.\n");
                    continue;
                }
                INT64 nextCoef = 8;
                if (sizeId > 1) {
                    READ_SE_AS(bb, pps->scaling_list_dc_coef_minus8[sizeId - 2][matrixId],
                               "cannot parse scaling_list_dc_coef_minus8.\n");
                    nextCoef = pps->scaling_list_dc_coef_minus8[sizeId - 2][matrixId] + 8;
                }
                for (int i = 0; i < ScalingListCoefNum(sizeId); i++) {
                    INT64 scaling_list_delta_coef = 0;
                    READ_SE_AS(bb, scaling_list_delta_coef, "cannot parse scaling_list_delta_coef.\n");
                    nextCoef = NextScalingListCoef(nextCoef, scaling_list_delta_coef);
                    pps->scaling_list[sizeId][matrixId][i] = nextCoef;
                }
            }
        }
    }
    READ_FLAG(bb, pps, lists_modification_present_flag);
    READ_UE(bb, pps, log2_parallel_merge_level_minus2);
    READ_FLAG(bb, pps, slice_segment_header_extension_present_flag);
    READ_FLAG(bb, pps, pps_extension_present_flag);
    if (pps->pps_extension_present_flag) {
        READ_FLAG(bb, pps, pps_range_extension_flag);
        READ_FLAG(bb, pps, pps_multilayer_extension_flag);
        READ_FLAG(bb, pps, pps_3d_extension_flag);
        READ_FLAG(bb, pps, pps_scc_extension_flag);
        READ_U(bb, 4, pps, pps_extension_4bits);
    }

    // From here on the record decides, be its values of this PPS or of an earlier one.
    if (pps->pps_range_extension_flag)
        TRACE(kWarning, "parsing of pps_range_extension_flag is NOT done.");
    if (pps->pps_multilayer_extension_flag)
        TRACE(kWarning, "parsing of pps_multilayer_extension is NOT done.");
    if (pps->pps_3d_extension_flag)
        TRACE(kWarning, "parsing of pps_3d_extension is NOT done.");
    if (pps->pps_scc_extension_flag)
        TRACE(kWarning, "parsing of pps_scc_extension is NOT done.");
    if (pps->pps_extension_4bits) {
        const int pps_extension_bitcount = ReadToEnd(bb, pps->pps_extension_data_flag);
        TRACE(kInformation, "pps_extension_data_flag has %d bits.\n", pps_extension_bitcount);
    }
    return 0;
}

BOOL H265Lib_Parse_pps_nal(const unsigned char *buffer, int buffer_len, pps_h265_t *pps) {
    static constexpr ParseFrameTexts kTexts = {TRACE_SITE, kBufferLenTooSmall,
                                               "Failed to parse pps nal! buffer:%p.\n", kNoSodbFromRbsp};

    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(pps != NULL);

    unsigned char pps_sodb_buffer[PPS_SODB_CAPACITY];
    bitbuffer_t bb;
    if (!OpenSodb({buffer, buffer_len}, kTexts, pps_sodb_buffer, sizeof pps_sodb_buffer, &bb))
        return FALSE;
    if (_parse_pps(&bb, pps) == -1) {
        TRACE(kError, "Failed to parse PPS NAL!\n");
        return FALSE;
    }
    return TRUE;
}
