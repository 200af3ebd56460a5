/**
 * @struct vps_h265_t
 * video_parameter_set_rbsp( ), ITU-T H.265 clause 7.3.2.1.
 *
 * The parser never clears the record: a field whose element the bitstream does not carry keeps the value
 * that the caller's record held, and no value is inferred. Entries that the bitstream carries beyond the
 * bounds below are read and dropped.
 */
#ifndef H265_VPS_H
#define H265_VPS_H

#include "../xtypes.h"
#include "hrd.h"
#include "profile_tier_level.h"

/** @addtogroup parsing */ /** @{ */

#define H265_VPS_SUB_LAYERS 6 /**< entries of the per-sub-layer ordering arrays */
#define H265_VPS_LAYER_SETS 6 /**< layer sets whose flags are kept */
#define H265_VPS_LAYER_IDS 8  /**< layer ids whose flags are kept, in each layer set */
#define H265_VPS_HRDS 9       /**< HRDs kept */

typedef struct vps_h265_t {
    unsigned char vps_video_parameter_set_id;     /**< u(4) */
    int vps_base_layer_internal_flag;             /**< u(1) */
    int vps_base_layer_available_flag;            /**< u(1) */
    unsigned char vps_max_layers_minus1;          /**< u(6) */
    unsigned char vps_max_sub_layers_minus1;      /**< u(3) */
    int vps_temporal_id_nesting_flag;             /**< u(1) */
    uint16_t vps_reserved_0xffff_16bits;          /**< u(16), not checked */
    profile_tier_level_t ptl;                     /**< profile_tier_level( ) */
    int after_ptl_bitoffset;                      /**< never written by the parser */
    int vps_sub_layer_ordering_info_present_flag; /**< u(1) */

    /* Entry i describes sub-layer i; without the flag above only entry vps_max_sub_layers_minus1 is read. */
    UINT64 vps_max_dec_pic_buffering_minus1[H265_VPS_SUB_LAYERS]; /**< ue(v) */
    UINT64 vps_max_num_reorder_pics[H265_VPS_SUB_LAYERS];         /**< ue(v) */
    UINT64 vps_max_latency_increase_plus1[H265_VPS_SUB_LAYERS];   /**< ue(v) */

    unsigned char vps_max_layer_id;                                      /**< u(6) */
    UINT64 vps_num_layers_sets_minus1;                                   /**< ue(v), at most 1023 */
    int layer_id_included_flag[H265_VPS_LAYER_SETS][H265_VPS_LAYER_IDS]; /**< u(1), from layer set 1 on */

    int vps_timing_info_present_flag;         /**< u(1) */
    UINT64 vps_num_units_in_tick;             /**< u(32), and the rest down to the HRDs, with timing */
    UINT64 vps_time_scale;                    /**< u(32), units in a second */
    int vps_poc_proportional_to_timing_flag;  /**< u(1) */
    UINT64 vps_num_ticks_poc_diff_one_minus1; /**< ue(v) */
    UINT64 vps_num_hrd_parameters;            /**< ue(v), at most 1024 */
    UINT64 hrd_layer_set_idx[H265_VPS_HRDS];  /**< ue(v) */

    /**
     * u(1), from entry 1 on. Entry 0 is never read and never set: H.265 infers it to be 1, but the first
     * HRD is read with whatever the caller's record holds here. Set entry 0 to 1 before parsing.
     */
    int cprms_present_flag[H265_VPS_HRDS];
    hrd_h265_t vps_hrd_parameters[H265_VPS_HRDS]; /**< hrd_parameters( ) */

    int vps_extenstion_flag;      /**< u(1) */
    int vps_extenstion_data_flag; /**< u(1) each: the last bit of the NAL unit */
} vps_h265_t;

/** @} */

#endif
