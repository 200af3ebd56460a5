#include "h265d/parsing/vui.h"

#include <gmock/gmock.h>

#include "support/fields.h"
#include "support/syntax.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What a vui_parameters( ) of a test consists of, up to the timing information.
struct Head {
    int aspect_ratio_idc = -1;  // -1: not there
    bool overscan = false;
    bool video_signal_type = false;
    bool colour_description = false;
    bool chroma_loc = false;
    bool default_display_window = false;
};

constexpr Head kEverything = {255, true, true, true, true, true};

class Vui : public testing::Test {
 protected:
    void UpToTiming(const Head &head) {
        syntax_.Flag(head.aspect_ratio_idc >= 0, FIELD(vui_, aspect_ratio_info_present_flag));
        if (head.aspect_ratio_idc >= 0)
            syntax_.U(8, static_cast<uint64_t>(head.aspect_ratio_idc), FIELD(vui_, aspect_ratio_idc));
        if (head.aspect_ratio_idc == 255)
            syntax_.U(16, 0x8001, FIELD(vui_, sar_width)).U(16, 0x4003, FIELD(vui_, sar_height));
        // reported under the name of an element before it
        syntax_.Flag(head.overscan, &vui_.overscan_info_present_flag,
                     "cannot parse aspect_ratio_info_present_flag.\n");
        if (head.overscan)
            syntax_.Flag(1, FIELD(vui_, overscan_appropriate_flag));
        syntax_.Flag(head.video_signal_type, FIELD(vui_, video_signal_type_present_flag));
        if (head.video_signal_type)
            syntax_.U(3, 5, FIELD(vui_, video_format))
                .Flag(1, FIELD(vui_, video_full_range_flag))
                .Flag(head.colour_description, FIELD(vui_, colour_description_present_flag));
        if (head.colour_description)
            syntax_.U(8, 0x89, FIELD(vui_, colour_primaries))
                .U(8, 0x90, FIELD(vui_, transfer_characteristics))
                .U(8, 0x8A, FIELD(vui_, matrix_coeffs));
        syntax_.Flag(head.chroma_loc, FIELD(vui_, chroma_loc_info_present_flag));
        if (head.chroma_loc)
            syntax_.Ue(2, FIELD(vui_, chroma_sample_loc_type_top_field))
                .Ue(0xFFFFFFFF, FIELD(vui_, chroma_sample_loc_type_bottom_field));
        syntax_.Flag(1, FIELD(vui_, neutral_chroma_indication_flag))
            .Flag(0, FIELD(vui_, field_seq_flag))
            .Flag(1, FIELD(vui_, frame_field_info_present_flag))
            .Flag(head.default_display_window, FIELD(vui_, default_display_window_flag));
        if (head.default_display_window)
            syntax_.Ue(11, FIELD(vui_, def_disp_win_left_offset))
                .Ue(12, FIELD(vui_, def_disp_win_right_offset))
                .Ue(13, FIELD(vui_, def_disp_win_top_offset))
                .Ue(0xFFFFFFFE, FIELD(vui_, def_disp_win_bottom_offset));
    }

    void NoTiming() { syntax_.Flag(0, FIELD(vui_, vui_timing_info_present_flag)); }

    // Timing information with vui_hrd_parameters_present_flag, which the HRD follows.
    void Timing(bool poc_proportional, bool hrd) {
        syntax_.Flag(1, FIELD(vui_, vui_timing_info_present_flag));
        timing_position_ = static_cast<int>(syntax_.bits().size());
        syntax_.U(32, 0xC0000001, FIELD(vui_, vui_num_units_in_tick))
            .U(32, 0x80000003, FIELD(vui_, vui_time_scale))
            .Flag(poc_proportional, FIELD(vui_, vui_poc_proportional_to_timing_flag));
        if (poc_proportional)
            syntax_.Ue(1234, FIELD(vui_, vui_num_ticks_poc_diff_one_minus1));
        syntax_.Flag(hrd, FIELD(vui_, vui_hrd_parameters_present_flag));
        behind_hrd_flag_ = static_cast<int>(syntax_.bits().size());
    }

