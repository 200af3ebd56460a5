#include "support/nested_syntax.h"

#include "support/fields.h"

namespace test {
namespace {

// The field of a record that may be missing.
#define FIELD_IF(record, element) (record) != nullptr ? &(record)->element : nullptr, Unreadable(#element)
#define ENTRY_IF(record, element, i) \
    (record) != nullptr ? &(record)->element[i] : nullptr, Unreadable(#element, i)

void AddOneCpb(Syntax *syntax, sub_layer_hrd_parameters_t *cpb) {
    syntax->Enter("cannot parse sub_layer_hrd_parameters.\n")
        .Ue(1562, ENTRY_IF(cpb, bit_rate_value_minus1, 0))
        .Ue(6249, ENTRY_IF(cpb, cpb_size_value_minus1, 0))
        .Flag(1, ENTRY_IF(cpb, cbr_flag, 0))
        .Leave();
}

}  // namespace

void AddProfileTierLevel(Syntax *syntax, profile_tier_level_t *ptl, int maxNumSubLayersMinus1) {
    syntax->Enter("cannot parse profile_tier_level.\n")
        .U(2, 0, FIELD(*ptl, general_profile_space))
        .Flag(1, FIELD(*ptl, general_tier_flag))
        .U(5, 1, FIELD(*ptl, general_profile_idc));
    for (int j = 0; j < 32; j++)
        syntax->Flag(j == 1, ENTRY(*ptl, general_profile_compatibility_flag, j));
    syntax->Flag(1, FIELD(*ptl, general_progressive_source_flag))
        .Flag(0, FIELD(*ptl, general_interlaced_source_flag))
        .Flag(1, FIELD(*ptl, general_non_packed_constraint_flag))
        .Flag(0, FIELD(*ptl, general_frame_only_constraint_flag))
        .U(43, 5, &ptl->u_general.reserved_zero_43bits, Unreadable("reserved_zero_44bits"))
        .Flag(0, FIELD(*ptl, general_inbld_flag))
        .U(8, 120, FIELD(*ptl, general_level_idc));
    for (int i = 0; i < maxNumSubLayersMinus1; i++)
        syntax->Flag(0, ENTRY(*ptl, sub_layer_profile_present_flag, i))
            .Flag(0, ENTRY(*ptl, sub_layer_level_present_flag, i));
    for (int i = maxNumSubLayersMinus1; maxNumSubLayersMinus1 > 0 && i < H265_PTL_SUB_LAYERS; i++)
        syntax->U(2, 0, ENTRY(*ptl, reserved_zero_2bits, i));
    syntax->Leave();
}

void AddHrd(Syntax *syntax, hrd_h265_t *hrd, bool common, bool cpb, int maxNumSubLayersMinus1) {
    if (common)
        syntax->Flag(1, FIELD_IF(hrd, nal_hrd_parameters_present_flag))
            .Flag(0, FIELD_IF(hrd, vcl_hrd_parameters_present_flag))
            .Flag(0, FIELD_IF(hrd, sub_pic_hrd_params_present_flag))
            .U(4, 2, FIELD_IF(hrd, bit_rate_scale))
            .U(4, 3, FIELD_IF(hrd, cpb_size_scale))
            .U(5, 22, FIELD_IF(hrd, initial_cpb_removal_delay_length_minus1))
            .U(5, 15, FIELD_IF(hrd, au_cpb_removal_delay_length_minus1))
            .U(5, 5, FIELD_IF(hrd, dpb_output_delay_length_minus1));
    for (int i = 0; i <= maxNumSubLayersMinus1; i++) {
        syntax->Flag(1, ENTRY_IF(hrd, fixed_pic_rate_general_flag, i))
            .Ue(static_cast<uint64_t>(i), ENTRY_IF(hrd, elemental_duration_in_tc_minus1, i))
            .Ue(0, ENTRY_IF(hrd, cpb_cnt_minus1, i));
        if (cpb)
            AddOneCpb(syntax, hrd != nullptr ? &hrd->s_l_nal_hrd_parameters[i] : nullptr);
    }
}

void AddVui(Syntax *syntax, vui_h265_t *vui, int sps_max_sub_layers_minus1) {
    syntax->Enter("failed to parse vui parameters.\n").Flag(0, FIELD(*vui, aspect_ratio_info_present_flag));
    // reported under the name of an element before it
    syntax->Flag(0, &vui->overscan_info_present_flag, Unreadable("aspect_ratio_info_present_flag"))
        .Flag(0, FIELD(*vui, video_signal_type_present_flag))
        .Flag(0, FIELD(*vui, chroma_loc_info_present_flag))
        .Flag(0, FIELD(*vui, neutral_chroma_indication_flag))
        .Flag(1, FIELD(*vui, field_seq_flag))
        .Flag(1, FIELD(*vui, frame_field_info_present_flag))
        .Flag(0, FIELD(*vui, default_display_window_flag))
        .Flag(1, FIELD(*vui, vui_timing_info_present_flag))
        .U(32, 1001, FIELD(*vui, vui_num_units_in_tick))
        .U(32, 60000, FIELD(*vui, vui_time_scale))
        .Flag(0, FIELD(*vui, vui_poc_proportional_to_timing_flag))
        .Flag(1, FIELD(*vui, vui_hrd_parameters_present_flag))
        .Enter("failed to parse hrd parameters.\n");
    AddHrd(syntax, &vui->nal_hrd, true, true, sps_max_sub_layers_minus1);
    syntax->Leave().Flag(0, FIELD(*vui, bitstream_restriction_flag)).Leave();
}

}  // namespace test
