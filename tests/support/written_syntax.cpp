#include "support/written_syntax.h"

namespace test {
namespace {

// The usual case: the record's field, reported under its own name.
#define VALUE(record, element) static_cast<uint64_t>((record).element), kNotKept, Unwritable(#element)
#define VALUE_AT(record, element, i) \
    static_cast<uint64_t>((record).element[i]), kNotKept, Unwritable(#element, i)
#define GOLOMB(record, element) (record).element, kNotKept, Unwritable(#element " as golomb")

void AddWrittenCpbs(Syntax *syntax, const hrd_h265_t &hrd, int sub_layer,
                    const sub_layer_hrd_parameters_t &slhp) {
    syntax->Enter(Unwritable("sub_layer_hrd_parameters", sub_layer));
    for (int i = 0; i <= static_cast<int>(hrd.cpb_cnt_minus1[sub_layer]); i++) {
        syntax->Ue(VALUE_AT(slhp, bit_rate_value_minus1, i)).Ue(VALUE_AT(slhp, cpb_size_value_minus1, i));
        if (hrd.sub_pic_hrd_params_present_flag)
            syntax->Ue(VALUE_AT(slhp, cpb_size_du_value_minus1, i))
                .Ue(VALUE_AT(slhp, bit_rate_du_value_minus1, i));
        syntax->U(1, VALUE_AT(slhp, cbr_flag, i));
    }
    syntax->Leave();
}

void AddWrittenCommonPart(Syntax *syntax, const hrd_h265_t &hrd) {
    const int nal = hrd.nal_hrd_parameters_present_flag;
    // reported with its value
    syntax
        ->Flag(nal, kNotKept, "Failed to set nal_hrd_parameters_present_flag:" + std::to_string(nal) + ".\n")
        .U(1, VALUE(hrd, vcl_hrd_parameters_present_flag));
    if (!nal && !hrd.vcl_hrd_parameters_present_flag)
        return;
    syntax->U(1, VALUE(hrd, sub_pic_hrd_params_present_flag));
    if (hrd.sub_pic_hrd_params_present_flag)
        syntax->U(8, VALUE(hrd, tick_divisor_minus2))
            .U(5, VALUE(hrd, du_cpb_removal_delay_increment_length_minus1))
            .U(1, VALUE(hrd, sub_pic_cpb_params_in_pic_timing_sei_flag))
            .U(5, VALUE(hrd, dpb_output_delay_du_length_minus1));
    syntax->U(4, VALUE(hrd, bit_rate_scale)).U(4, VALUE(hrd, cpb_size_scale));
    if (hrd.sub_pic_hrd_params_present_flag)
        syntax->U(4, VALUE(hrd, cpb_size_du_scale));
    syntax->U(5, VALUE(hrd, initial_cpb_removal_delay_length_minus1))
        .U(5, VALUE(hrd, au_cpb_removal_delay_length_minus1))
        .U(5, VALUE(hrd, dpb_output_delay_length_minus1));
}

uint64_t Bits(Random *random, unsigned int n) {
    return Below(random, uint64_t{1} << n);
}

// For ue(v): mostly short code words, the longest one among them.
uint64_t Golomb(Random *random) {
    const unsigned int width = static_cast<unsigned int>(Below(random, Below(random, 8) == 0 ? 33 : 9));
    return (uint64_t{1} << width) - 1 + (width < 32 ? Bits(random, width) : 0);
}

void FillCpbs(sub_layer_hrd_parameters_t *slhp, bool sub_pic, UINT64 cpb_cnt_minus1, Random *random) {
    for (size_t i = 0; i <= cpb_cnt_minus1; i++) {
        slhp->bit_rate_value_minus1[i] = Golomb(random);
        slhp->cpb_size_value_minus1[i] = Golomb(random);
        if (sub_pic) {
            slhp->cpb_size_du_value_minus1[i] = Golomb(random);
            slhp->bit_rate_du_value_minus1[i] = Golomb(random);
        }
        slhp->cbr_flag[i] = Chance(random);
    }
}

}  // namespace

void AddWrittenHrd(Syntax *syntax, const hrd_h265_t &hrd, bool common, int maxNumSubLayersMinus1) {
    if (common)
        AddWrittenCommonPart(syntax, hrd);
    for (int i = 0; i <= maxNumSubLayersMinus1; i++) {
        syntax->U(1, VALUE_AT(hrd, fixed_pic_rate_general_flag, i));
        if (!hrd.fixed_pic_rate_general_flag[i])
            syntax->U(1, VALUE_AT(hrd, fixed_pic_rate_within_cvs_flag, i));
        if (hrd.fixed_pic_rate_within_cvs_flag[i])
            syntax->Ue(VALUE_AT(hrd, elemental_duration_in_tc_minus1, i));
        else
            syntax->U(1, VALUE_AT(hrd, low_delay_hrd_flag, i));
        if (!hrd.low_delay_hrd_flag[i])
            syntax->Ue(VALUE_AT(hrd, cpb_cnt_minus1, i));
        if (hrd.nal_hrd_parameters_present_flag)
            AddWrittenCpbs(syntax, hrd, i, hrd.s_l_nal_hrd_parameters[i]);
        if (hrd.vcl_hrd_parameters_present_flag)
            AddWrittenCpbs(syntax, hrd, i, hrd.s_l_vcl_hrd_parameters[i]);
    }
}

void AddWrittenVui(Syntax *syntax, const sps_h265_t &sps) {
    const vui_h265_t &vui = sps.vui;
    syntax->U(1, VALUE(sps, vui_parameters_present_flag)).U(1, VALUE(vui, aspect_ratio_info_present_flag));
    if (vui.aspect_ratio_info_present_flag) {
        syntax->U(8, VALUE(vui, aspect_ratio_idc));
        if (vui.aspect_ratio_idc == 255)
            // the height is reported under the name of its neighbour
            syntax->U(16, VALUE(vui, sar_width)).U(16, vui.sar_height, kNotKept, Unwritable("sar_width"));
    }
    syntax->U(1, VALUE(vui, overscan_info_present_flag));
    if (vui.overscan_info_present_flag)
        syntax->U(1, VALUE(vui, overscan_appropriate_flag));
    syntax->U(1, VALUE(vui, video_signal_type_present_flag));
    if (vui.video_signal_type_present_flag) {
        syntax->U(3, VALUE(vui, video_format))
            .U(1, VALUE(vui, video_full_range_flag))
            .U(1, VALUE(vui, colour_description_present_flag));
        if (vui.colour_description_present_flag)
            syntax->U(8, VALUE(vui, colour_primaries))
                .U(8, VALUE(vui, transfer_characteristics))
                .U(8, VALUE(vui, matrix_coeffs));
    }
    syntax->U(1, VALUE(vui, chroma_loc_info_present_flag));
    if (vui.chroma_loc_info_present_flag)
        syntax->Ue(GOLOMB(vui, chroma_sample_loc_type_top_field))
            .Ue(GOLOMB(vui, chroma_sample_loc_type_bottom_field));
    syntax->U(1, VALUE(vui, neutral_chroma_indication_flag))
        .U(1, VALUE(vui, field_seq_flag))
        // reported under the name of its neighbour
        .Flag(vui.frame_field_info_present_flag, kNotKept, Unwritable("field_seq_flag"))
        .U(1, VALUE(vui, default_display_window_flag));
    if (vui.default_display_window_flag)
        syntax->Ue(GOLOMB(vui, def_disp_win_left_offset))
            .Ue(GOLOMB(vui, def_disp_win_right_offset))
            .Ue(GOLOMB(vui, def_disp_win_top_offset))
            // reported under the name of its neighbour
            .Ue(vui.def_disp_win_bottom_offset, kNotKept, Unwritable("def_disp_win_top_offset as golomb"));
    syntax->U(1, VALUE(vui, vui_timing_info_present_flag));
    if (vui.vui_timing_info_present_flag) {
        syntax->U(32, VALUE(vui, vui_num_units_in_tick))
            .U(32, VALUE(vui, vui_time_scale))
            .U(1, VALUE(vui, vui_poc_proportional_to_timing_flag));
        if (vui.vui_poc_proportional_to_timing_flag)
            syntax->Ue(GOLOMB(vui, vui_num_ticks_poc_diff_one_minus1));
        syntax->U(1, VALUE(vui, vui_hrd_parameters_present_flag));
        if (vui.vui_hrd_parameters_present_flag) {
            syntax->Enter("Failed to set hrd parameters!\n");
            AddWrittenHrd(syntax, vui.nal_hrd, true, sps.sps_max_sub_layers_minus1);
            syntax->Leave();
        }
    }
    syntax->U(1, VALUE(vui, bitstream_restriction_flag));
    if (vui.bitstream_restriction_flag)
        syntax->U(1, VALUE(vui, tiles_fixed_structure_flag))
            .U(1, VALUE(vui, motion_vectors_over_pic_boundaries_flag))
            .U(1, VALUE(vui, restricted_ref_pic_lists_flag))
            .Ue(GOLOMB(vui, min_spatial_segmentation_idc))
            .Ue(GOLOMB(vui, max_bytes_per_pic_denom))
            .Ue(GOLOMB(vui, max_bits_per_min_cu_denom))
            .Ue(GOLOMB(vui, log2_max_mv_length_horizontal))
            .Ue(GOLOMB(vui, log2_max_mv_length_vertical));
}

bool Chance(Random *random) {
    return Below(random, 2) != 0;
}

uint64_t Below(Random *random, uint64_t end) {
    return (uint64_t{(*random)()} << 32 | (*random)()) % end;
}

void FillHrd(hrd_h265_t *hrd, int maxNumSubLayersMinus1, Random *random) {
    hrd->nal_hrd_parameters_present_flag = Chance(random);
    hrd->vcl_hrd_parameters_present_flag = Chance(random);
    if (hrd->nal_hrd_parameters_present_flag || hrd->vcl_hrd_parameters_present_flag) {
        hrd->sub_pic_hrd_params_present_flag = Chance(random);
        if (hrd->sub_pic_hrd_params_present_flag) {
            hrd->tick_divisor_minus2 = static_cast<unsigned char>(Bits(random, 8));
            hrd->du_cpb_removal_delay_increment_length_minus1 = static_cast<unsigned char>(Bits(random, 5));
            hrd->sub_pic_cpb_params_in_pic_timing_sei_flag = Chance(random);
            hrd->dpb_output_delay_du_length_minus1 = static_cast<unsigned char>(Bits(random, 5));
            hrd->cpb_size_du_scale = static_cast<unsigned char>(Bits(random, 4));
        }
        hrd->bit_rate_scale = static_cast<unsigned char>(Bits(random, 4));
        hrd->cpb_size_scale = static_cast<unsigned char>(Bits(random, 4));
        hrd->initial_cpb_removal_delay_length_minus1 = static_cast<unsigned char>(Bits(random, 5));
        hrd->au_cpb_removal_delay_length_minus1 = static_cast<unsigned char>(Bits(random, 5));
        hrd->dpb_output_delay_length_minus1 = static_cast<unsigned char>(Bits(random, 5));
    }
    for (int i = 0; i <= maxNumSubLayersMinus1; i++) {
        hrd->fixed_pic_rate_general_flag[i] = Chance(random);
        hrd->fixed_pic_rate_within_cvs_flag[i] = hrd->fixed_pic_rate_general_flag[i] || Chance(random);
        if (hrd->fixed_pic_rate_within_cvs_flag[i])
            hrd->elemental_duration_in_tc_minus1[i] = Golomb(random);
        else
            hrd->low_delay_hrd_flag[i] = Chance(random);
        if (!hrd->low_delay_hrd_flag[i])
            hrd->cpb_cnt_minus1[i] = Below(random, 3);
        if (hrd->nal_hrd_parameters_present_flag)
            FillCpbs(&hrd->s_l_nal_hrd_parameters[i], hrd->sub_pic_hrd_params_present_flag,
                     hrd->cpb_cnt_minus1[i], random);
        if (hrd->vcl_hrd_parameters_present_flag)
            FillCpbs(&hrd->s_l_vcl_hrd_parameters[i], hrd->sub_pic_hrd_params_present_flag,
                     hrd->cpb_cnt_minus1[i], random);
    }
}

void FillVui(vui_h265_t *vui, int sps_max_sub_layers_minus1, Random *random) {
    if ((vui->aspect_ratio_info_present_flag = Chance(random))) {
        vui->aspect_ratio_idc = Chance(random) ? 255 : static_cast<unsigned char>(Below(random, 255));
        if (vui->aspect_ratio_idc == 255) {
            vui->sar_width = static_cast<uint16_t>(Bits(random, 16));
            vui->sar_height = static_cast<uint16_t>(Bits(random, 16));
        }
    }
    if ((vui->overscan_info_present_flag = Chance(random)))
        vui->overscan_appropriate_flag = Chance(random);
    if ((vui->video_signal_type_present_flag = Chance(random))) {
        vui->video_format = static_cast<unsigned char>(Bits(random, 3));
        vui->video_full_range_flag = Chance(random);
        if ((vui->colour_description_present_flag = Chance(random))) {
            vui->colour_primaries = static_cast<unsigned char>(Bits(random, 8));
            vui->transfer_characteristics = static_cast<unsigned char>(Bits(random, 8));
            vui->matrix_coeffs = static_cast<unsigned char>(Bits(random, 8));
        }
    }
    if ((vui->chroma_loc_info_present_flag = Chance(random))) {
        vui->chroma_sample_loc_type_top_field = Golomb(random);
        vui->chroma_sample_loc_type_bottom_field = Golomb(random);
    }
    vui->neutral_chroma_indication_flag = Chance(random);
    vui->field_seq_flag = Chance(random);
    vui->frame_field_info_present_flag = Chance(random);
    if ((vui->default_display_window_flag = Chance(random))) {
        vui->def_disp_win_left_offset = Golomb(random);
        vui->def_disp_win_right_offset = Golomb(random);
        vui->def_disp_win_top_offset = Golomb(random);
        vui->def_disp_win_bottom_offset = Golomb(random);
    }
    if ((vui->vui_timing_info_present_flag = Chance(random))) {
        vui->vui_num_units_in_tick = Bits(random, 32) >> Below(random, 32);
        vui->vui_time_scale = Bits(random, 32) >> Below(random, 32);
        if ((vui->vui_poc_proportional_to_timing_flag = Chance(random)))
            vui->vui_num_ticks_poc_diff_one_minus1 = Golomb(random);
        if ((vui->vui_hrd_parameters_present_flag = Chance(random)))
            FillHrd(&vui->nal_hrd, sps_max_sub_layers_minus1, random);
    }
    if ((vui->bitstream_restriction_flag = Chance(random))) {
        vui->tiles_fixed_structure_flag = Chance(random);
        vui->motion_vectors_over_pic_boundaries_flag = Chance(random);
        vui->restricted_ref_pic_lists_flag = Chance(random);
        vui->min_spatial_segmentation_idc = Golomb(random);
        vui->max_bytes_per_pic_denom = Golomb(random);
        vui->max_bits_per_min_cu_denom = Golomb(random);
        vui->log2_max_mv_length_horizontal = Golomb(random);
        vui->log2_max_mv_length_vertical = Golomb(random);
    }
}

}  // namespace test
