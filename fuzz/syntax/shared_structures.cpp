#include "syntax/shared_structures.h"

#include <array>
#include <iterator>
#include <set>

namespace fuzz {
namespace {

void WriteProfile(SyntaxWriter *w) {
    w->U(8);   // profile space, tier, profile
    w->U(32);  // compatibility flags
    w->U(4);   // source and constraint flags
    w->U(43);
    w->Flag();
}

void WriteSubLayerHrd(SyntaxWriter *w, bool sub_pic, uint32_t cpb_cnt_minus1) {
    for (uint32_t i = 0; i <= cpb_cnt_minus1 && i < 32; i++) {
        w->Ue();  // bit_rate_value_minus1
        w->Ue();  // cpb_size_value_minus1
        if (sub_pic) {
            w->Ue();  // cpb_size_du_value_minus1
            w->Ue();  // bit_rate_du_value_minus1
        }
        w->Flag();  // cbr_flag
    }
}

// The distances of a reference picture set in the order of clause 7.4.8: the negative ones from the nearest
// on, then the positive ones likewise.
using Distances = std::set<int64_t>;

std::vector<int64_t> InOrder(const Distances &distances) {
    const auto zero = distances.lower_bound(0);
    std::vector<int64_t> ordered(std::make_reverse_iterator(zero), distances.rend());
    ordered.insert(ordered.end(), zero, distances.end());
    return ordered;
}

Distances WritePredictedSet(SyntaxWriter *w, const Distances &reference) {
    const bool negative = w->Flag();              // delta_rps_sign
    const int64_t step = int64_t{w->Ue(15)} + 1;  // abs_delta_rps_minus1
    const int64_t delta_rps = negative ? -step : step;
    std::vector<int64_t> bases = InOrder(reference);
    bases.push_back(0);
    Distances set;
    for (const int64_t base : bases) {
        const bool used_by_current_pic_flag = w->Flag();
        const bool use_delta_flag = used_by_current_pic_flag || w->Flag();
        if (use_delta_flag && base + delta_rps != 0)
            set.insert(base + delta_rps);
    }
    return set;
}

Distances WriteExplicitSet(SyntaxWriter *w) {
    const uint32_t num_negative_pics = w->Ue(6);
    const uint32_t num_positive_pics = w->Ue(6);
    Distances set;
    for (const int64_t sign : {-1, 1}) {
        int64_t distance = 0;
        for (uint32_t i = 0; i < (sign < 0 ? num_negative_pics : num_positive_pics) && i < 16; i++) {
            distance += int64_t{w->Ue(7)} + 1;  // delta_poc_minus1
            w->Flag();                          // used_by_curr_pic_flag
            set.insert(sign * distance);
        }
    }
    return set;
}

}  // namespace

void WriteProfileTierLevel(SyntaxWriter *w, unsigned int maxNumSubLayersMinus1) {
    WriteProfile(w);
    w->U(8);  // general_level_idc
    std::array<bool, 8> profile_present{};
    std::array<bool, 8> level_present{};
    for (unsigned int i = 0; i < maxNumSubLayersMinus1; i++) {
        profile_present[i] = w->Flag();
        level_present[i] = w->Flag();
    }
    for (unsigned int i = maxNumSubLayersMinus1; i < 8 && maxNumSubLayersMinus1 > 0; i++)
        w->Put(2, 0);
    for (unsigned int i = 0; i < maxNumSubLayersMinus1; i++) {
        if (profile_present[i])
            WriteProfile(w);
        if (level_present[i])
            w->U(8);
    }
}

void WriteScalingListData(SyntaxWriter *w) {
    for (int sizeId = 0; sizeId < 4; sizeId++) {
        for (int matrixId = 0; matrixId < 6; matrixId += sizeId == 3 ? 3 : 1) {
            if (!w->Flag()) {  // scaling_list_pred_mode_flag
                w->Ue(5);      // scaling_list_pred_matrix_id_delta
                continue;
            }
            if (sizeId > 1)
                w->Se();  // scaling_list_dc_coef_minus8
            for (int i = 0; i < (sizeId == 0 ? 16 : 64); i++)
                w->Se();  // scaling_list_delta_coef
        }
    }
}

void WriteShortTermRefPicSets(SyntaxWriter *w) {
    const uint32_t num_short_term_ref_pic_sets = w->Ue(64);
    Distances set;
    for (uint32_t i = 0; i < num_short_term_ref_pic_sets && i < 64; i++) {
        const bool inter_ref_pic_set_prediction_flag = i > 0 && w->Flag();
        set = inter_ref_pic_set_prediction_flag ? WritePredictedSet(w, set) : WriteExplicitSet(w);
    }
}

void WriteHrd(SyntaxWriter *w, bool common, unsigned int maxNumSubLayersMinus1, HrdCommon *hrd) {
    if (common) {
        hrd->nal = w->Flag();
        hrd->vcl = w->Flag();
        if (hrd->nal || hrd->vcl) {
            hrd->sub_pic = w->Flag();
            if (hrd->sub_pic) {
                w->U(8);    // tick_divisor_minus2
                w->U(5);    // du_cpb_removal_delay_increment_length_minus1
                w->Flag();  // sub_pic_cpb_params_in_pic_timing_sei_flag
                w->U(5);    // dpb_output_delay_du_length_minus1
            }
            w->U(8);  // bit_rate_scale, cpb_size_scale
            if (hrd->sub_pic)
                w->U(4);  // cpb_size_du_scale
            w->U(15);     // three lengths
        }
    }
    for (unsigned int i = 0; i <= maxNumSubLayersMinus1; i++) {
        const bool fixed_pic_rate_general_flag = w->Flag();
        const bool fixed_pic_rate_within_cvs_flag = fixed_pic_rate_general_flag || w->Flag();
        bool low_delay_hrd_flag = false;
        if (fixed_pic_rate_within_cvs_flag)
            w->Ue();  // elemental_duration_in_tc_minus1
        else
            low_delay_hrd_flag = w->Flag();
        const uint32_t cpb_cnt_minus1 = low_delay_hrd_flag ? 0 : w->Ue(w->input().Flag() ? 2 : 31);
        if (hrd->nal)
            WriteSubLayerHrd(w, hrd->sub_pic, cpb_cnt_minus1);
        if (hrd->vcl)
            WriteSubLayerHrd(w, hrd->sub_pic, cpb_cnt_minus1);
    }
}

void WriteVui(SyntaxWriter *w, unsigned int sps_max_sub_layers_minus1) {
    constexpr uint64_t kExtendedSar = 255;
    if (w->Flag() && w->Put(8, w->input().Flag() ? kExtendedSar : w->input().Byte()) == kExtendedSar)
        w->U(32);   // sar_width, sar_height
    if (w->Flag())  // overscan_info_present_flag
        w->Flag();
    if (w->Flag()) {  // video_signal_type_present_flag
        w->U(4);
        if (w->Flag())  // colour_description_present_flag
            w->U(24);
    }
    if (w->Flag()) {  // chroma_loc_info_present_flag
        w->Ue(5);
        w->Ue(5);
    }
    w->U(3);          // neutral_chroma_indication_flag, field_seq_flag, frame_field_info_present_flag
    if (w->Flag()) {  // default_display_window_flag
        for (int side = 0; side < 4; side++)
            w->Ue();
    }
    if (w->Flag()) {    // vui_timing_info_present_flag
        w->U(64);       // vui_num_units_in_tick, vui_time_scale
        if (w->Flag())  // vui_poc_proportional_to_timing_flag
            w->Ue();
        HrdCommon hrd;
        if (w->Flag())  // vui_hrd_parameters_present_flag
            WriteHrd(w, true, sps_max_sub_layers_minus1, &hrd);
    }
    if (w->Flag()) {  // bitstream_restriction_flag
        w->U(3);
        for (int element = 0; element < 5; element++)
            w->Ue();
    }
}

}  // namespace fuzz
