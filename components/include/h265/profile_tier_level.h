/**
 * @struct profile_tier_level_t
 * profile_tier_level( 1, maxNumSubLayersMinus1 ), ITU-T H.265 clause 7.3.3.
 *
 * Part of vps_h265_t and sps_h265_t. A field whose element the bitstream does not carry keeps the value
 * that the caller's record held.
 */
#ifndef H265_PROFILE_TIER_LEVEL_H
#define H265_PROFILE_TIER_LEVEL_H

#include "../xtypes.h"

/** @addtogroup parsing */ /** @{ */

#define H265_PTL_SUB_LAYERS 8           /**< entries of the per-sub-layer arrays */
#define H265_PTL_COMPATIBILITY_FLAGS 32 /**< profile compatibility flags of a layer */

/** The 43 bits behind the source and constraint flags of profile 2 (and compatible ones). */
typedef struct ptl_general_profile_idc_2 {
    unsigned char reserved_zero_7bits;    /**< u(7) */
    int one_picture_only_constraint_flag; /**< u(1) */
    UINT64 reserved_zero_35bits;          /**< u(35) */
} ptl_general_profile_idc_2;

/** The 43 bits of profiles 4 to 10 (and compatible ones). */
typedef struct ptl_general_profile_idc_4_10 {
    int max_12bits_constraint_flag;       /**< u(1) */
    int max_10bits_constraint_flag;       /**< u(1) */
    int max_8bits_constraint_flag;        /**< u(1) */
    int max_422chroma_constraint_flag;    /**< u(1) */
    int max_420chroma_constraint_flag;    /**< u(1) */
    int max_monochrome_constraint_flag;   /**< u(1) */
    int intra_constraint_flag;            /**< u(1) */
    int one_picture_only_constraint_flag; /**< u(1) */
    int lower_bitrate_constraint_flag;    /**< u(1) */
    int max_14bits_constraint_flag;       /**< u(1), profiles 5, 9 and 10 (sub-layers: 5) only */
    UINT64 reserved_zero_33bits;          /**< u(33), where max_14bits_constraint_flag is read */
    UINT64 reserved_zero_34bits;          /**< u(34), elsewhere */
} ptl_general_profile_idc_4_10;

/** The 43 bits: exactly one alternative is filled, by profile. */
typedef union in_profile_tier_level_t {
    ptl_general_profile_idc_2 profile_2;       /**< profile 2 */
    ptl_general_profile_idc_4_10 profile_4_10; /**< profiles 4 to 10 */
    UINT64 reserved_zero_43bits;               /**< u(43), all other profiles */
} in_profile_tier_level_t;

typedef struct profile_tier_level_t {
    unsigned char general_profile_space;                                  /**< u(2) */
    int general_tier_flag;                                                /**< u(1) */
    unsigned char general_profile_idc;                                    /**< u(5) */
    int general_profile_compatibility_flag[H265_PTL_COMPATIBILITY_FLAGS]; /**< u(1) each */
    int general_scantype_bitoffset;         /**< recorded: position of general_progressive_source_flag */
    int general_progressive_source_flag;    /**< u(1) */
    int general_interlaced_source_flag;     /**< u(1) */
    int general_non_packed_constraint_flag; /**< u(1) */
    int general_frame_only_constraint_flag; /**< u(1) */
    in_profile_tier_level_t u_general;      /**< 43 bits */
    int general_inbld_flag;                 /**< u(1), profiles 1 to 5 and 9 (and compatible ones) */
    int general_reserved_zero_bit;          /**< u(1), all other profiles */
    unsigned char general_level_idc;        /**< u(8), level times 30 */

    /* Entry i is valid for i < maxNumSubLayersMinus1; reserved_zero_2bits[i] for the others up to 7. */
    int sub_layer_profile_present_flag[H265_PTL_SUB_LAYERS]; /**< u(1) */
    int sub_layer_level_present_flag[H265_PTL_SUB_LAYERS];   /**< u(1) */
    unsigned char reserved_zero_2bits[H265_PTL_SUB_LAYERS];  /**< u(2), with more than one sub-layer */

    /* With sub_layer_profile_present_flag[i]. */
    unsigned char sub_layer_profile_space[H265_PTL_SUB_LAYERS];                                  /**< u(2) */
    int sub_layer_tier_flag[H265_PTL_SUB_LAYERS];                                                /**< u(1) */
    unsigned char sub_layer_profile_idc[H265_PTL_SUB_LAYERS];                                    /**< u(5) */
    int sub_layer_profile_compatibility_flag[H265_PTL_SUB_LAYERS][H265_PTL_COMPATIBILITY_FLAGS]; /**< u(1) */
    int sub_layer_progressive_source_flag[H265_PTL_SUB_LAYERS];                                  /**< u(1) */
    int sub_layer_interlaced_source_flag[H265_PTL_SUB_LAYERS];                                   /**< u(1) */
    int sub_layer_non_packed_constrained_flag[H265_PTL_SUB_LAYERS];                              /**< u(1) */
    int sub_layer_frame_only_constrained_flag[H265_PTL_SUB_LAYERS];                              /**< u(1) */
    in_profile_tier_level_t u_sub_layer[H265_PTL_SUB_LAYERS]; /**< 43 bits */
    int sub_layer_inbld_flag[H265_PTL_SUB_LAYERS];            /**< u(1), whatever the profile */
    int sub_layer_reserved_zero_bit[H265_PTL_SUB_LAYERS];     /**< never written */

    unsigned char sub_layer_level_idc[H265_PTL_SUB_LAYERS]; /**< u(8), with sub_layer_level_present_flag[i] */
} profile_tier_level_t;

/** @} */

#endif