    // An HRD of sub-layers without fixed rate or low delay; NAL: with one CPB each.
    void Hrd(bool nal, int sub_layers) {
        hrd_h265_t &hrd = vui_.nal_hrd;
        syntax_.Enter("failed to parse hrd parameters.\n")
            .Flag(nal, FIELD(hrd, nal_hrd_parameters_present_flag))
            .Flag(0, FIELD(hrd, vcl_hrd_parameters_present_flag));
        if (nal)
            syntax_.Flag(0, FIELD(hrd, sub_pic_hrd_params_present_flag))
                .U(4, 1, FIELD(hrd, bit_rate_scale))
                .U(4, 2, FIELD(hrd, cpb_size_scale))
                .U(5, 21, FIELD(hrd, initial_cpb_removal_delay_length_minus1))
                .U(5, 22, FIELD(hrd, au_cpb_removal_delay_length_minus1))
                .U(5, 24, FIELD(hrd, dpb_output_delay_length_minus1));
        for (int i = 0; i < sub_layers; i++) {
            syntax_.Flag(0, ENTRY(hrd, fixed_pic_rate_general_flag, i))
                .Flag(0, ENTRY(hrd, fixed_pic_rate_within_cvs_flag, i))
                .Flag(0, ENTRY(hrd, low_delay_hrd_flag, i))
                .Ue(0, ENTRY(hrd, cpb_cnt_minus1, i));
            sub_layer_hrd_parameters_t &cpbs = hrd.s_l_nal_hrd_parameters[i];
            if (nal)
                syntax_.Enter("cannot parse sub_layer_hrd_parameters.\n")
                    .Ue(77, ENTRY(cpbs, bit_rate_value_minus1, 0))
                    .Ue(78, ENTRY(cpbs, cpb_size_value_minus1, 0))
                    .Flag(1, ENTRY(cpbs, cbr_flag, 0))
                    .Leave();
        }
        syntax_.Leave();
    }

    void Restriction(bool there) {
        syntax_.Flag(there, FIELD(vui_, bitstream_restriction_flag));
        if (!there)
            return;
        syntax_.Flag(0, FIELD(vui_, tiles_fixed_structure_flag))
            .Flag(1, FIELD(vui_, motion_vectors_over_pic_boundaries_flag))
            // reported under the name of its neighbour
            .Flag(0, &vui_.restricted_ref_pic_lists_flag,
                  "cannot parse motion_vectors_over_pic_boundaries_flag.\n")
            .Ue(31, FIELD(vui_, min_spatial_segmentation_idc))
            .Ue(32, FIELD(vui_, max_bytes_per_pic_denom))
            .Ue(33, FIELD(vui_, max_bits_per_min_cu_denom))
            .Ue(34, FIELD(vui_, log2_max_mv_length_horizontal))
            .Ue(0xFFFFFFFF, FIELD(vui_, log2_max_mv_length_vertical));
    }

    // Cuts the structure at every bit; the last parse is the one of the whole.
    void Sweep(unsigned char sps_max_sub_layers_minus1 = 0) {
        syntax_.SweepTruncations(&vui_, [&](bitbuffer_t *bb, vui_h265_t *vui) {
            const bool parsed = _parse_vui_parameters(bb, sps_max_sub_layers_minus1, vui) == 0;
            EXPECT_TRUE(!parsed || bb->bit_offset == syntax_.bits().size());
            return parsed;
        });
    }

    // Parses the first `length` bits into a prefilled record, behind `skipped` bits that the cursor has
    // passed.
    int Parse(size_t length, unsigned int skipped = 0) {
        BitString bits = BitString().U(skipped, 0);
        bits.Append(syntax_.bits().Prefix(length));
        std::vector<unsigned char> bytes = bits.Bytes();
        bitbuffer_t bb{bytes.data(), skipped, static_cast<unsigned int>(bits.size())};
        std::memset(&vui_, kPrefill, sizeof vui_);
        return _parse_vui_parameters(&bb, 0, &vui_);
    }

