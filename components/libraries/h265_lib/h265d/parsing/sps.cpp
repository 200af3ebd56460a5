#include "h265d/parsing/sps.h"

#include "common/read.h"
#include "h265d/framing/parse_frame.h"
#include "h265d/parsing/profile_tier_level.h"
#include "h265d/parsing/scaling_list.h"
#include "h265d/parsing/short_term_ref_pic_set.h"
#include "h265d/parsing/sodb_capacity.h"
#include "h265d/parsing/vui.h"

namespace {

constexpr uint32_t MAX_SHORT_TERM_REF_PIC_SETS = 64;  // clause 7.4.3.2.1

}  // namespace

int _parse_sps(bitbuffer_t *sps_nalu_bb, sps_h265_t *sps) {
    if (sps_nalu_bb == nullptr || sps == nullptr)
        return -1;
    sps->vui.vui_timing_info_bitoffset = -1;
    TRACE(kFunction, "Called.\n");
    DisplayBitBuffer(sps_nalu_bb, "Fresh New SPS");

    BitReader bb(sps_nalu_bb);
    READ_U(bb, 4, sps, sps_video_parameter_set_id);
    READ_U(bb, 3, sps, sps_max_sub_layers_minus1);
    READ_FLAG(bb, sps, sps_temporal_id_nesting_flag);
    READ_STRUCTURE(_parse_profile_tier_level(bb.Lend(), sps->sps_max_sub_layers_minus1, &sps->ptl),
                   "cannot parse profile_tier_level.\n");
    TRACE(kFunction, "After PTL CurrentBitOffset:%d.\n", bb.offset());
    READ_UE(bb, sps, seq_parameter_set_id);
    READ_UE(bb, sps, chroma_format_idc);
    if (sps->chroma_format_idc == 3)
        READ_FLAG(bb, sps, separate_colour_plane_flag);
    sps->before_pic_num_samples_offset = static_cast<int>(bb.offset());
    TRACE(kFunction, "Before pic number of samles bitoffset:%d.\n", bb.offset());
    READ_UE(bb, sps, pic_width_in_luma_samples);
    // reported under the name of its neighbour
    READ_UE_AS(bb, sps->pic_height_in_luma_samples, "cannot parse pic_width_in_luma_samples.\n");
    READ_FLAG(bb, sps, conformance_window_flag);
    if (sps->conformance_window_flag) {
        READ_UE(bb, sps, conf_win_left_offset);
        READ_UE(bb, sps, conf_win_right_offset);
        READ_UE(bb, sps, conf_win_top_offset);
        READ_UE(bb, sps, conf_win_bottom_offset);
    }
    TRACE(kFunction, "Before bit_depth_luma_minus8, CurrentBitOffset:%d.\n", bb.offset());
    READ_UE(bb, sps, bit_depth_luma_minus8);
    READ_UE(bb, sps, bit_depth_chroma_minus8);
    READ_UE(bb, sps, log2_max_pic_order_cnt_lsb_minus4);
    TRACE(kFunction, "Before sps_sub_layer_ordering_info_present_flag CurrentBitOffset:%d.\n", bb.offset());
    READ_FLAG(bb, sps, sps_sub_layer_ordering_info_present_flag);
    for (int i = sps->sps_sub_layer_ordering_info_present_flag ? 0 : sps->sps_max_sub_layers_minus1;
         i <= sps->sps_max_sub_layers_minus1; i++) {
        // reported without the index
        READ_UE_AS(bb, sps->sps_max_dec_pic_buffering_minus1[i],
                   "cannot parse sps_max_dec_pic_buffering_minus1.\n");
        READ_UE_AS(bb, sps->sps_max_num_reorder_pics[i], "cannot parse sps_max_num_reorder_pics.\n");
        READ_UE_AS(bb, sps->sps_max_latency_increase_plus1[i],
                   "cannot parse sps_max_latency_increase_plus1.\n");
    }
    TRACE(kFunction, "Before log2_min_luma_coding_block_size_minus3 CurrentBitOffset:%d.\n", bb.offset());
    READ_UE(bb, sps, log2_min_luma_coding_block_size_minus3);
    READ_UE(bb, sps, log2_diff_max_min_luma_coding_block_size);
    READ_UE(bb, sps, log2_min_luma_transform_block_size_minus2);
    READ_UE(bb, sps, log2_diff_max_min_luma_transform_block_size);
    READ_UE(bb, sps, max_transform_hierarchy_depth_inter);
    READ_UE(bb, sps, max_transform_hierarchy_depth_intra);
    TRACE(kFunction, "Before scaling_list_enabled_flag CurrentBitOffset:%d.\n", bb.offset());
    READ_FLAG(bb, sps, scaling_list_enabled_flag);
    if (sps->scaling_list_enabled_flag) {
        READ_FLAG(bb, sps, sps_scaling_list_data_present_flag);
        if (sps->sps_scaling_list_data_present_flag)
            READ_STRUCTURE(_parse_scaling_list(bb.Lend(), &sps->scaling_list),
                           "cannot parse scaling_list.\n");
    }
    READ_FLAG(bb, sps, amp_enabled_flag);
    READ_FLAG(bb, sps, sample_adaptive_offset_flag);
    READ_FLAG(bb, sps, pcm_enabled_flag);
    if (sps->pcm_enabled_flag) {
        READ_U(bb, 4, sps, pcm_sample_bit_depth_luma_minus1);
        READ_U(bb, 4, sps, pcm_sample_bit_depth_chroma_minus1);
        READ_UE(bb, sps, log2_min_pcm_luma_coding_block_size_minus3);
        READ_UE(bb, sps, log2_diff_max_min_pcm_luma_coding_block_size);
        READ_FLAG(bb, sps, pcm_loop_filter_disabled_flag);
    }
    TRACE(kFunction, "Before num_short_term_ref_pics_sets CurrentBitOffset:%d.\n", bb.offset());
    READ_UE_MAX(bb, MAX_SHORT_TERM_REF_PIC_SETS, sps, num_short_term_ref_pics_sets);
    DerivedRefPicSets derived_sets;
    for (UINT64 i = 0; i < sps->num_short_term_ref_pics_sets; i++)
        READ_STRUCTURE(_parse_short_term_ref_pic_set(bb.Lend(), sps->num_short_term_ref_pics_sets, i,
                                                     &sps->strps[i], &derived_sets),
                       "failed to parse short term ref pic set[%lu].\n", i);
    READ_FLAG(bb, sps, long_term_ref_pics_present_flag);
    if (sps->long_term_ref_pics_present_flag) {
        // reported under the name of the other count
        READ_UE_MAX_AS(bb, H265_SPS_LONG_TERM_REF_PICS, sps->num_long_term_ref_pics_sps,
                       "cannot parse num_short_term_ref_pics_sets.\n");
        const int poc_lsb_length = static_cast<int>(sps->log2_max_pic_order_cnt_lsb_minus4 + 4);
        if (poc_lsb_length > 32) {
            TRACE(kError, "invalid log2_max_pic_order_cnt_lsb_minus4[%d].\n",
                  static_cast<int>(sps->log2_max_pic_order_cnt_lsb_minus4));
            return -1;
        }
        for (int i = 0; i < static_cast<int>(sps->num_long_term_ref_pics_sps); i++) {
            // spelled with a capital I
            READ_V_AS(bb, static_cast<unsigned int>(poc_lsb_length), sps->lt_ref_pic_poc_lsb_sps[i],
                      "cannot parse It_ref_pic_poc_lsb_sps[%d].\n", i);
            READ_FLAG(bb, sps, used_by_current_pic_lt_sps_flag, i);
        }
    }
    READ_FLAG(bb, sps, sps_temporal_mvp_enabled_flag);
    READ_FLAG(bb, sps, strong_intra_smoothing_enabled_flag);
    sps->vui_parameters_present_offset = static_cast<int>(bb.offset());
    TRACE(kFunction, "Before vui_parameters_present_flag BitOffset:%d.\n", bb.offset());
    READ_FLAG(bb, sps, vui_parameters_present_flag);
    if (sps->vui_parameters_present_flag)
        READ_STRUCTURE(_parse_vui_parameters(bb.Lend(), sps->sps_max_sub_layers_minus1, &sps->vui),
                       "failed to parse vui parameters.\n");
    sps->sps_extension_present_offset = static_cast<int>(bb.offset());
    TRACE(kFunction, "Before sps_extension_present_flag BitOffset:%d.\n", bb.offset());
    READ_FLAG(bb, sps, sps_extension_present_flag);
    if (sps->sps_extension_present_flag) {
        READ_FLAG(bb, sps, sps_range_extension_flag);
        READ_FLAG(bb, sps, sps_multilayer_extension_flag);
        READ_FLAG(bb, sps, sps_3d_extension_flag);
        READ_FLAG(bb, sps, sps_scc_extension_flag);
        // 4 bits are read, the text says 5
        READ_U_AS(bb, 4, sps->sps_extension_4bits, "cannot parse sps_extension_5bits.\n");
        if (sps->sps_range_extension_flag) {
            READ_FLAG(bb, sps, transform_skip_rotation_enabled_flag);
            READ_FLAG(bb, sps, transform_skip_context_enabled_flag);
            READ_FLAG(bb, sps, implicit_rdpcm_enabled_flag);
            READ_FLAG(bb, sps, explicit_rdpcm_enabled_flag);
            READ_FLAG(bb, sps, extended_precision_processing_flag);
            READ_FLAG(bb, sps, intra_smoothing_disabled_flag);
            READ_FLAG(bb, sps, high_precision_offsets_enabled_flag);
            READ_FLAG(bb, sps, persistent_rice_adaptation_enabled_flag);
            READ_FLAG(bb, sps, cabac_bypass_alignment_enabled_flag);
        }
        if (sps->sps_multilayer_extension_flag) {
            TRACE(kError, "sps_multilayer_extension is NOT parsed! at the moment.\n");
            return -1;
        }
        if (sps->sps_3d_extension_flag) {
            TRACE(kError, "sps_3d_extension is NOT parsed! at the moment.\n");
            return -1;
        }
        if (sps->sps_scc_extension_flag) {
            TRACE(kError, "sps_scc_extension_flag is NOT parsed! at the moment.\n");
            return -1;
        }
        if (sps->sps_extension_4bits) {
            const int count = ReadToEnd(bb, sps->sps_extension_data_flag);
            TRACE(kInformation, "sps_extension_data_flag has %d bits.\n", count);
        }
    }
    TRACE(kFunction, "Done.\n");
    return 0;
}

BOOL H265Lib_Parse_sps_nal(const unsigned char *buffer, size_t buffer_len, sps_h265_t *pSps) {
    static constexpr ParseFrameTexts kTexts = {TRACE_SITE, kBufferLenTooSmall,
                                               "Failed to parse sps nal! buffer:%p.\n", kNoSodbFromRbsp};

    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(pSps != NULL);

    unsigned char sodb[SPS_SODB_CAPACITY];
    bitbuffer_t bb;
    if (!OpenSodb({buffer, static_cast<int64_t>(buffer_len)}, kTexts, sodb, sizeof sodb, &bb))
        return FALSE;
    if (_parse_sps(&bb, pSps) == -1) {
        TRACE(kError, "Failed to parse SPS NAL!\n");
        return FALSE;
    }
    return TRUE;
}
