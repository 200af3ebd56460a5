/**
 * @struct vui_h265_t
 * vui_parameters( ), ITU-T H.265 clause E.2.1.
 *
 * Part of sps_h265_t. A field whose element the bitstream does not carry keeps the value that the caller's
 * record held, except where its comment says otherwise.
 */
#ifndef H265_VUI_H
#define H265_VUI_H

#include "../xtypes.h"
#include "hrd.h"

/** @addtogroup parsing */ /** @{ */

/** aspect_ratio_idc, Table E.1: sample aspect ratio width_height. */
typedef enum IH265ENC_ASPECTRATIO {
    IH265ENC_ASPECTRATIO_UNSPECIFIED = 0, /**< not specified */
    IH265ENC_ASPECTRATIO_SQUARE = 1,      /**< 1:1 */
    IH265ENC_ASPECTRATIO_12_11 = 2,       /**< 12:11 */
    IH265ENC_ASPECTRATIO_10_11 = 3,       /**< 10:11 */
    IH265ENC_ASPECTRATIO_16_11 = 4,       /**< 16:11 */
    IH265ENC_ASPECTRATIO_40_33 = 5,       /**< 40:33 */
    IH265ENC_ASPECTRATIO_24_11 = 6,       /**< 24:11 */
    IH265ENC_ASPECTRATIO_20_11 = 7,       /**< 20:11 */
    IH265ENC_ASPECTRATIO_32_11 = 8,       /**< 32:11 */
    IH265ENC_ASPECTRATIO_80_33 = 9,       /**< 80:33 */
    IH265ENC_ASPECTRATIO_18_11 = 10,      /**< 18:11 */
    IH265ENC_ASPECTRATIO_15_11 = 11,      /**< 15:11 */
    IH265ENC_ASPECTRATIO_64_33 = 12,      /**< 64:33 */
    IH265ENC_ASPECTRATIO_160_99 = 13,     /**< 160:99 */
    IH265ENC_ASPECTRATIO_4_3 = 14,        /**< 4:3 */
    IH265ENC_ASPECTRATIO_3_2 = 15,        /**< 3:2 */
    IH265ENC_ASPECTRATIO_2_1 = 16,        /**< 2:1 */
    IH265ENC_ASPECTRATIO_EXTENDED = 255   /**< sar_width and sar_height follow */
} IH265ENC_ASPECTRATIO;

typedef struct vui_h265_t {
    int aspect_ratio_info_present_flag;         /**< u(1) */
    unsigned char aspect_ratio_idc;             /**< u(8), an IH265ENC_ASPECTRATIO */
    uint16_t sar_width;                         /**< u(16), with IH265ENC_ASPECTRATIO_EXTENDED */
    uint16_t sar_height;                        /**< u(16), with IH265ENC_ASPECTRATIO_EXTENDED */
    int overscan_info_present_flag;             /**< u(1) */
    int overscan_appropriate_flag;              /**< u(1) */
    int video_signal_type_present_flag;         /**< u(1) */
    unsigned char video_format;                 /**< u(3) */
    int video_full_range_flag;                  /**< u(1) */
    int colour_description_present_flag;        /**< u(1) */
    unsigned char colour_primaries;             /**< u(8) */
    unsigned char transfer_characteristics;     /**< u(8) */
    unsigned char matrix_coeffs;                /**< u(8) */
    int chroma_loc_info_present_flag;           /**< u(1) */
    UINT64 chroma_sample_loc_type_top_field;    /**< ue(v) */
    UINT64 chroma_sample_loc_type_bottom_field; /**< ue(v) */
    int neutral_chroma_indication_flag;         /**< u(1) */
    int field_seq_flag;                         /**< u(1) */
    int frame_field_info_present_flag;          /**< u(1) */
    int default_display_window_flag;            /**< u(1) */
    UINT64 def_disp_win_left_offset;            /**< ue(v), in chroma units as the other three */
    UINT64 def_disp_win_right_offset;           /**< ue(v) */
    UINT64 def_disp_win_top_offset;             /**< ue(v) */
    UINT64 def_disp_win_bottom_offset;          /**< ue(v) */
    int vui_timing_info_present_flag;           /**< u(1) */
    int vui_timing_info_bitoffset; /**< recorded: position of vui_num_units_in_tick; -1 without timing */
    UINT64 vui_num_units_in_tick;  /**< u(32) */
    UINT64 vui_time_scale;         /**< u(32), units in a second */
    int vui_poc_proportional_to_timing_flag;       /**< u(1) */
    UINT64 vui_num_ticks_poc_diff_one_minus1;      /**< ue(v) */
    int vui_hrd_parameters_present_flag_bitoffset; /**< recorded: position just behind the flag */
    int vui_hrd_parameters_present_flag;           /**< u(1) */
    int CpbDpbDelaysPresentFlag; /**< derived: with timing information, 1 when NAL or VCL HRD is present */
    hrd_h265_t nal_hrd; /**< with timing but without HRD, four of its lengths get defaults: 23, 23, 0, 0 */
    int bitstream_restriction_flag;              /**< u(1) */
    int tiles_fixed_structure_flag;              /**< u(1) */
    int motion_vectors_over_pic_boundaries_flag; /**< u(1) */
    int restricted_ref_pic_lists_flag;           /**< u(1) */
    UINT64 min_spatial_segmentation_idc;         /**< ue(v) */
    UINT64 max_bytes_per_pic_denom;              /**< ue(v) */
    UINT64 max_bits_per_min_cu_denom;            /**< ue(v) */
    UINT64 log2_max_mv_length_horizontal;        /**< ue(v) */
    UINT64 log2_max_mv_length_vertical;          /**< ue(v) */
} vui_h265_t;

/** @} */

#endif
