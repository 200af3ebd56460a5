/**
 * @struct pps_h265_t
 * pic_parameter_set_rbsp( ), ITU-T H.265 clause 7.3.2.3, up to pps_extension_4bits.
 *
 * The parser never clears the record: a field whose element the bitstream does not carry keeps the value
 * that the caller's record held, and no value is inferred. Clear the record first where defined values are
 * needed: pps_extension_4bits of an earlier PPS even decides whether trailing bits are read as extension
 * data.
 */
#ifndef H265_PPS_H
#define H265_PPS_H

#include "../xtypes.h"
#include "scaling_list.h"

/** @addtogroup parsing */ /** @{ */

/**
 * @name Tiles
 * The reader takes an index that equals the stated bound (480 columns, 270 rows) and complains of the
 * larger ones only: the arrays have room for it.
 */
/** @{ */
#define H265_PPS_TILE_COLUMNS 481 /**< entries of column_width_minus1 */
#define H265_PPS_TILE_ROWS 271    /**< entries of row_height_minus1 */
/** @} */

typedef struct pps_h265_t {
    UINT64 pps_pic_parameter_set_id;              /**< ue(v) */
    UINT64 pps_seq_parameter_set_id;              /**< ue(v) */
    int dependent_slice_segments_enabled_flag;    /**< u(1) */
    int output_flag_present_flag;                 /**< u(1) */
    unsigned char num_extra_slice_header_bits;    /**< u(3) */
    int sign_data_hiding_enabled_flag;            /**< u(1) */
    int cabac_init_present_flag;                  /**< u(1) */
    UINT64 num_ref_idx_l0_default_active_minus1;  /**< ue(v) */
    UINT64 num_ref_idx_l1_default_active_minus1;  /**< ue(v) */
    INT64 init_qp_minus26;                        /**< se(v) */
    int constrained_intra_pred_flag;              /**< u(1) */
    int transform_skip_enabled_flag;              /**< u(1) */
    int cu_qp_delta_enabled_flag;                 /**< u(1) */
    UINT64 diff_cu_qp_delta_depth;                /**< ue(v), with cu_qp_delta_enabled_flag */
    INT64 pps_cb_qp_offset;                       /**< se(v) */
    INT64 pps_cr_qp_offset;                       /**< se(v) */
    int pps_slice_chroma_qp_offsets_present_flag; /**< u(1) */
    int weighted_pred_flag;                       /**< u(1) */
    int weighted_bipred_flag;                     /**< u(1) */
    int transquant_bypass_enabled_flag;           /**< u(1) */
    int tiles_enabled_flag;                       /**< u(1) */
    int entropy_coding_sync_enabled_flag;         /**< u(1) */

    /* With tiles_enabled_flag; the widths and heights without uniform_spacing_flag only. */
    UINT64 num_tile_columns_minus1;                    /**< ue(v) */
    UINT64 num_tile_rows_minus1;                       /**< ue(v) */
    int uniform_spacing_flag;                          /**< u(1) */
    UINT64 column_width_minus1[H265_PPS_TILE_COLUMNS]; /**< ue(v) */
    UINT64 row_height_minus1[H265_PPS_TILE_ROWS];      /**< ue(v) */
    int loop_filter_across_tiles_enabled_flag;         /**< u(1) */

    int pps_loop_filter_across_slices_enabled_flag; /**< u(1) */
    int deblocking_filter_control_present_flag;     /**< u(1), and with it: */
    int deblocking_filter_override_enabled_flag;    /**< u(1) */
    int pps_deblocking_filter_disabled_flag;        /**< u(1) */
    INT64 pps_beta_offset_div2;                     /**< se(v), where deblocking is not disabled */
    INT64 pps_tc_offset_div2;                       /**< se(v), where deblocking is not disabled */

    /*
     * scaling_list_data( ), clause 7.3.4, with pps_scaling_list_data_present_flag. Index
     * [sizeId][matrixId], sizeId 3 with the matrices 0 and 3 only; a predicted list is not filled in.
     */
    int pps_scaling_list_data_present_flag;                                               /**< u(1) */
    int scaling_list_pred_mode_flag[H265_SCALING_LIST_SIZES][H265_SCALING_LIST_MATRICES]; /**< u(1) */
    /** ue(v) */
    UINT64 scaling_list_pred_matrix_id_delta[H265_SCALING_LIST_SIZES][H265_SCALING_LIST_MATRICES];
    /** se(v), index [sizeId - 2][matrixId]: only rows 0 and 1 are ever written */
    INT64 scaling_list_dc_coef_minus8[H265_SCALING_LIST_SIZES][H265_SCALING_LIST_MATRICES];
    /** The coefficients, in coded order. */
    INT64 scaling_list[H265_SCALING_LIST_SIZES][H265_SCALING_LIST_MATRICES][H265_SCALING_LIST_COEFFICIENTS];

    int lists_modification_present_flag;             /**< u(1) */
    UINT64 log2_parallel_merge_level_minus2;         /**< ue(v) */
    int slice_segment_header_extension_present_flag; /**< u(1) */

    /* The extensions themselves are not read. */
    int pps_extension_present_flag;    /**< u(1), and with it: */
    int pps_range_extension_flag;      /**< u(1) */
    int pps_multilayer_extension_flag; /**< u(1) */
    int pps_3d_extension_flag;         /**< u(1) */
    int pps_scc_extension_flag;        /**< u(1) */
    unsigned char pps_extension_4bits; /**< u(4) */
    int pps_extension_data_flag; /**< u(1) each, with pps_extension_4bits: the last bit of the NAL unit */
} pps_h265_t;

/** @} */

#endif
