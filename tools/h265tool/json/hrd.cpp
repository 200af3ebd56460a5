#include "json/put.h"

namespace h265tool {
namespace {

// sub_layer_hrd_parameters( ), clause E.2.3.
Json ToJson(const sub_layer_hrd_parameters_t &sub_layer, bool sub_pic_hrd_params_present_flag,
            int cpb_cnt_minus1) {
    Json json;
    for (int i = 0; i <= cpb_cnt_minus1; i++) {
        PUT(json, sub_layer, bit_rate_value_minus1, i);
        PUT(json, sub_layer, cpb_size_value_minus1, i);
        if (sub_pic_hrd_params_present_flag) {
            PUT(json, sub_layer, cpb_size_du_value_minus1, i);
            PUT(json, sub_layer, bit_rate_du_value_minus1, i);
        }
        PUT(json, sub_layer, cbr_flag, i);
    }
    return json;
}

void PutCommonPart(const hrd_h265_t &hrd, Json *json) {
    PUT(*json, hrd, nal_hrd_parameters_present_flag);
    PUT(*json, hrd, vcl_hrd_parameters_present_flag);
    if (!hrd.nal_hrd_parameters_present_flag && !hrd.vcl_hrd_parameters_present_flag)
        return;
    PUT(*json, hrd, sub_pic_hrd_params_present_flag);
    if (hrd.sub_pic_hrd_params_present_flag) {
        PUT(*json, hrd, tick_divisor_minus2);
        PUT(*json, hrd, du_cpb_removal_delay_increment_length_minus1);
        PUT(*json, hrd, sub_pic_cpb_params_in_pic_timing_sei_flag);
        PUT(*json, hrd, dpb_output_delay_du_length_minus1);
    }
    PUT(*json, hrd, bit_rate_scale);
    PUT(*json, hrd, cpb_size_scale);
    if (hrd.sub_pic_hrd_params_present_flag)
        PUT(*json, hrd, cpb_size_du_scale);
    PUT(*json, hrd, initial_cpb_removal_delay_length_minus1);
    PUT(*json, hrd, au_cpb_removal_delay_length_minus1);
    PUT(*json, hrd, dpb_output_delay_length_minus1);
}

}  // namespace

// hrd_parameters( commonInfPresentFlag, maxNumSubLayersMinus1 ), clause E.2.2.
Json ToJson(const hrd_h265_t &hrd, bool common_inf_present, int max_sub_layers_minus1) {
    Json json;
    if (common_inf_present)
        PutCommonPart(hrd, &json);
    for (int i = 0; i <= max_sub_layers_minus1; i++) {
        PUT(json, hrd, fixed_pic_rate_general_flag, i);
        if (!hrd.fixed_pic_rate_general_flag[i])
            PUT(json, hrd, fixed_pic_rate_within_cvs_flag, i);
        if (hrd.fixed_pic_rate_within_cvs_flag[i])
            PUT(json, hrd, elemental_duration_in_tc_minus1, i);
        else
            PUT(json, hrd, low_delay_hrd_flag, i);
        if (!hrd.low_delay_hrd_flag[i])
            PUT(json, hrd, cpb_cnt_minus1, i);
        const auto index = static_cast<size_t>(i);
        const int cpb_cnt_minus1 = static_cast<int>(hrd.cpb_cnt_minus1[i]);
        const bool sub_pic = hrd.sub_pic_hrd_params_present_flag != 0;
        if (hrd.nal_hrd_parameters_present_flag)
            json["s_l_nal_hrd_parameters"][index] =
                ToJson(hrd.s_l_nal_hrd_parameters[i], sub_pic, cpb_cnt_minus1);
        if (hrd.vcl_hrd_parameters_present_flag)
            json["s_l_vcl_hrd_parameters"][index] =
                ToJson(hrd.s_l_vcl_hrd_parameters[i], sub_pic, cpb_cnt_minus1);
    }
    return json;
}

}  // namespace h265tool