    void ExpectPositions(int timing, int behind_hrd_flag) const {
        EXPECT_EQ(vui_.vui_timing_info_bitoffset, timing);
        EXPECT_EQ(vui_.vui_hrd_parameters_present_flag_bitoffset, behind_hrd_flag);
    }

    void ExpectNoHrdDefaults() const {
        EXPECT_EQ(vui_.CpbDpbDelaysPresentFlag, kUntouched);
        EXPECT_EQ(vui_.nal_hrd.au_cpb_removal_delay_length_minus1, kPrefill);
        EXPECT_EQ(vui_.nal_hrd.dpb_output_delay_length_minus1, kPrefill);
        EXPECT_EQ(vui_.nal_hrd.dpb_output_delay_du_length_minus1, kPrefill);
        EXPECT_EQ(vui_.nal_hrd.du_cpb_removal_delay_increment_length_minus1, kPrefill);
    }

    static inline const int kUntouched = PrefilledValue<int>();

    Syntax syntax_;
    vui_h265_t vui_;
    int timing_position_ = 0;
    int behind_hrd_flag_ = 0;
};

TEST_F(Vui, WithoutAnyPartHasTenBits) {
    UpToTiming({});
    NoTiming();
    Restriction(false);
    EXPECT_EQ(syntax_.bits().size(), 10u);
    Sweep();
    EXPECT_EQ(vui_.aspect_ratio_idc, kPrefill);
    EXPECT_EQ(vui_.sar_width, PrefilledValue<uint16_t>());
    EXPECT_EQ(vui_.overscan_appropriate_flag, kUntouched);
    EXPECT_EQ(vui_.video_format, kPrefill);
    EXPECT_EQ(vui_.colour_description_present_flag, kUntouched);
    EXPECT_EQ(vui_.chroma_sample_loc_type_top_field, PrefilledValue<UINT64>());
    EXPECT_EQ(vui_.def_disp_win_left_offset, PrefilledValue<UINT64>());
    EXPECT_EQ(vui_.tiles_fixed_structure_flag, kUntouched);
    EXPECT_EQ(vui_.log2_max_mv_length_vertical, PrefilledValue<UINT64>());
}

TEST_F(Vui, WithEveryPart) {
    UpToTiming(kEverything);
    Timing(true, true);
    Hrd(true, 1);
    Restriction(true);
    Sweep();
    ExpectPositions(timing_position_, behind_hrd_flag_);
    EXPECT_EQ(vui_.CpbDpbDelaysPresentFlag, 1);
}

TEST_F(Vui, WithoutTimingNothingOfItIsTouched) {
    UpToTiming(kEverything);
    NoTiming();
    Restriction(true);
    Sweep();
    ExpectPositions(kUntouched, kUntouched);
    ExpectNoHrdDefaults();
    EXPECT_EQ(vui_.vui_num_units_in_tick, PrefilledValue<UINT64>());
    EXPECT_EQ(vui_.vui_hrd_parameters_present_flag, kUntouched);
}

TEST_F(Vui, OnlyTheExtendedAspectRatioHasWidthAndHeight) {
    for (const int aspect_ratio_idc : {0, 1, 16, 17, 128, 254, 255}) {
        SCOPED_TRACE(aspect_ratio_idc);
        syntax_ = {};
        UpToTiming({.aspect_ratio_idc = aspect_ratio_idc});
        NoTiming();
        Restriction(false);
        EXPECT_EQ(syntax_.bits().size(), aspect_ratio_idc == 255 ? 10u + 8 + 32 : 10u + 8);
        Sweep();
        EXPECT_EQ(vui_.sar_width == PrefilledValue<uint16_t>(), aspect_ratio_idc != 255);
        EXPECT_EQ(vui_.sar_height == PrefilledValue<uint16_t>(), aspect_ratio_idc != 255);
    }
}

