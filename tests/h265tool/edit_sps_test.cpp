// What the options of `edit` do to the record of an SPS, and when they refuse.

#include <gtest/gtest.h>

#include <memory>

#include "edit/colour_names.h"
#include "edit/sei_syntax.h"
#include "edit/sps_edits.h"
#include "sei_names.h"
#include "unit_error.h"

namespace h265tool {
namespace {

// 64x48 with a conformance window.
std::unique_ptr<sps_h265_t> SpsOf(unsigned int chroma_format_idc) {
    auto sps = std::make_unique<sps_h265_t>();
    sps->chroma_format_idc = chroma_format_idc;
    sps->pic_width_in_luma_samples = 64;
    sps->pic_height_in_luma_samples = 48;
    sps->conformance_window_flag = 1;
    return sps;
}

std::string Complaint(const EditRequest &request, sps_h265_t *sps) {
    try {
        ApplyEdits(request, sps);
    } catch (const UnitError &error) {
        return error.what();
    }
    return {};
}

EditRequest Crop(uint32_t left, uint32_t right, uint32_t top, uint32_t bottom) {
    EditRequest request;
    request.crop = CropWindow{left, right, top, bottom};
    return request;
}

TEST(EditSps, CropsInUnitsOfTheChromaFormat) {
    const struct {
        unsigned int chroma_format_idc;
        uint64_t SubWidthC;
        uint64_t SubHeightC;
    } kCases[] = {{0, 1, 1}, {1, 2, 2}, {2, 2, 1}, {3, 1, 1}};
    for (const auto &[chroma_format_idc, SubWidthC, SubHeightC] : kCases) {
        const auto sps = SpsOf(chroma_format_idc);
        EXPECT_EQ(Complaint(Crop(2, 4, 6, 8), sps.get()), "");
        EXPECT_EQ(sps->conf_win_left_offset, 2 / SubWidthC);
        EXPECT_EQ(sps->conf_win_right_offset, 4 / SubWidthC);
        EXPECT_EQ(sps->conf_win_top_offset, 6 / SubHeightC);
        EXPECT_EQ(sps->conf_win_bottom_offset, 8 / SubHeightC);
        EXPECT_EQ(sps->vui_parameters_present_flag, 0);
        const std::string odd_column = SubWidthC == 1 ? "" : "--crop: 3 is no multiple of SubWidthC, 2";
        EXPECT_EQ(Complaint(Crop(3, 0, 0, 0), sps.get()), odd_column);
        EXPECT_EQ(Complaint(Crop(0, 3, 0, 0), sps.get()), odd_column);
        const std::string odd_row = SubHeightC == 1 ? "" : "--crop: 5 is no multiple of SubHeightC, 2";
        EXPECT_EQ(Complaint(Crop(0, 0, 5, 0), sps.get()), odd_row);
        EXPECT_EQ(Complaint(Crop(0, 0, 0, 5), sps.get()), odd_row);
    }
}

TEST(EditSps, LeavesSomethingOfThePicture) {
    const auto sps = SpsOf(1);
    EXPECT_EQ(Complaint(Crop(30, 32, 24, 22), sps.get()), "");
    const std::string nothing = "the conformance window leaves nothing of pictures of 64x48";
    EXPECT_EQ(Complaint(Crop(32, 32, 0, 0), sps.get()), nothing);
    EXPECT_EQ(Complaint(Crop(0, 0, 46, 2), sps.get()), nothing);
    EXPECT_EQ(Complaint(Crop(4294967294, 4294967294, 0, 0), sps.get()), nothing);

    sps->vui_parameters_present_flag = 1;
    sps->vui.default_display_window_flag = 1;
    sps->vui.def_disp_win_left_offset = 16;
    EXPECT_EQ(Complaint(Crop(2, 28, 0, 0), sps.get()), "");
    EXPECT_EQ(Complaint(Crop(2, 30, 0, 0), sps.get()),
              "the default display window leaves nothing of pictures of 64x48");
}

TEST(EditSps, AWindowCannotBeAdded) {
    const auto sps = SpsOf(1);
    sps->conformance_window_flag = 0;
    EXPECT_EQ(Complaint(Crop(0, 0, 0, 0), sps.get()), "");
    for (const EditRequest &request :
         {Crop(2, 0, 0, 0), Crop(0, 2, 0, 0), Crop(0, 0, 2, 0), Crop(0, 0, 0, 2)})
        EXPECT_EQ(
            Complaint(request, sps.get()),
            "--crop: it has no conformance window (conformance_window_flag is 0), and rewriting changes "
            "a window but cannot add one");
}

TEST(EditSps, SizesAreMultiplesOfTheSmallestBlocks) {
    EditRequest request;
    request.size = PictureSize{1920, 1088};
    const auto sps = SpsOf(1);
    sps->conf_win_bottom_offset = 24;
    for (const unsigned int log2_size_minus3 : {0U, 1U, 2U, 3U}) {
        sps->log2_min_luma_coding_block_size_minus3 = log2_size_minus3;
        EXPECT_EQ(Complaint(request, sps.get()), "");
        EXPECT_EQ(sps->pic_width_in_luma_samples, 1920U);
        EXPECT_EQ(sps->pic_height_in_luma_samples, 1088U);
    }
    request.size = PictureSize{1920, 1080};
    EXPECT_EQ(Complaint(request, sps.get()),
              "--size: the sides of the pictures have to be multiples of MinCbSizeY, 64");
    request.size = PictureSize{1900, 1088};
    EXPECT_EQ(Complaint(request, sps.get()),
              "--size: the sides of the pictures have to be multiples of MinCbSizeY, 64");
    sps->log2_min_luma_coding_block_size_minus3 = 4;
    EXPECT_EQ(Complaint(request, sps.get()), "log2_min_luma_coding_block_size_minus3 is above 3");

    sps->log2_min_luma_coding_block_size_minus3 = 0;
    request.size = PictureSize{64, 48};
    EXPECT_EQ(Complaint(request, sps.get()), "the conformance window leaves nothing of pictures of 64x48");
}

TEST(EditSps, ColourSpacesOfRgbNeedTheirSamples) {
    EditRequest request;
    request.colour = ColourDescription{1, 1, 0};
    const std::string no_gbr = "--colour: matrix_coeffs 0 (GBR) needs 4:4:4 with equal bit depths";
    EXPECT_EQ(Complaint(request, SpsOf(1).get()), no_gbr);
    const auto sps = SpsOf(3);
    EXPECT_EQ(Complaint(request, sps.get()), "");
    sps->bit_depth_chroma_minus8 = 1;
    EXPECT_EQ(Complaint(request, sps.get()), no_gbr);
    request.colour->matrix_coeffs = 8;
    EXPECT_EQ(Complaint(request, sps.get()), "");
    EXPECT_EQ(Complaint(request, SpsOf(1).get()), "");
    sps->bit_depth_luma_minus8 = 2;
    EXPECT_EQ(Complaint(request, sps.get()), "--colour: matrix_coeffs 8 (YCgCo) does not fit the bit depths");
}

TEST(EditSps, RatiosInTableE1HaveNumbers) {
    const auto idc = [](uint32_t width, uint32_t height) {
        return static_cast<int>(MakeAspectRatio(width, height)->aspect_ratio_idc);
    };
    EXPECT_EQ(idc(1, 1), IH265ENC_ASPECTRATIO_SQUARE);
    EXPECT_EQ(idc(1080, 1080), IH265ENC_ASPECTRATIO_SQUARE);
    EXPECT_EQ(idc(12, 11), IH265ENC_ASPECTRATIO_12_11);
    EXPECT_EQ(idc(10, 11), IH265ENC_ASPECTRATIO_10_11);
    EXPECT_EQ(idc(16, 11), IH265ENC_ASPECTRATIO_16_11);
    EXPECT_EQ(idc(40, 33), IH265ENC_ASPECTRATIO_40_33);
    EXPECT_EQ(idc(24, 11), IH265ENC_ASPECTRATIO_24_11);
    EXPECT_EQ(idc(20, 11), IH265ENC_ASPECTRATIO_20_11);
    EXPECT_EQ(idc(32, 11), IH265ENC_ASPECTRATIO_32_11);
    EXPECT_EQ(idc(80, 33), IH265ENC_ASPECTRATIO_80_33);
    EXPECT_EQ(idc(18, 11), IH265ENC_ASPECTRATIO_18_11);
    EXPECT_EQ(idc(15, 11), IH265ENC_ASPECTRATIO_15_11);
    EXPECT_EQ(idc(64, 33), IH265ENC_ASPECTRATIO_64_33);
    EXPECT_EQ(idc(160, 99), IH265ENC_ASPECTRATIO_160_99);
    EXPECT_EQ(idc(4, 3), IH265ENC_ASPECTRATIO_4_3);
    EXPECT_EQ(idc(3, 2), IH265ENC_ASPECTRATIO_3_2);
    EXPECT_EQ(idc(2, 1), IH265ENC_ASPECTRATIO_2_1);
    EXPECT_EQ(idc(8, 9), IH265ENC_ASPECTRATIO_EXTENDED);
    EXPECT_EQ(MakeAspectRatio(16, 18)->sar_width, 8);
    EXPECT_EQ(MakeAspectRatio(16, 18)->sar_height, 9);
    EXPECT_EQ(MakeAspectRatio(65535, 1)->sar_width, 65535);
    EXPECT_EQ(MakeAspectRatio(131070, 2)->sar_width, 65535);
    EXPECT_FALSE(MakeAspectRatio(65536, 1).has_value());
    EXPECT_FALSE(MakeAspectRatio(1, 65536).has_value());
    EXPECT_FALSE(MakeAspectRatio(0, 1).has_value());
    EXPECT_FALSE(MakeAspectRatio(1, 0).has_value());
}

TEST(EditSps, ColoursHaveNames) {
    // as ffmpeg prints them, in the order of their numbers
    const std::vector<std::pair<const char *, int>> kPrimaries = {
        {"bt709", 1}, {"unknown", 2}, {"bt470m", 4},    {"bt470bg", 5},   {"smpte170m", 6}, {"smpte240m", 7},
        {"film", 8},  {"bt2020", 9},  {"smpte428", 10}, {"smpte431", 11}, {"smpte432", 12}, {"ebu3213", 22}};
    for (const auto &[name, value] : kPrimaries)
        EXPECT_EQ(ParseColourPrimaries(name), value) << name;
    const std::vector<std::pair<const char *, int>> kTransfers = {
        {"bt709", 1},     {"unknown", 2},       {"bt470m", 4},     {"bt470bg", 5},    {"smpte170m", 6},
        {"smpte240m", 7}, {"linear", 8},        {"log100", 9},     {"log316", 10},    {"iec61966-2-4", 11},
        {"bt1361e", 12},  {"iec61966-2-1", 13}, {"bt2020-10", 14}, {"bt2020-12", 15}, {"smpte2084", 16},
        {"smpte428", 17}, {"arib-std-b67", 18}};
    for (const auto &[name, value] : kTransfers)
        EXPECT_EQ(ParseTransferCharacteristics(name), value) << name;
    const std::vector<std::pair<const char *, int>> kMatrices = {{"gbr", 0},
                                                                 {"bt709", 1},
                                                                 {"unknown", 2},
                                                                 {"fcc", 4},
                                                                 {"bt470bg", 5},
                                                                 {"smpte170m", 6},
                                                                 {"smpte240m", 7},
                                                                 {"ycgco", 8},
                                                                 {"bt2020nc", 9},
                                                                 {"bt2020c", 10},
                                                                 {"smpte2085", 11},
                                                                 {"chroma-derived-nc", 12},
                                                                 {"chroma-derived-c", 13},
                                                                 {"ictcp", 14}};
    for (const auto &[name, value] : kMatrices)
        EXPECT_EQ(ParseMatrixCoeffs(name), value) << name;
    EXPECT_EQ(ParseColourPrimaries("BT.2020"), 9);
    EXPECT_EQ(ParseTransferCharacteristics("SMPTE ST 2084"), 16);
    EXPECT_EQ(ParseTransferCharacteristics("ARIB STD-B67"), 18);
    EXPECT_EQ(ParseMatrixCoeffs("YCgCo"), 8);
    EXPECT_EQ(ParseMatrixCoeffs("0"), 0);
    EXPECT_EQ(ParseMatrixCoeffs("255"), 255);
    for (const char *name : {"", "256", "-1", "bt", "bt7099", "1x"}) {
        EXPECT_FALSE(ParseColourPrimaries(name).has_value()) << name;
        EXPECT_FALSE(ParseTransferCharacteristics(name).has_value()) << name;
        EXPECT_FALSE(ParseMatrixCoeffs(name).has_value()) << name;
    }
}

// An HRD with everything that SEI messages depend on.
std::unique_ptr<sps_h265_t> SpsWithHrd() {
    auto sps = SpsOf(1);
    sps->sps_max_sub_layers_minus1 = 1;
    sps->vui.frame_field_info_present_flag = 1;
    sps->vui.vui_timing_info_present_flag = 1;
    sps->vui.vui_hrd_parameters_present_flag = 1;
    sps->vui.nal_hrd.nal_hrd_parameters_present_flag = 1;
    sps->vui.nal_hrd.sub_pic_hrd_params_present_flag = 1;
    return sps;
}

struct Dependence {
    const char *element;
    void (*change)(vui_h265_t *vui);
    bool buffering_period;
    bool pic_timing;
    bool decoding_unit_info;
};

TEST(EditSps, SyntaxOfSeiMessagesDependsOnTheVui) {
    const Dependence kDependences[] = {
        {"frame_field_info_present_flag", [](vui_h265_t *vui) { vui->frame_field_info_present_flag = 0; },
         false, true, false},
        {"nal_hrd_parameters_present_flag",
         [](vui_h265_t *vui) {
             vui->nal_hrd.nal_hrd_parameters_present_flag = 0;
             vui->nal_hrd.vcl_hrd_parameters_present_flag = 1;
         },
         true, false, false},
        {"vcl_hrd_parameters_present_flag",
         [](vui_h265_t *vui) { vui->nal_hrd.vcl_hrd_parameters_present_flag = 1; }, true, false, false},
        {"CpbDpbDelaysPresentFlag", [](vui_h265_t *vui) { vui->vui_hrd_parameters_present_flag = 0; }, true,
         true, true},
        {"sub_pic_hrd_params_present_flag",
         [](vui_h265_t *vui) { vui->nal_hrd.sub_pic_hrd_params_present_flag = 0; }, true, true, true},
        {"initial_cpb_removal_delay_length_minus1",
         [](vui_h265_t *vui) { vui->nal_hrd.initial_cpb_removal_delay_length_minus1 = 1; }, true, false,
         false},
        {"cpb_cnt_minus1[1]", [](vui_h265_t *vui) { vui->nal_hrd.cpb_cnt_minus1[1] = 1; }, true, false,
         false},
        {"au_cpb_removal_delay_length_minus1",
         [](vui_h265_t *vui) { vui->nal_hrd.au_cpb_removal_delay_length_minus1 = 1; }, true, true, false},
        {"dpb_output_delay_length_minus1",
         [](vui_h265_t *vui) { vui->nal_hrd.dpb_output_delay_length_minus1 = 1; }, true, true, false},
        {"sub_pic_cpb_params_in_pic_timing_sei_flag",
         [](vui_h265_t *vui) { vui->nal_hrd.sub_pic_cpb_params_in_pic_timing_sei_flag = 1; }, false, true,
         true},
        {"dpb_output_delay_du_length_minus1",
         [](vui_h265_t *vui) { vui->nal_hrd.dpb_output_delay_du_length_minus1 = 1; }, false, true, true},
        {"du_cpb_removal_delay_increment_length_minus1",
         [](vui_h265_t *vui) { vui->nal_hrd.du_cpb_removal_delay_increment_length_minus1 = 1; }, false, true,
         true},
        {"bit_rate_scale", [](vui_h265_t *vui) { vui->nal_hrd.bit_rate_scale = 1; }, false, false, false},
    };
    const auto before = SpsWithHrd();
    for (const auto &[element, change, buffering_period, pic_timing, decoding_unit_info] : kDependences) {
        const auto after = SpsWithHrd();
        change(&after->vui);
        const auto changed = [&](uint64_t payload_type) {
            return ElementThatChangesSyntax(payload_type, *before, *after).has_value();
        };
        EXPECT_EQ(changed(kBufferingPeriod), buffering_period) << element;
        EXPECT_EQ(changed(kPicTiming), pic_timing) << element;
        EXPECT_EQ(changed(kDecodingUnitInfo), decoding_unit_info) << element;
        EXPECT_FALSE(changed(kTimeCode)) << element;
        if (pic_timing) {
            EXPECT_EQ(ElementThatChangesSyntax(kPicTiming, *before, *after), element);
        }
    }
}

TEST(EditSps, WhatIsNotPresentDoesNotMatterToSeiMessages) {
    const auto before = SpsWithHrd();
    before->vui.vui_hrd_parameters_present_flag = 0;
    const auto after = SpsWithHrd();
    after->vui.vui_timing_info_present_flag = 0;
    after->vui.nal_hrd.au_cpb_removal_delay_length_minus1 = 9;
    for (const uint64_t payload_type : {kBufferingPeriod, kPicTiming, kDecodingUnitInfo})
        EXPECT_FALSE(ElementThatChangesSyntax(payload_type, *before, *after).has_value());
}

}  // namespace
}  // namespace h265tool
