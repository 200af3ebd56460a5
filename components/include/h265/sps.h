/**
 * @struct sps_h265_t
 * seq_parameter_set_rbsp( ), ITU-T H.265 clause 7.3.2.2.
 *
 * The parser never clears the record: a field whose element the bitstream does not carry keeps the value
 * that the caller's record held, and no value is inferred. Only vui.vui_timing_info_bitoffset is reset, to
 * -1, at the start of every parse.
 *
 * Recorded positions count bits from the first bit behind the two-byte NAL unit header, emulation
 * prevention bytes removed. The rewriting functions need them: a record used for rewriting comes from
 * parsing the very NAL unit that is rewritten.
 */
#ifndef H265_SPS_H
#define H265_SPS_H

#include "../xtypes.h"
#include "profile_tier_level.h"
#include "scaling_list.h"
#include "short_term_ref_pic_set.h"
#include "vui.h"

/** @addtogroup parsing */ /** @{ */

#define H265_SPS_SUB_LAYERS 8               /**< entries of the per-sub-layer arrays */
#define H265_SPS_SHORT_TERM_REF_PIC_SETS 65 /**< an SPS codes at most 64 */
#define H265_SPS_LONG_TERM_REF_PICS 33      /**< an SPS codes at most 33 */

typedef struct sps_h265_t {
    unsigned char sps_video_parameter_set_id; /**< u(4) */
    unsigned char sps_max_sub_layers_minus1;  /**< u(3) */
    int sps_temporal_id_nesting_flag;         /**< u(1) */
    profile_tier_level_t ptl;                 /**< profile_tier_level( ) */
    UINT64 seq_parameter_set_id;              /**< ue(v) */
    UINT64 chroma_format_idc;                 /**< ue(v): 0 monochrome, 1 4:2:0, 2 4:2:2, 3 4:4:4 */
    int separate_colour_plane_flag;           /**< u(1), with chroma_format_idc 3 */
    int before_pic_num_samples_offset;        /**< recorded: position of pic_width_in_luma_samples */
    UINT64 pic_width_in_luma_samples;         /**< ue(v) */
    UINT64 pic_height_in_luma_samples;        /**< ue(v) */
    int conformance_window_flag;              /**< u(1) */
    UINT64 conf_win_left_offset;              /**< ue(v), in chroma units as the other three */
    UINT64 conf_win_right_offset;             /**< ue(v) */
    UINT64 conf_win_top_offset;               /**< ue(v) */
    UINT64 conf_win_bottom_offset;            /**< ue(v) */
    UINT64 bit_depth_luma_minus8;             /**< ue(v) */
    UINT64 bit_depth_chroma_minus8;           /**< ue(v) */
    UINT64 log2_max_pic_order_cnt_lsb_minus4; /**< ue(v) */

    int sps_sub_layer_ordering_info_present_flag; /**< u(1) */
    /* Entry i describes sub-layer i; without the flag above only entry sps_max_sub_layers_minus1 is read. */
    UINT64 sps_max_dec_pic_buffering_minus1[H265_SPS_SUB_LAYERS]; /**< ue(v) */
    UINT64 sps_max_num_reorder_pics[H265_SPS_SUB_LAYERS];         /**< ue(v) */
    UINT64 sps_max_latency_increase_plus1[H265_SPS_SUB_LAYERS];   /**< ue(v) */

    UINT64 log2_min_luma_coding_block_size_minus3;      /**< ue(v) */
    UINT64 log2_diff_max_min_luma_coding_block_size;    /**< ue(v) */
    UINT64 log2_min_luma_transform_block_size_minus2;   /**< ue(v) */
    UINT64 log2_diff_max_min_luma_transform_block_size; /**< ue(v) */
    UINT64 max_transform_hierarchy_depth_inter;         /**< ue(v) */
    UINT64 max_transform_hierarchy_depth_intra;         /**< ue(v) */

    int scaling_list_enabled_flag;          /**< u(1) */
    int sps_scaling_list_data_present_flag; /**< u(1), with scaling_list_enabled_flag */
    scaling_list_data_t scaling_list;       /**< with sps_scaling_list_data_present_flag */
    int amp_enabled_flag;                   /**< u(1) */
    int sample_adaptive_offset_flag;        /**< u(1) */

    int pcm_enabled_flag;                                /**< u(1), and with it: */
    unsigned char pcm_sample_bit_depth_luma_minus1;      /**< u(4) */
    unsigned char pcm_sample_bit_depth_chroma_minus1;    /**< u(4) */
    UINT64 log2_min_pcm_luma_coding_block_size_minus3;   /**< ue(v) */
    UINT64 log2_diff_max_min_pcm_luma_coding_block_size; /**< ue(v) */
    int pcm_loop_filter_disabled_flag;                   /**< u(1) */

    UINT64 num_short_term_ref_pics_sets;                              /**< ue(v), at most 64 */
    short_term_ref_pic_set_t strps[H265_SPS_SHORT_TERM_REF_PIC_SETS]; /**< st_ref_pic_set( ) */
    int long_term_ref_pics_present_flag;                              /**< u(1), and with it: */
    UINT64 num_long_term_ref_pics_sps;                                /**< ue(v), at most 33 */
    UINT64 lt_ref_pic_poc_lsb_sps[H265_SPS_LONG_TERM_REF_PICS];       /**< u(v), as wide as the POC LSBs */
    int used_by_current_pic_lt_sps_flag[H265_SPS_LONG_TERM_REF_PICS]; /**< u(1) */

    int sps_temporal_mvp_enabled_flag;       /**< u(1) */
    int strong_intra_smoothing_enabled_flag; /**< u(1) */
    int vui_parameters_present_flag;         /**< u(1) */
    int vui_parameters_present_offset;       /**< recorded: position of vui_parameters_present_flag */
    vui_h265_t vui;                          /**< with vui_parameters_present_flag */

    int sps_extension_present_flag;    /**< u(1), and with it: */
    int sps_extension_present_offset;  /**< recorded: position of sps_extension_present_flag */
    int sps_range_extension_flag;      /**< u(1) */
    int sps_multilayer_extension_flag; /**< u(1), a set one fails the parse */
    int sps_3d_extension_flag;         /**< u(1), a set one fails the parse */
    int sps_scc_extension_flag;        /**< u(1), a set one fails the parse */
    unsigned char sps_extension_4bits; /**< u(4) */

    /* sps_range_extension( ), clause 7.3.2.2.2: with sps_range_extension_flag. */
    int transform_skip_rotation_enabled_flag;    /**< u(1) */
    int transform_skip_context_enabled_flag;     /**< u(1) */
    int implicit_rdpcm_enabled_flag;             /**< u(1) */
    int explicit_rdpcm_enabled_flag;             /**< u(1) */
    int extended_precision_processing_flag;      /**< u(1) */
    int intra_smoothing_disabled_flag;           /**< u(1) */
    int high_precision_offsets_enabled_flag;     /**< u(1) */
    int persistent_rice_adaptation_enabled_flag; /**< u(1) */
    int cabac_bypass_alignment_enabled_flag;     /**< u(1) */

    int sps_extension_data_flag; /**< u(1) each, with sps_extension_4bits: the last bit of the NAL unit */
} sps_h265_t;

/** @} */

#endif
