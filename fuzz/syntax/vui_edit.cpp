#include "syntax/vui_edit.h"

namespace fuzz {
namespace {

void EditHrd(FuzzInput *input, hrd_h265_t *hrd) {
    hrd->nal_hrd_parameters_present_flag = input->Flag();
    hrd->vcl_hrd_parameters_present_flag = input->Flag();
    hrd->sub_pic_hrd_params_present_flag = input->Flag();
    hrd->tick_divisor_minus2 = input->Byte();
    hrd->bit_rate_scale = static_cast<unsigned char>(input->Below(16));
    hrd->au_cpb_removal_delay_length_minus1 = static_cast<unsigned char>(input->Below(32));
    hrd->dpb_output_delay_length_minus1 = static_cast<unsigned char>(input->Below(32));
    const uint32_t i = input->Below(H265_HRD_SUB_LAYERS);
    hrd->fixed_pic_rate_general_flag[i] = input->Flag();
    hrd->fixed_pic_rate_within_cvs_flag[i] = hrd->fixed_pic_rate_general_flag[i] != 0 || input->Flag();
    hrd->elemental_duration_in_tc_minus1[i] = input->Number();
    hrd->low_delay_hrd_flag[i] = hrd->fixed_pic_rate_within_cvs_flag[i] == 0 && input->Flag();
    hrd->cpb_cnt_minus1[i] = hrd->low_delay_hrd_flag[i] != 0 ? 0 : input->Below(H265_HRD_CPB_COUNT);
    const uint32_t cpb = input->Below(H265_HRD_CPB_COUNT);
    hrd->s_l_nal_hrd_parameters[i].bit_rate_value_minus1[cpb] = input->Number();
    hrd->s_l_vcl_hrd_parameters[i].cpb_size_value_minus1[cpb] = input->Number();
    hrd->s_l_vcl_hrd_parameters[i].cbr_flag[cpb] = input->Flag();
}

void EditTiming(FuzzInput *input, vui_h265_t *vui) {
    vui->vui_timing_info_present_flag = input->Flag();
    vui->vui_num_units_in_tick = input->Bits(32);
    vui->vui_time_scale = input->Bits(32);
    vui->vui_poc_proportional_to_timing_flag = input->Flag();
    vui->vui_num_ticks_poc_diff_one_minus1 = input->Number();
    vui->vui_hrd_parameters_present_flag = input->Flag();
}

void EditPicture(FuzzInput *input, vui_h265_t *vui) {
    vui->aspect_ratio_info_present_flag = input->Flag();
    vui->aspect_ratio_idc = input->Flag() ? uint8_t{IH265ENC_ASPECTRATIO_EXTENDED} : input->Byte();
    vui->sar_width = static_cast<uint16_t>(input->Bits(16));
    vui->sar_height = static_cast<uint16_t>(input->Bits(16));
    vui->video_signal_type_present_flag = input->Flag();
    vui->video_format = static_cast<unsigned char>(input->Below(8));
    vui->colour_description_present_flag = input->Flag();
    vui->matrix_coeffs = input->Byte();
    vui->field_seq_flag = input->Flag();
    vui->frame_field_info_present_flag = input->Flag();
    vui->default_display_window_flag = input->Flag();
    vui->def_disp_win_bottom_offset = input->Number();
}

}  // namespace

void EditVui(FuzzInput *input, vui_h265_t *vui) {
    const uint8_t what = input->Byte();
    if ((what & 1) != 0)
        EditPicture(input, vui);
    if ((what & 2) != 0)
        EditTiming(input, vui);
    if ((what & 4) != 0)
        EditHrd(input, &vui->nal_hrd);
    if ((what & 8) != 0) {
        vui->bitstream_restriction_flag = input->Flag();
        vui->log2_max_mv_length_vertical = input->Number();
    }
}

void DeriveVui(vui_h265_t *vui) {
    if (!vui->vui_timing_info_present_flag)
        return;
    hrd_h265_t &hrd = vui->nal_hrd;
    if (vui->vui_hrd_parameters_present_flag) {
        vui->CpbDpbDelaysPresentFlag =
            hrd.nal_hrd_parameters_present_flag != 0 || hrd.vcl_hrd_parameters_present_flag != 0;
        return;
    }
    vui->CpbDpbDelaysPresentFlag = 0;
    hrd.au_cpb_removal_delay_length_minus1 = 23;
    hrd.dpb_output_delay_length_minus1 = 23;
    hrd.dpb_output_delay_du_length_minus1 = 0;
    hrd.du_cpb_removal_delay_increment_length_minus1 = 0;
}

}  // namespace fuzz
