#include "h265d/display/expected_display.h"
#include "h265d/display/sub_structures.h"

namespace test {
namespace {

using testing::Contains;
using testing::Not;

class VuiDisplay : public testing::Test {
 protected:
    // With all optional parts but the HRD, or without any.
    void Fill(int present, int aspect_ratio_idc = 255) {
        expected_.Step("Called.\n");
        LINE(expected_, vui_, aspect_ratio_info_present_flag, present);
        if (present) {
            LINE(expected_, vui_, aspect_ratio_idc, static_cast<unsigned char>(aspect_ratio_idc));
            if (aspect_ratio_idc == 255) {
                LINE(expected_, vui_, sar_width, 65535);
                LINE(expected_, vui_, sar_height, 65534);
            }
        }
        LINE(expected_, vui_, overscan_info_present_flag, present);
        if (present)
            LINE(expected_, vui_, overscan_appropriate_flag, 1);
        LINE(expected_, vui_, video_signal_type_present_flag, present);
        if (present) {
            LINE(expected_, vui_, video_format, 5);
            LINE(expected_, vui_, video_full_range_flag, 1);
            LINE(expected_, vui_, colour_description_present_flag, 1);
            LINE(expected_, vui_, colour_primaries, 9);
            LINE(expected_, vui_, transfer_characteristics, 16);
            LINE(expected_, vui_, matrix_coeffs, 10);
        }
        LINE(expected_, vui_, chroma_loc_info_present_flag, present);
        if (present) {
            LINE(expected_, vui_, chroma_sample_loc_type_top_field, 2);
            LINE(expected_, vui_, chroma_sample_loc_type_bottom_field, 3);
        }
        LINE(expected_, vui_, neutral_chroma_indication_flag, 0);
        LINE(expected_, vui_, field_seq_flag, 1);
        LINE(expected_, vui_, frame_field_info_present_flag, 0);
        LINE(expected_, vui_, default_display_window_flag, present);
        if (present) {
            LINE(expected_, vui_, def_disp_win_left_offset, 11);
            LINE(expected_, vui_, def_disp_win_right_offset, 12);
            LINE(expected_, vui_, def_disp_win_top_offset, 13);
            LINE(expected_, vui_, def_disp_win_bottom_offset, 4'294'967'295);
        }
    }

    void AddTiming(int present, int poc_proportional, int hrd) {
        vui_.vui_timing_info_present_flag = present;
        vui_.vui_num_units_in_tick = 1001;
        vui_.vui_time_scale = 4'294'967'295;
        vui_.vui_poc_proportional_to_timing_flag = poc_proportional;
        vui_.vui_num_ticks_poc_diff_one_minus1 = 4'294'967'294;
        vui_.vui_hrd_parameters_present_flag = hrd;
        expected_.Line("timing_info_present_flag", present);
        if (!present)
            return;
        expected_.Text("num_units_in_tick=1001.\n");
        expected_.Text("time_scale=4294967295.\n");
        expected_.Line("poc_proportional_to_timing_flag", poc_proportional);
        if (poc_proportional)
            expected_.Text("num_ticks_poc_diff_one_minus1=4294967294.\n");
        expected_.Line("hrd_parameters_present_flag", hrd);
    }

    void AddRestriction(int present) {
        LINE(expected_, vui_, bitstream_restriction_flag, present);
        if (!present)
            return;
        LINE(expected_, vui_, tiles_fixed_structure_flag, 0);
        LINE(expected_, vui_, motion_vectors_over_pic_boundaries_flag, 1);
        LINE(expected_, vui_, restricted_ref_pic_lists_flag, 0);
        LINE(expected_, vui_, min_spatial_segmentation_idc, 4095);
        LINE(expected_, vui_, max_bytes_per_pic_denom, 16);
        LINE(expected_, vui_, max_bits_per_min_cu_denom, 15);
        LINE(expected_, vui_, log2_max_mv_length_horizontal, 14);
        LINE(expected_, vui_, log2_max_mv_length_vertical, 13);
    }

    void Expect(unsigned char sps_max_sub_layers_minus1 = 0) {
        ExpectDisplay(
            vui_, [=](const vui_h265_t *vui) { _display_vui(vui, sps_max_sub_layers_minus1); }, expected_);
    }

    vui_h265_t vui_{};
    ExpectedDisplay expected_{"_display_vui", 6};
};

TEST_F(VuiDisplay, NothingPresent) {
    Fill(0);
    AddTiming(0, 1, 1);
    AddRestriction(0);
    Expect();
}

TEST_F(VuiDisplay, EverythingButAnHrd) {
    Fill(1);
    AddTiming(1, 1, 0);
    AddRestriction(1);
    Expect();
}

TEST_F(VuiDisplay, ACodedAspectRatioHasNoSize) {
    Fill(1, 254);
    AddTiming(1, 0, 0);
    AddRestriction(0);
    Expect();
}

TEST_F(VuiDisplay, HrdOfEachSubLayer) {
    Fill(0);
    AddTiming(1, 0, 1);
    ExpectedDisplay hrd("_display_hrd", 6);
    hrd.Step("Called.\n");
    LINE(hrd, vui_.nal_hrd, nal_hrd_parameters_present_flag, 0);
    LINE(hrd, vui_.nal_hrd, vcl_hrd_parameters_present_flag, 0);
    for (int i = 0; i < 3; i++) {
        ENTRY_LINE(hrd, vui_.nal_hrd, fixed_pic_rate_general_flag, i, 0);
        ENTRY_LINE(hrd, vui_.nal_hrd, fixed_pic_rate_within_cvs_flag, i, 1);
        ENTRY_LINE(hrd, vui_.nal_hrd, elemental_duration_in_tc_minus1, i, static_cast<UINT64>(i));
        ENTRY_LINE(hrd, vui_.nal_hrd, cpb_cnt_minus1, i, 0);
    }
    hrd.Step("Done.\n");
    expected_.Append(hrd);
    AddRestriction(1);
    Expect(2);
}

TEST_F(VuiDisplay, VideoSignalWithoutColours) {
    vui_.video_signal_type_present_flag = 1;
    const auto texts = DisplayedTexts(6, [this] { _display_vui(&vui_, 0); });
    EXPECT_THAT(texts, Contains("colour_description_present_flag=0.\n"));
    EXPECT_THAT(texts, Not(Contains("colour_primaries=0.\n")));
}

TEST_F(VuiDisplay, AnyRecordStaysWithinItsArrays) {
    for (const int byte : {0xFF, 0xA5}) {
        const size_t count =
            MessagesOfFilledRecord<vui_h265_t>(byte, [](const vui_h265_t *vui) { _display_vui(vui, 255); });
        EXPECT_GT(count, 60u);
        EXPECT_LT(count, 3000u);
    }
}

TEST_F(VuiDisplay, NullIsReported) {
    ExpectNullIsReported("vui != NULL", [] { _display_vui(nullptr, 0); });
}

}  // namespace
}  // namespace test
