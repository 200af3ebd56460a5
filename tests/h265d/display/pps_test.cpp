#include "h265d/display/expected_display.h"
#include "support/samples.h"

namespace test {
namespace {

using testing::IsSupersetOf;

class PpsDisplay : public testing::Test {
 protected:
    void Fill(int present, int uniform_spacing) {
        expected_.Text("PPS structure:\n");
        expected_.Text("++++++++++++++++++\n");
        LINE(expected_, pps_, pps_pic_parameter_set_id, 63);
        LINE(expected_, pps_, pps_seq_parameter_set_id, 15);
        LINE(expected_, pps_, dependent_slice_segments_enabled_flag, 1);
        LINE(expected_, pps_, output_flag_present_flag, 0);
        LINE(expected_, pps_, num_extra_slice_header_bits, 7);
        LINE(expected_, pps_, sign_data_hiding_enabled_flag, 1);
        LINE(expected_, pps_, cabac_init_present_flag, 0);
        LINE(expected_, pps_, num_ref_idx_l0_default_active_minus1, 14);
        LINE(expected_, pps_, num_ref_idx_l1_default_active_minus1, 13);
        LINE(expected_, pps_, init_qp_minus26, -26);
        LINE(expected_, pps_, constrained_intra_pred_flag, 1);
        LINE(expected_, pps_, transform_skip_enabled_flag, 0);
        LINE(expected_, pps_, cu_qp_delta_enabled_flag, present);
        if (present)
            LINE(expected_, pps_, diff_cu_qp_delta_depth, 3);
        LINE(expected_, pps_, pps_cb_qp_offset, -2);
        LINE(expected_, pps_, pps_cb_qp_offset, -2);
        pps_.pps_cr_qp_offset = 3;
        LINE(expected_, pps_, pps_slice_chroma_qp_offsets_present_flag, 1);
        LINE(expected_, pps_, weighted_pred_flag, 0);
        LINE(expected_, pps_, weighted_bipred_flag, 1);
        LINE(expected_, pps_, transquant_bypass_enabled_flag, 0);
        LINE(expected_, pps_, tiles_enabled_flag, present);
        LINE(expected_, pps_, entropy_coding_sync_enabled_flag, 1);
        if (present)
            AddTiles(uniform_spacing);
        LINE(expected_, pps_, pps_loop_filter_across_slices_enabled_flag, 1);
        LINE(expected_, pps_, deblocking_filter_control_present_flag, present);
        if (present) {
            LINE(expected_, pps_, deblocking_filter_override_enabled_flag, 1);
            LINE(expected_, pps_, pps_deblocking_filter_disabled_flag, uniform_spacing);
            if (!uniform_spacing) {
                LINE(expected_, pps_, pps_beta_offset_div2, -6);
                LINE(expected_, pps_, pps_tc_offset_div2, 6);
            }
        }
        LINE(expected_, pps_, pps_scaling_list_data_present_flag, present);
        if (present)
            expected_.Text("scaling list data is not parsed.\n");
        LINE(expected_, pps_, lists_modification_present_flag, 1);
        LINE(expected_, pps_, log2_parallel_merge_level_minus2, 4);
        LINE(expected_, pps_, slice_segment_header_extension_present_flag, 0);
        LINE(expected_, pps_, pps_extension_present_flag, present);
        if (present) {
            LINE(expected_, pps_, pps_range_extension_flag, 1);
            LINE(expected_, pps_, pps_multilayer_extension_flag, 0);
            LINE(expected_, pps_, pps_3d_extension_flag, 1);
            LINE(expected_, pps_, pps_scc_extension_flag, 0);
            LINE(expected_, pps_, pps_extension_4bits, 15);
        }
        expected_.Text("+++++++++++++++++++++++++++++\n");
    }

    void AddTiles(int uniform_spacing) {
        LINE(expected_, pps_, num_tile_columns_minus1, 2);
        LINE(expected_, pps_, num_tile_rows_minus1, 3);
        LINE(expected_, pps_, uniform_spacing_flag, uniform_spacing);
        if (!uniform_spacing) {
            for (int i = 0; i < 2; i++)
                ENTRY_LINE(expected_, pps_, column_width_minus1, i, static_cast<UINT64>(20 + i));
            for (int i = 0; i < 3; i++)
                ENTRY_LINE(expected_, pps_, row_height_minus1, i, static_cast<UINT64>(30 + i));
        }
        LINE(expected_, pps_, loop_filter_across_tiles_enabled_flag, 1);
    }

    void Expect() { ExpectDisplay(pps_, H265Lib_Display_pps, expected_); }

    pps_h265_t pps_{};
    ExpectedDisplay expected_{"H265Lib_Display_pps", 5};
};

TEST_F(PpsDisplay, NothingOptional) {
    Fill(0, 0);
    Expect();
}

TEST_F(PpsDisplay, EverythingOptional) {
    Fill(1, 0);
    Expect();
}

TEST_F(PpsDisplay, UniformTilesWithoutDeblocking) {
    Fill(1, 1);
    Expect();
}

TEST_F(PpsDisplay, TileCountsAreCut) {
    for (const UINT64 tiles : {UINT64{481}, UINT64{1054}, ~UINT64{0}}) {
        pps_.tiles_enabled_flag = 1;
        pps_.num_tile_columns_minus1 = tiles;
        pps_.num_tile_rows_minus1 = 0;
        const auto lines = [this] {
            return DisplayedTexts(5, [this] { H265Lib_Display_pps(&pps_); }).size();
        };
        const size_t with_columns = lines();
        pps_.num_tile_columns_minus1 = 0;
        const size_t without = lines();
        pps_.num_tile_rows_minus1 = tiles;
        EXPECT_EQ(with_columns, without + 481);
        EXPECT_EQ(lines(), without + 271);
    }
}

TEST_F(PpsDisplay, AnyRecordStaysWithinItsArrays) {
    for (const int byte : {0xFF, 0xA5}) {
        const size_t count = MessagesOfFilledRecord<pps_h265_t>(byte, H265Lib_Display_pps);
        EXPECT_GT(count, 40u);
        EXPECT_LT(count, 60u + 481 + 271);
    }
}

TEST_F(PpsDisplay, NullIsReported) {
    ExpectNullIsReported("pps != NULL", [] { H265Lib_Display_pps(nullptr); });
}

TEST_F(PpsDisplay, OfAStream) {
    const std::vector<Bytes> nal_units = SampleNalUnits("weighted-prediction.hevc", 34);
    ASSERT_FALSE(nal_units.empty());
    const Bytes &nal = nal_units.front();
    ASSERT_EQ(H265Lib_Parse_pps_nal(nal.data(), static_cast<int>(nal.size()), &pps_), TRUE);
    const auto texts = DisplayedTexts(8, [this] { H265Lib_Display_pps(&pps_); });
    EXPECT_EQ(texts.front(), "PPS structure:\n");
    EXPECT_THAT(texts, IsSupersetOf({"weighted_pred_flag=1.\n", "tiles_enabled_flag=0.\n"}));
    EXPECT_EQ(texts.back(), "+++++++++++++++++++++++++++++\n");
}

}  // namespace
}  // namespace test