TEST_F(Vui, EachPartAlone) {
    const Head heads[] = {{.overscan = true},
                          {.video_signal_type = true},
                          {.video_signal_type = true, .colour_description = true},
                          {.chroma_loc = true},
                          {.default_display_window = true}};
    for (const Head &head : heads) {
        syntax_ = {};
        UpToTiming(head);
        NoTiming();
        Restriction(false);
        Sweep();
        EXPECT_EQ(vui_.colour_primaries == kPrefill, !head.colour_description);
    }
}

TEST_F(Vui, TimingWithoutHrdSetsTheDefaultLengths) {
    for (const bool poc_proportional : {false, true}) {
        syntax_ = {};
        UpToTiming({.aspect_ratio_idc = 1});
        Timing(poc_proportional, false);
        Restriction(true);
        Sweep();
        ExpectPositions(17, poc_proportional ? 17 + 32 + 32 + 1 + 21 + 1 : 17 + 32 + 32 + 1 + 1);
        EXPECT_EQ(vui_.CpbDpbDelaysPresentFlag, 0);
        EXPECT_EQ(vui_.nal_hrd.au_cpb_removal_delay_length_minus1, 23);
        EXPECT_EQ(vui_.nal_hrd.dpb_output_delay_length_minus1, 23);
        EXPECT_EQ(vui_.nal_hrd.dpb_output_delay_du_length_minus1, 0);
        EXPECT_EQ(vui_.nal_hrd.du_cpb_removal_delay_increment_length_minus1, 0);
        EXPECT_EQ(vui_.nal_hrd.initial_cpb_removal_delay_length_minus1, kPrefill);
        EXPECT_EQ(vui_.nal_hrd.nal_hrd_parameters_present_flag, kUntouched);
        EXPECT_EQ(vui_.vui_num_ticks_poc_diff_one_minus1 == PrefilledValue<UINT64>(), !poc_proportional);
    }
}

TEST_F(Vui, TimingWithHrdHasTheLengthsThatAreCoded) {
    UpToTiming({});
    Timing(false, true);
    Hrd(true, 1);
    Restriction(false);
    Sweep();
    ExpectPositions(9, 9 + 32 + 32 + 1 + 1);
    EXPECT_EQ(vui_.CpbDpbDelaysPresentFlag, 1);
    EXPECT_EQ(vui_.nal_hrd.dpb_output_delay_du_length_minus1, kPrefill);
    EXPECT_EQ(vui_.nal_hrd.du_cpb_removal_delay_increment_length_minus1, kPrefill);
}

TEST_F(Vui, AnHrdOfNeitherKindHasNoDelays) {
    UpToTiming({});
    Timing(false, true);
    Hrd(false, 1);
    Restriction(false);
    Sweep();
    EXPECT_EQ(vui_.CpbDpbDelaysPresentFlag, 0);
    EXPECT_EQ(vui_.nal_hrd.au_cpb_removal_delay_length_minus1, kPrefill);
    EXPECT_EQ(vui_.nal_hrd.dpb_output_delay_length_minus1, kPrefill);
}

TEST_F(Vui, TheHrdHasTheSubLayersOfTheSps) {
    UpToTiming({});
    Timing(false, true);
    Hrd(true, 7);
    Restriction(false);
    Sweep(6);
}

TEST_F(Vui, PositionsCountFromTheStartOfTheBuffer) {
    UpToTiming({});
    Timing(false, false);
    Restriction(false);
    ASSERT_EQ(Parse(syntax_.bits().size(), 21), 0);
    ExpectPositions(21 + 9, 21 + 9 + 66);
}

TEST_F(Vui, PositionsAreRecordedWhereTheReaderStandsThere) {
    UpToTiming({});
    Timing(false, false);
    const size_t behind_flag = static_cast<size_t>(behind_hrd_flag_);
    const TraceCapture silence;
    ASSERT_EQ(Parse(8), -1);  // without vui_timing_info_present_flag
    ExpectPositions(kUntouched, kUntouched);
    ASSERT_EQ(Parse(9), -1);
    ExpectPositions(9, kUntouched);
    ASSERT_EQ(Parse(behind_flag - 1), -1);
    ExpectPositions(9, kUntouched);
    ExpectNoHrdDefaults();
    ASSERT_EQ(Parse(behind_flag), -1);
    ExpectPositions(9, behind_hrd_flag_);
    EXPECT_EQ(vui_.nal_hrd.au_cpb_removal_delay_length_minus1, 23);
}

