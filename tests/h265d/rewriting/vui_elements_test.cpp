// Every flag of VUI and HRD on and off, through both rewritings of an SPS.

#include <gmock/gmock.h>

#include <functional>

#include "support/sps_rewriting.h"

namespace test {
namespace {

struct Flag {
    const char *name;
    std::function<int &(vui_h265_t &)> in;
};

hrd_h265_t &Hrd(vui_h265_t &vui) {
    return vui.nal_hrd;
}

#define VUI_FLAG(flag)                                            \
    {                                                             \
#flag, [](vui_h265_t & vui) -> int & { return vui.flag; } \
    }
#define HRD_FLAG(flag, ...)                                                        \
    {                                                                              \
#flag, [](vui_h265_t & vui) -> int & { return Hrd(vui).flag __VA_ARGS__; } \
    }

// In the order of the syntax: those that others depend on come first.
const std::vector<Flag> kFlags = {
    VUI_FLAG(aspect_ratio_info_present_flag),
    VUI_FLAG(overscan_info_present_flag),
    VUI_FLAG(overscan_appropriate_flag),
    VUI_FLAG(video_signal_type_present_flag),
    VUI_FLAG(video_full_range_flag),
    VUI_FLAG(colour_description_present_flag),
    VUI_FLAG(chroma_loc_info_present_flag),
    VUI_FLAG(neutral_chroma_indication_flag),
    VUI_FLAG(field_seq_flag),
    VUI_FLAG(frame_field_info_present_flag),
    VUI_FLAG(default_display_window_flag),
    VUI_FLAG(vui_timing_info_present_flag),
    VUI_FLAG(vui_poc_proportional_to_timing_flag),
    VUI_FLAG(vui_hrd_parameters_present_flag),
    HRD_FLAG(nal_hrd_parameters_present_flag),
    HRD_FLAG(vcl_hrd_parameters_present_flag),
    HRD_FLAG(sub_pic_hrd_params_present_flag),
    HRD_FLAG(sub_pic_cpb_params_in_pic_timing_sei_flag),
    HRD_FLAG(fixed_pic_rate_within_cvs_flag, [0]),
    HRD_FLAG(s_l_nal_hrd_parameters, [0].cbr_flag[1]),
    HRD_FLAG(s_l_vcl_hrd_parameters, [0].cbr_flag[0]),
    VUI_FLAG(bitstream_restriction_flag),
    VUI_FLAG(tiles_fixed_structure_flag),
    VUI_FLAG(motion_vectors_over_pic_boundaries_flag),
    VUI_FLAG(restricted_ref_pic_lists_flag),
};

#undef VUI_FLAG
#undef HRD_FLAG

// Values for everything that the flags announce.
void FillValues(vui_h265_t *vui) {
    vui->aspect_ratio_idc = 255;
    vui->sar_width = 3;
    vui->sar_height = 0x8001;
    vui->video_format = 5;
    vui->colour_primaries = 9;
    vui->transfer_characteristics = 16;
    vui->matrix_coeffs = 10;
    vui->chroma_sample_loc_type_top_field = 2;
    vui->chroma_sample_loc_type_bottom_field = 3;
    vui->def_disp_win_left_offset = 4;
    vui->def_disp_win_right_offset = 5;
    vui->def_disp_win_top_offset = 6;
    vui->def_disp_win_bottom_offset = 7;
    vui->vui_num_units_in_tick = 256;
    vui->vui_time_scale = 0x80000000;
    vui->vui_num_ticks_poc_diff_one_minus1 = 8;
    vui->min_spatial_segmentation_idc = 9;
    vui->max_bytes_per_pic_denom = 10;
    vui->max_bits_per_min_cu_denom = 11;
    vui->log2_max_mv_length_horizontal = 12;
    vui->log2_max_mv_length_vertical = 13;
    hrd_h265_t &hrd = vui->nal_hrd;
    hrd.tick_divisor_minus2 = 14;
    hrd.du_cpb_removal_delay_increment_length_minus1 = 15;
    hrd.dpb_output_delay_du_length_minus1 = 16;
    hrd.bit_rate_scale = 1;
    hrd.cpb_size_scale = 2;
    hrd.cpb_size_du_scale = 3;
    hrd.initial_cpb_removal_delay_length_minus1 = 17;
    hrd.au_cpb_removal_delay_length_minus1 = 18;
    hrd.dpb_output_delay_length_minus1 = 19;
    hrd.elemental_duration_in_tc_minus1[0] = 20;
    hrd.cpb_cnt_minus1[0] = 1;
    for (size_t i = 0; i < 2; i++) {
        for (sub_layer_hrd_parameters_t *slhp :
             {&hrd.s_l_nal_hrd_parameters[0], &hrd.s_l_vcl_hrd_parameters[0]}) {
            slhp->bit_rate_value_minus1[i] = 21 + i;
            slhp->cpb_size_value_minus1[i] = 23 + i;
            slhp->cpb_size_du_value_minus1[i] = 25 + i;
            slhp->bit_rate_du_value_minus1[i] = 27 + i;
        }
    }
}

// One sub-layer, the flags on or off.
ParsedSps SpsWithFlags(int value) {
    const ParsedSps empty(SpsWithTail(BitString().U(1, 0)));
    const auto edited = std::make_unique<sps_h265_t>(*empty.sps);
    FillValues(&edited->vui);
    for (const Flag &flag : kFlags)
        flag.in(edited->vui) = value;
    return ParsedSps(kSpsVuiReplacement.Rewritten(empty.nal, *edited));
}

void ExpectWritten(const ParsedSps &input, const sps_h265_t &edited, const std::vector<Flag> &on) {
    for (const SpsRewriter *rewriter : {&kSpsModification, &kSpsVuiReplacement}) {
        const Bytes result = rewriter->Rewritten(input.nal, edited);
        ASSERT_EQ(result, rewriter->Expected(input, edited));
        const ParsedSps parsed(result);
        for (const Flag &flag : kFlags) {
            const auto same = [&](const Flag &other) { return std::string(other.name) == flag.name; };
            const bool is_on = std::any_of(on.begin(), on.end(), same);
            ASSERT_EQ(flag.in(parsed.sps->vui), is_on) << flag.name;
        }
    }
}

// What the flag depends on is on too: without it there is no place for the flag.
TEST(VuiElements, EachIsSwitchedOnAndOff) {
    const ParsedSps off = SpsWithFlags(0);
    const ParsedSps on = SpsWithFlags(1);
    ASSERT_NO_FATAL_FAILURE(ExpectWritten(off, *off.sps, {}));
    ASSERT_NO_FATAL_FAILURE(ExpectWritten(on, *on.sps, kFlags));
    const auto edited = std::make_unique<sps_h265_t>(*off.sps);
    FillValues(&edited->vui);
    std::vector<Flag> switched_on;
    for (const Flag &flag : kFlags) {
        SCOPED_TRACE(std::string("up to ") + flag.name);
        flag.in(edited->vui) = 1;
        switched_on.push_back(flag);
        ASSERT_NO_FATAL_FAILURE(ExpectWritten(off, *edited, switched_on));
    }
    // from behind, so that each is there to be switched off
    *edited = *on.sps;
    while (!switched_on.empty()) {
        SCOPED_TRACE(std::string("without ") + switched_on.back().name);
        switched_on.back().in(edited->vui) = 0;
        switched_on.pop_back();
        ASSERT_NO_FATAL_FAILURE(ExpectWritten(on, *edited, switched_on));
    }
}

TEST(VuiElements, RatesAndDelaysOfAnHrdExcludeEachOther) {
    const ParsedSps input = SpsWithFlags(1);
    for (const int fixed_in_general : {0, 1}) {
        for (const int fixed_within_cvs : {0, 1}) {
            for (const int low_delay : {0, 1}) {
                if ((fixed_in_general && !fixed_within_cvs) || (fixed_within_cvs && low_delay))
                    continue;  // no syntax has it
                const auto edited = std::make_unique<sps_h265_t>(*input.sps);
                hrd_h265_t &hrd = edited->vui.nal_hrd;
                hrd.fixed_pic_rate_general_flag[0] = fixed_in_general;
                hrd.fixed_pic_rate_within_cvs_flag[0] = fixed_within_cvs;
                hrd.low_delay_hrd_flag[0] = low_delay;
                if (low_delay)
                    hrd.cpb_cnt_minus1[0] = 0;
                const Bytes result = kSpsVuiReplacement.Rewritten(input.nal, *edited);
                ASSERT_EQ(result, kSpsVuiReplacement.Expected(input, *edited));
                const ParsedSps parsed(result);
                const hrd_h265_t &written = parsed.sps->vui.nal_hrd;
                EXPECT_EQ(written.fixed_pic_rate_general_flag[0], fixed_in_general);
                EXPECT_EQ(written.fixed_pic_rate_within_cvs_flag[0], fixed_within_cvs);
                EXPECT_EQ(written.low_delay_hrd_flag[0], low_delay);
                EXPECT_EQ(written.cpb_cnt_minus1[0], low_delay ? 0u : 1u);
            }
        }
    }
}

}  // namespace
}  // namespace test
