#include "support/sps_syntax.h"

#include "support/fields.h"
#include "support/nested_syntax.h"

namespace test {
namespace {

uint64_t Unsigned(int value) {
    return static_cast<uint64_t>(value);
}

}  // namespace

// Notes a trace of the current position.
int SpsSyntax::Step(const std::string &text) {
    steps_.push_back(text + std::to_string(bits().size()) + ".\n");
    return static_cast<int>(bits().size());
}

void SpsSyntax::Prepare(sps_h265_t *sps) {
    sps->strps[0].inter_ref_pic_set_prediction_flag = 0;
    for (short_term_ref_pic_set_t &strps : sps->strps)
        strps.delta_idx_minus1 = 0;
    std::memset(sps->vui.nal_hrd.low_delay_hrd_flag, 0, sizeof sps->vui.nal_hrd.low_delay_hrd_flag);
}

SpsSyntax &SpsSyntax::AddSps(const SpsShape &shape) {
    AddUpToExtensions(shape);
    Flag(0, FIELD(*sps_, sps_extension_present_flag)).Rest(BitString().TrailingBits());
    return *this;
}

SpsSyntax &SpsSyntax::AddUpToReferences(const SpsShape &shape) {
    AddPictureFormat(shape);
    AddOrdering(shape);
    AddCoding(shape);
    return *this;
}

SpsSyntax &SpsSyntax::AddUpToExtensions(const SpsShape &shape) {
    AddUpToReferences(shape);
    AddReferences(shape);
    Flag(1, FIELD(*sps_, sps_temporal_mvp_enabled_flag))
        .Flag(0, FIELD(*sps_, strong_intra_smoothing_enabled_flag));
    vui_position_ = Step("Before vui_parameters_present_flag BitOffset:");
    Flag(shape.vui, FIELD(*sps_, vui_parameters_present_flag));
    if (shape.vui)
        AddVui(this, &sps_->vui, shape.max_sub_layers_minus1);
    extension_position_ = Step("Before sps_extension_present_flag BitOffset:");
    return *this;
}

void SpsSyntax::AddPictureFormat(const SpsShape &shape) {
    U(4, 11, FIELD(*sps_, sps_video_parameter_set_id))
        .U(3, Unsigned(shape.max_sub_layers_minus1), FIELD(*sps_, sps_max_sub_layers_minus1))
        .Flag(1, FIELD(*sps_, sps_temporal_id_nesting_flag));
    AddProfileTierLevel(this, &sps_->ptl, shape.max_sub_layers_minus1);
    Step("After PTL CurrentBitOffset:");
    Ue(0, FIELD(*sps_, seq_parameter_set_id))
        .Ue(Unsigned(shape.chroma_format_idc), FIELD(*sps_, chroma_format_idc));
    if (shape.chroma_format_idc == 3)
        Flag(1, FIELD(*sps_, separate_colour_plane_flag));
    samples_position_ = Step("Before pic number of samles bitoffset:");
    Ue(1920, FIELD(*sps_, pic_width_in_luma_samples))
        // reported under the name of its neighbour
        .Ue(1088, &sps_->pic_height_in_luma_samples, Unreadable("pic_width_in_luma_samples"))
        .Flag(shape.conformance_window, FIELD(*sps_, conformance_window_flag));
    if (shape.conformance_window)
        Ue(1, FIELD(*sps_, conf_win_left_offset))
            .Ue(2, FIELD(*sps_, conf_win_right_offset))
            .Ue(3, FIELD(*sps_, conf_win_top_offset))
            .Ue(4, FIELD(*sps_, conf_win_bottom_offset));
    Step("Before bit_depth_luma_minus8, CurrentBitOffset:");
    Ue(2, FIELD(*sps_, bit_depth_luma_minus8))
        .Ue(1, FIELD(*sps_, bit_depth_chroma_minus8))
        .Ue(shape.log2_max_poc_lsb_minus4, FIELD(*sps_, log2_max_pic_order_cnt_lsb_minus4));
}

void SpsSyntax::AddOrdering(const SpsShape &shape) {
    Step("Before sps_sub_layer_ordering_info_present_flag CurrentBitOffset:");
    Flag(shape.ordering_info, FIELD(*sps_, sps_sub_layer_ordering_info_present_flag));
    for (int i = shape.ordering_info ? 0 : shape.max_sub_layers_minus1; i <= shape.max_sub_layers_minus1; i++)
        // reported without the index
        Ue(Unsigned(i + 4), &sps_->sps_max_dec_pic_buffering_minus1[i],
           Unreadable("sps_max_dec_pic_buffering_minus1"))
            .Ue(Unsigned(i + 2), &sps_->sps_max_num_reorder_pics[i], Unreadable("sps_max_num_reorder_pics"))
            .Ue(Unsigned(i * 100), &sps_->sps_max_latency_increase_plus1[i],
                Unreadable("sps_max_latency_increase_plus1"));
}

void SpsSyntax::AddCoding(const SpsShape &shape) {
    Step("Before log2_min_luma_coding_block_size_minus3 CurrentBitOffset:");
    Ue(0, FIELD(*sps_, log2_min_luma_coding_block_size_minus3))
        .Ue(3, FIELD(*sps_, log2_diff_max_min_luma_coding_block_size))
        .Ue(1, FIELD(*sps_, log2_min_luma_transform_block_size_minus2))
        .Ue(2, FIELD(*sps_, log2_diff_max_min_luma_transform_block_size))
        .Ue(5, FIELD(*sps_, max_transform_hierarchy_depth_inter))
        .Ue(4, FIELD(*sps_, max_transform_hierarchy_depth_intra));
    Step("Before scaling_list_enabled_flag CurrentBitOffset:");
    Flag(shape.scaling_lists != kNoScalingLists, FIELD(*sps_, scaling_list_enabled_flag));
    if (shape.scaling_lists != kNoScalingLists)
        Flag(shape.scaling_lists == kCodedScalingLists, FIELD(*sps_, sps_scaling_list_data_present_flag));
    if (shape.scaling_lists == kCodedScalingLists)
        AddPredictedScalingLists();
    Flag(1, FIELD(*sps_, amp_enabled_flag))
        .Flag(0, FIELD(*sps_, sample_adaptive_offset_flag))
        .Flag(shape.pcm, FIELD(*sps_, pcm_enabled_flag));
    if (shape.pcm)
        U(4, 7, FIELD(*sps_, pcm_sample_bit_depth_luma_minus1))
            .U(4, 9, FIELD(*sps_, pcm_sample_bit_depth_chroma_minus1))
            .Ue(1, FIELD(*sps_, log2_min_pcm_luma_coding_block_size_minus3))
            .Ue(2, FIELD(*sps_, log2_diff_max_min_pcm_luma_coding_block_size))
            .Flag(1, FIELD(*sps_, pcm_loop_filter_disabled_flag));
    Step("Before num_short_term_ref_pics_sets CurrentBitOffset:");
}

void SpsSyntax::AddPredictedScalingLists() {
    scaling_list_data_t &lists = sps_->scaling_list;
    Enter("cannot parse scaling_list.\n");
    for (int sizeId = 0; sizeId < 4; sizeId++) {
        for (int matrixId = 0; matrixId < 6; matrixId += sizeId == 3 ? 3 : 1)
            Flag(0, ENTRY(lists, scaling_list_pred_mode_flag, sizeId, matrixId))
                .Ue(1, ENTRY(lists, scaling_list_pred_matrix_id_delta, sizeId, matrixId));
    }
    Leave();
}

void SpsSyntax::AddReferences(const SpsShape &shape) {
    Ue(Unsigned(shape.short_term_sets), FIELD(*sps_, num_short_term_ref_pics_sets));
    for (int i = 0; i < shape.short_term_sets; i++) {
        Enter("failed to parse short term ref pic set[" + std::to_string(i) + "].\n");
        AddSet(i);
        Leave();
    }
    Flag(shape.long_term, FIELD(*sps_, long_term_ref_pics_present_flag));
    if (!shape.long_term)
        return;
    // reported under the name of the other count
    Ue(Unsigned(shape.long_term_pictures), &sps_->num_long_term_ref_pics_sps,
       Unreadable("num_short_term_ref_pics_sets"));
    const unsigned int width = static_cast<unsigned int>(shape.log2_max_poc_lsb_minus4) + 4;
    for (int i = 0; i < shape.long_term_pictures; i++)
        // spelled with a capital I
        U(width, 1 + (uint64_t{1} << (width - 1)), &sps_->lt_ref_pic_poc_lsb_sps[i],
          Unreadable("It_ref_pic_poc_lsb_sps", i))
            .Flag(i % 2, ENTRY(*sps_, used_by_current_pic_lt_sps_flag, i));
}

// Sets of odd index are predicted from the one before them, which has one picture.
void SpsSyntax::AddSet(int i) {
    short_term_ref_pic_set_t *const strps = &sps_->strps[i];
    if (i > 0)
        Flag(i % 2, FIELD(*strps, inter_ref_pic_set_prediction_flag));
    if (i % 2 != 0)
        Flag(0, FIELD(*strps, delta_rps_sign))
            .Ue(1, FIELD(*strps, abs_delta_rps_minus1))
            .Flag(1, ENTRY(*strps, used_by_current_pic_flag, 0))
            .Flag(0, ENTRY(*strps, used_by_current_pic_flag, 1))
            .Flag(1, ENTRY(*strps, used_delta_flag, 1));
    else
        Ue(1, FIELD(*strps, num_negative_pics))
            .Ue(0, FIELD(*strps, num_positive_pics))
            .Ue(Unsigned(i), ENTRY(*strps, delta_poc_s0_minus1, 0))
            .Flag(1, ENTRY(*strps, used_by_current_pic_s0_flag, 0));
}

SpsSyntax &SpsSyntax::AddExtensions(const SpsExtensions &extensions) {
    Flag(1, FIELD(*sps_, sps_extension_present_flag))
        .Flag(extensions.range, FIELD(*sps_, sps_range_extension_flag))
        .Flag(extensions.multilayer, FIELD(*sps_, sps_multilayer_extension_flag))
        .Flag(extensions.three_d, FIELD(*sps_, sps_3d_extension_flag))
        .Flag(extensions.scc, FIELD(*sps_, sps_scc_extension_flag))
        // 4 bits, the text says 5
        .U(4, Unsigned(extensions.four_bits), &sps_->sps_extension_4bits, Unreadable("sps_extension_5bits"));
    if (extensions.range)
        Flag(1, FIELD(*sps_, transform_skip_rotation_enabled_flag))
            .Flag(0, FIELD(*sps_, transform_skip_context_enabled_flag))
            .Flag(1, FIELD(*sps_, implicit_rdpcm_enabled_flag))
            .Flag(1, FIELD(*sps_, explicit_rdpcm_enabled_flag))
            .Flag(0, FIELD(*sps_, extended_precision_processing_flag))
            .Flag(0, FIELD(*sps_, intra_smoothing_disabled_flag))
            .Flag(1, FIELD(*sps_, high_precision_offsets_enabled_flag))
            .Flag(0, FIELD(*sps_, persistent_rice_adaptation_enabled_flag))
            .Flag(1, FIELD(*sps_, cabac_bypass_alignment_enabled_flag));
    return *this;
}

}  // namespace test