TEST_F(Vui, TracesThePositions) {
    UpToTiming({});
    Timing(false, false);
    Restriction(true);
    const std::string end = std::to_string(syntax_.bits().size());
    const TraceCapture trace;
    ASSERT_EQ(Parse(syntax_.bits().size()), 0);
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Called.\n", "Before vui_hrd_parameters_present_flag BitOffset:75.\n",
                            "Before bitstream_restriction_flag CurrentBitOffset:75.\n",
                            "After log2_max_mv_length_vertical CurrentBitOffset:" + end + ".\n", "Done.\n"));
    EXPECT_EQ(trace.messages().size(), 5u);
    for (const TracedMessage &message : trace.messages()) {
        EXPECT_EQ(message.function, "_parse_vui_parameters");
        EXPECT_EQ(message.file, "vui.cpp");
    }
}

TEST_F(Vui, TracesTheHrdBetweenThePositionsAroundIt) {
    UpToTiming({});
    Timing(false, true);
    Hrd(false, 1);
    Restriction(false);
    const TraceCapture trace;
    ASSERT_EQ(Parse(syntax_.bits().size()), 0);
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Called.\n", "Before vui_hrd_parameters_present_flag BitOffset:75.\n",
                            "Called. MaxNumSubLayersMinus1=0\n", "Done.\n",
                            "Before bitstream_restriction_flag CurrentBitOffset:81.\n", "Done.\n"));
}

TEST_F(Vui, WithoutTimingAndRestrictionTracesOnePosition) {
    UpToTiming({});
    NoTiming();
    Restriction(false);
    const TraceCapture trace;
    ASSERT_EQ(Parse(10), 0);
    EXPECT_THAT(
        trace.Texts(7),
        ElementsAre("Called.\n", "Before bitstream_restriction_flag CurrentBitOffset:9.\n", "Done.\n"));
}

TEST_F(Vui, AFailedHrdIsReportedByEachStructureInItsOwnName) {
    UpToTiming({});
    Timing(false, true);
    Hrd(true, 1);
    const TraceCapture trace(3);
    ASSERT_EQ(Parse(syntax_.bits().size() - 1), -1);
    EXPECT_THAT(trace.Errors(),
                ElementsAre("cannot parse cbr_flag[0].\n", "cannot parse sub_layer_hrd_parameters.\n",
                            "failed to parse hrd parameters.\n"));
    EXPECT_EQ(trace.messages()[0].function, "_parse_sub_layer_hrd_parameters");
    EXPECT_EQ(trace.messages()[1].function, "_parse_hrd");
    EXPECT_EQ(trace.messages()[2].function, "_parse_vui_parameters");
}

TEST_F(Vui, TooManyCpbsFailTheHrd) {
    UpToTiming({});
    Timing(false, true);
    syntax_.Rest(BitString().U(2, 0).U(3, 0).Ue(32).U(64, ~uint64_t{0}));
    const TraceCapture trace(3);
    EXPECT_EQ(Parse(syntax_.bits().size()), -1);
    EXPECT_THAT(trace.Errors(),
                ElementsAre("cannot parse cpb_cnt_minus1[0].\n", "failed to parse hrd parameters.\n"));
    EXPECT_EQ(vui_.CpbDpbDelaysPresentFlag, 0);
    EXPECT_EQ(vui_.bitstream_restriction_flag, kUntouched);
}

TEST_F(Vui, NullArgumentsFailInSilence) {
    bitbuffer_t bb{};
    const TraceCapture trace;
    EXPECT_EQ(_parse_vui_parameters(nullptr, 0, &vui_), -1);
    EXPECT_EQ(_parse_vui_parameters(&bb, 0, nullptr), -1);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

}  // namespace
}  // namespace test
