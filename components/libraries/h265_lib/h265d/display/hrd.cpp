#include "h265d/display/show.h"
#include "h265d/display/sub_structures.h"

namespace {

constexpr int kLevel = kInformation;

}  // namespace

void _display_sub_layer_hrd_parameters(const sub_layer_hrd_parameters_t *slhp,
                                       int sub_pic_hrd_params_present_flag, int cpb_cnt_minus1) {
    ASSERT_ARGUMENT(slhp != NULL);
    if (slhp == nullptr)
        return;
    TRACE(kFunction, "Called. cpb_cnt_minus1=%d\n", cpb_cnt_minus1);
    for (int i = 0; i <= cpb_cnt_minus1 && i < H265_HRD_CPB_COUNT; i++) {
        SHOW_U(slhp, bit_rate_value_minus1, i);
        SHOW_U(slhp, cpb_size_value_minus1, i);
        if (sub_pic_hrd_params_present_flag) {
            SHOW_U(slhp, cpb_size_du_value_minus1, i);
            SHOW_U(slhp, bit_rate_du_value_minus1, i);
        }
        SHOW_U(slhp, cbr_flag, i);
    }
    TRACE(kFunction, "Done.\n");
}

void _display_hrd(const hrd_h265_t *hrd, int commonInfPresentFlag, int MaxNumSubLayersMinus1) {
    ASSERT_ARGUMENT(hrd != NULL);
    if (hrd == nullptr)
        return;
    TRACE(kFunction, "Called.\n");
    if (commonInfPresentFlag) {
        SHOW_FLAG(hrd, nal_hrd_parameters_present_flag);
        SHOW_FLAG(hrd, vcl_hrd_parameters_present_flag);
        if (hrd->nal_hrd_parameters_present_flag || hrd->vcl_hrd_parameters_present_flag) {
            SHOW_FLAG(hrd, sub_pic_hrd_params_present_flag);
            if (hrd->sub_pic_hrd_params_present_flag) {
                SHOW_U(hrd, tick_divisor_minus2);
                SHOW_U(hrd, du_cpb_removal_delay_increment_length_minus1);
                SHOW_FLAG(hrd, sub_pic_cpb_params_in_pic_timing_sei_flag);
                SHOW_U(hrd, dpb_output_delay_du_length_minus1);
            }
            SHOW_U(hrd, bit_rate_scale);
            SHOW_U(hrd, cpb_size_scale);
            if (hrd->sub_pic_hrd_params_present_flag)
                SHOW_U(hrd, cpb_size_du_scale);
            SHOW_U(hrd, initial_cpb_removal_delay_length_minus1);
            SHOW_U(hrd, au_cpb_removal_delay_length_minus1);
            SHOW_U(hrd, dpb_output_delay_length_minus1);
        }
    }
    for (int i = 0; i <= MaxNumSubLayersMinus1 && i < H265_HRD_SUB_LAYERS; i++) {
        SHOW_FLAG(hrd, fixed_pic_rate_general_flag, i);
        if (!hrd->fixed_pic_rate_general_flag[i])
            SHOW_FLAG(hrd, fixed_pic_rate_within_cvs_flag, i);
        if (hrd->fixed_pic_rate_within_cvs_flag[i])
            SHOW_U(hrd, elemental_duration_in_tc_minus1, i);
        else
            SHOW_FLAG(hrd, low_delay_hrd_flag, i);
        if (!hrd->low_delay_hrd_flag[i])
            SHOW_U(hrd, cpb_cnt_minus1, i);
        if (hrd->nal_hrd_parameters_present_flag)
            _display_sub_layer_hrd_parameters(&hrd->s_l_nal_hrd_parameters[i],
                                              hrd->sub_pic_hrd_params_present_flag,
                                              AS_D(hrd->cpb_cnt_minus1[i]));
        if (hrd->vcl_hrd_parameters_present_flag)
            _display_sub_layer_hrd_parameters(&hrd->s_l_vcl_hrd_parameters[i],
                                              hrd->sub_pic_hrd_params_present_flag,
                                              AS_D(hrd->cpb_cnt_minus1[i]));
    }
    TRACE(kFunction, "Done.\n");
}
