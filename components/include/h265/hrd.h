/**
 * @struct hrd_h265_t
 * hrd_parameters( ), ITU-T H.265 clauses E.2.2 and E.2.3.
 *
 * Part of vui_h265_t and vps_h265_t. A field whose element the bitstream does not carry keeps the value
 * that the caller's record held.
 */
#ifndef H265_HRD_H
#define H265_HRD_H

#include "../xtypes.h"

/** @addtogroup parsing */ /** @{ */

#define H265_HRD_SUB_LAYERS 8 /**< entries of the per-sub-layer arrays */
#define H265_HRD_CPB_COUNT 32 /**< coded picture buffers of a sub-layer: cpb_cnt_minus1 is at most 31 */

/** sub_layer_hrd_parameters( ): entry i describes CPB i, up to cpb_cnt_minus1 of the sub-layer. */
typedef struct sub_layer_hrd_parameters_t {
    UINT64 bit_rate_value_minus1[H265_HRD_CPB_COUNT];    /**< ue(v) */
    UINT64 cpb_size_value_minus1[H265_HRD_CPB_COUNT];    /**< ue(v) */
    UINT64 cpb_size_du_value_minus1[H265_HRD_CPB_COUNT]; /**< ue(v), with sub_pic_hrd_params_present_flag */
    UINT64 bit_rate_du_value_minus1[H265_HRD_CPB_COUNT]; /**< ue(v), with sub_pic_hrd_params_present_flag */
    int cbr_flag[H265_HRD_CPB_COUNT];                    /**< u(1) */
} sub_layer_hrd_parameters_t;

typedef struct hrd_h265_t {
    /* The common part: read only when the caller of the syntax structure says that it is present. */
    int nal_hrd_parameters_present_flag; /**< u(1) */
    int vcl_hrd_parameters_present_flag; /**< u(1) */

    /* With either flag. */
    int sub_pic_hrd_params_present_flag;                        /**< u(1) */
    unsigned char tick_divisor_minus2;                          /**< u(8), with sub-picture parameters */
    unsigned char du_cpb_removal_delay_increment_length_minus1; /**< u(5), with sub-picture parameters */
    int sub_pic_cpb_params_in_pic_timing_sei_flag;              /**< u(1), with sub-picture parameters */
    unsigned char dpb_output_delay_du_length_minus1;            /**< u(5), with sub-picture parameters */
    unsigned char bit_rate_scale;                               /**< u(4) */
    unsigned char cpb_size_scale;                               /**< u(4) */
    unsigned char cpb_size_du_scale;                            /**< u(4), with sub-picture parameters */
    unsigned char initial_cpb_removal_delay_length_minus1;      /**< u(5) */
    unsigned char au_cpb_removal_delay_length_minus1;           /**< u(5) */
    unsigned char dpb_output_delay_length_minus1;               /**< u(5) */

    /* Entry i describes sub-layer i. */
    int fixed_pic_rate_general_flag[H265_HRD_SUB_LAYERS];        /**< u(1) */
    int fixed_pic_rate_within_cvs_flag[H265_HRD_SUB_LAYERS];     /**< u(1), or 1 with the general flag */
    UINT64 elemental_duration_in_tc_minus1[H265_HRD_SUB_LAYERS]; /**< ue(v), with the within-CVS flag */
    int low_delay_hrd_flag[H265_HRD_SUB_LAYERS];                 /**< u(1), without the within-CVS flag */
    UINT64 cpb_cnt_minus1[H265_HRD_SUB_LAYERS];                  /**< ue(v), 0 with low_delay_hrd_flag */
    /** With nal_hrd_parameters_present_flag. */
    sub_layer_hrd_parameters_t s_l_nal_hrd_parameters[H265_HRD_SUB_LAYERS];
    /** With vcl_hrd_parameters_present_flag. */
    sub_layer_hrd_parameters_t s_l_vcl_hrd_parameters[H265_HRD_SUB_LAYERS];
} hrd_h265_t;

/** @} */

#endif
