#include <algorithm>

#include "h265d/display/expected_display.h"
#include "h265d/display/sub_structures.h"
#include "support/samples.h"

namespace test {
namespace {

using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;

class SpsDisplay : public testing::Test {
 protected:
    SpsDisplay() : sps_(std::make_unique<sps_h265_t>()) {}

    // With all optional parts, or without any.
    void Fill(int present, unsigned char max_sub_layers_minus1) {
        expected_.Text("SPS structure:\n");
        expected_.Text("++++++++++++++++++\n");
        LINE(expected_, *sps_, sps_video_parameter_set_id, 15);
        LINE(expected_, *sps_, sps_max_sub_layers_minus1, max_sub_layers_minus1);
        LINE(expected_, *sps_, sps_temporal_id_nesting_flag, 1);
        sps_->ptl.general_level_idc = 93;
        expected_.Append(Nested([&] { _display_profile_tier_level(&sps_->ptl, max_sub_layers_minus1); }));
        AddPictureFormat(present);
        LINE(expected_, *sps_, sps_sub_layer_ordering_info_present_flag, present);
        for (int i = present ? 0 : max_sub_layers_minus1; i <= max_sub_layers_minus1; i++) {
            ENTRY_LINE(expected_, *sps_, sps_max_dec_pic_buffering_minus1, i, static_cast<UINT64>(10 + i));
            ENTRY_LINE(expected_, *sps_, sps_max_num_reorder_pics, i, static_cast<UINT64>(20 + i));
            ENTRY_LINE(expected_, *sps_, sps_max_latency_increase_plus1, i,
                       UINT64{4'294'967'295} - static_cast<UINT64>(i));
        }
        AddCodingTools(present);
        AddReferences(present);
        LINE(expected_, *sps_, sps_temporal_mvp_enabled_flag, 1);
        LINE(expected_, *sps_, strong_intra_smoothing_enabled_flag, 0);
        LINE(expected_, *sps_, vui_parameters_present_flag, present);
        if (present)
            expected_.Append(Nested([&] { _display_vui(&sps_->vui, max_sub_layers_minus1); }));
        LINE(expected_, *sps_, sps_extension_present_flag, present);
        if (present)
            AddExtensions();
        expected_.Text("+++++++++++++++++++++++++++++\n");
    }

    void Expect() { ExpectDisplay(*sps_, H265Lib_Display_sps, expected_); }

    std::vector<std::string> Texts(int level) {
        return DisplayedTexts(level, [this] { H265Lib_Display_sps(sps_.get()); });
    }

    const std::unique_ptr<sps_h265_t> sps_;
    ExpectedDisplay expected_{"H265Lib_Display_sps", 5};

 private:
    void AddPictureFormat(int present) {
        LINE(expected_, *sps_, seq_parameter_set_id, 14);
        LINE(expected_, *sps_, chroma_format_idc, present ? 3 : 2);
        if (present)
            LINE(expected_, *sps_, separate_colour_plane_flag, 1);
        LINE(expected_, *sps_, pic_width_in_luma_samples, 3840);
        LINE(expected_, *sps_, pic_height_in_luma_samples, 2160);
        LINE(expected_, *sps_, conformance_window_flag, present);
        if (present) {
            LINE(expected_, *sps_, conf_win_left_offset, 1);
            LINE(expected_, *sps_, conf_win_right_offset, 2);
            LINE(expected_, *sps_, conf_win_top_offset, 3);
            LINE(expected_, *sps_, conf_win_bottom_offset, 4);
        }
        LINE(expected_, *sps_, bit_depth_luma_minus8, 5);
        LINE(expected_, *sps_, bit_depth_chroma_minus8, 6);
        LINE(expected_, *sps_, log2_max_pic_order_cnt_lsb_minus4, 12);
    }

    void AddCodingTools(int present) {
        LINE(expected_, *sps_, log2_min_luma_coding_block_size_minus3, 1);
        LINE(expected_, *sps_, log2_diff_max_min_luma_coding_block_size, 2);
        LINE(expected_, *sps_, log2_min_luma_transform_block_size_minus2, 3);
        LINE(expected_, *sps_, log2_diff_max_min_luma_transform_block_size, 4);
        LINE(expected_, *sps_, max_transform_hierarchy_depth_inter, 5);
        LINE(expected_, *sps_, max_transform_hierarchy_depth_intra, 6);
        LINE(expected_, *sps_, scaling_list_enabled_flag, present);
        if (present) {
            LINE(expected_, *sps_, sps_scaling_list_data_present_flag, 1);
            expected_.Append(Nested([this] { _display_scaling_list_data(&sps_->scaling_list); }));
        }
        LINE(expected_, *sps_, amp_enabled_flag, 1);
        LINE(expected_, *sps_, sample_adaptive_offset_flag, 0);
        LINE(expected_, *sps_, pcm_enabled_flag, present);
        if (present) {
            LINE(expected_, *sps_, pcm_sample_bit_depth_luma_minus1, 7);
            LINE(expected_, *sps_, pcm_sample_bit_depth_chroma_minus1, 8);
            LINE(expected_, *sps_, log2_min_pcm_luma_coding_block_size_minus3, 9);
            LINE(expected_, *sps_, log2_diff_max_min_pcm_luma_coding_block_size, 10);
            LINE(expected_, *sps_, pcm_loop_filter_disabled_flag, 1);
        }
    }

    void AddReferences(int present) {
        LINE(expected_, *sps_, num_short_term_ref_pics_sets, present ? 2u : 0u);
        if (present) {
            sps_->strps[0].num_negative_pics = 1;
            sps_->strps[1].inter_ref_pic_set_prediction_flag = 1;
            expected_.Append(Nested([this] {
                DerivedRefPicSets derived_sets;
                _display_short_term_ref_pic_set(&sps_->strps[0], 0, 2, &derived_sets);
                _display_short_term_ref_pic_set(&sps_->strps[1], 1, 2, &derived_sets);
            }));
        }
        LINE(expected_, *sps_, long_term_ref_pics_present_flag, present);
        if (!present)
            return;
        LINE(expected_, *sps_, num_long_term_ref_pics_sps, 3);
        for (int i = 0; i < 3; i++) {
            ENTRY_LINE(expected_, *sps_, lt_ref_pic_poc_lsb_sps, i, static_cast<UINT64>(50 + i));
            ENTRY_LINE(expected_, *sps_, used_by_current_pic_lt_sps_flag, i, i % 2);
        }
    }

    void AddExtensions() {
        LINE(expected_, *sps_, sps_range_extension_flag, 1);
        LINE(expected_, *sps_, sps_multilayer_extension_flag, 0);
        LINE(expected_, *sps_, sps_3d_extension_flag, 1);
        LINE(expected_, *sps_, sps_scc_extension_flag, 0);
        LINE(expected_, *sps_, sps_extension_4bits, 9);
        LINE(expected_, *sps_, transform_skip_rotation_enabled_flag, 1);
        LINE(expected_, *sps_, transform_skip_context_enabled_flag, 0);
        LINE(expected_, *sps_, implicit_rdpcm_enabled_flag, 1);
        LINE(expected_, *sps_, explicit_rdpcm_enabled_flag, 0);
        LINE(expected_, *sps_, extended_precision_processing_flag, 1);
        LINE(expected_, *sps_, intra_smoothing_disabled_flag, 0);
        LINE(expected_, *sps_, high_precision_offsets_enabled_flag, 1);
        LINE(expected_, *sps_, persistent_rice_adaptation_enabled_flag, 0);
        LINE(expected_, *sps_, cabac_bypass_alignment_enabled_flag, 1);
    }
};

TEST_F(SpsDisplay, NothingOptional) {
    Fill(0, 0);
    Expect();
}

TEST_F(SpsDisplay, EverythingOptional) {
    Fill(1, 7);
    Expect();
}

TEST_F(SpsDisplay, OrderingOfTheHighestSubLayerAlone) {
    Fill(0, 2);
    Expect();
}

TEST_F(SpsDisplay, ScalingListsMayBeTheDefaultOnes) {
    sps_->scaling_list_enabled_flag = 1;
    const auto texts = Texts(6);
    EXPECT_THAT(texts, Contains("sps_scaling_list_data_present_flag=0.\n"));
    EXPECT_THAT(texts, Not(Contains(testing::StartsWith("Scaling list Data:"))));
}

TEST_F(SpsDisplay, OtherExtensionsHaveNoLines) {
    sps_->sps_extension_present_flag = 1;
    const auto texts = Texts(6);
    EXPECT_THAT(texts, Contains("sps_extension_4bits=0.\n"));
    EXPECT_THAT(texts, Not(Contains("transform_skip_rotation_enabled_flag=0.\n")));
}

TEST_F(SpsDisplay, CountsAreCut) {
    const size_t plain = Texts(5).size();
    sps_->long_term_ref_pics_present_flag = 1;
    sps_->num_long_term_ref_pics_sps = ~UINT64{0};
    EXPECT_EQ(Texts(5).size(), plain + 1 + 2 * 33);
    sps_->long_term_ref_pics_present_flag = 0;
    const size_t sub_structures = Texts(6).size();
    sps_->num_short_term_ref_pics_sets = ~UINT64{0};
    EXPECT_EQ(Texts(6).size(), sub_structures + 65 * 4);
}

TEST_F(SpsDisplay, AnyRecordStaysWithinItsArrays) {
    for (const int byte : {0xFF, 0xA5}) {
        const size_t count = MessagesOfFilledRecord<sps_h265_t>(byte, H265Lib_Display_sps);
        EXPECT_GT(count, 300u);
        EXPECT_LT(count, 10'000u);
    }
}

TEST_F(SpsDisplay, NullIsReported) {
    ExpectNullIsReported("sps != NULL", [] { H265Lib_Display_sps(nullptr); });
}

TEST_F(SpsDisplay, OfAStream) {
    const std::vector<Bytes> nal_units = SampleNalUnits("interlaced-field-hrd.hevc", 33);
    ASSERT_FALSE(nal_units.empty());
    ASSERT_EQ(H265Lib_Parse_sps_nal(nal_units.front().data(), nal_units.front().size(), sps_.get()), TRUE);
    EXPECT_THAT(Texts(6),
                IsSupersetOf({"pic_width_in_luma_samples=208.\n", "pic_height_in_luma_samples=120.\n",
                              "general_interlaced_source_flag=1.\n", "field_seq_flag=1.\n",
                              "num_units_in_tick=1001.\n", "time_scale=60000.\n",
                              "nal_hrd_parameters_present_flag=1.\n", "cpb_cnt_minus1[0]=0.\n"}));
}

TEST_F(SpsDisplay, OfAHeavySps) {
    const std::vector<Bytes> nal_units = SampleNalUnits("units/sps-heavy.nal", 33);
    ASSERT_FALSE(nal_units.empty());
    ASSERT_EQ(H265Lib_Parse_sps_nal(nal_units.front().data(), nal_units.front().size(), sps_.get()), TRUE);
    const auto texts = Texts(6);
    EXPECT_THAT(texts,
                IsSupersetOf({"num_short_term_ref_pics_sets=32.\n", "--- short_term_ref_pic_set[31] ---\n",
                              "long_term_ref_pics_present_flag=1.\n"}));
    // as many flags of a predicted set as its reference has pictures, and one
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "inter_ref_pic_set_prediction_flag=1.\n"),
              std::count(texts.begin(), texts.end(), "used_by_current_pic_flag[0]=0.\n") +
                  std::count(texts.begin(), texts.end(), "used_by_current_pic_flag[0]=1.\n"));
}

}  // namespace
}  // namespace test
