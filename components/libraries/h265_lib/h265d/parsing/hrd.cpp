#include "h265d/parsing/hrd.h"

#include "common/read.h"

int _parse_hrd(bitbuffer_t *sps_nalu_bb, int commonInfPresentFlag, int MaxNumSubLayersMinus1,
               int *pCpbDpbDelaysPresentFlag, hrd_h265_t *pHrd) {
    ASSERT_ARGUMENT(sps_nalu_bb != NULL);
    ASSERT_ARGUMENT(pCpbDpbDelaysPresentFlag != NULL);
    ASSERT_ARGUMENT(pHrd != NULL);
    if (sps_nalu_bb == nullptr || pCpbDpbDelaysPresentFlag == nullptr || pHrd == nullptr ||
        MaxNumSubLayersMinus1 >= H265_HRD_SUB_LAYERS)
        return -1;
    TRACE(kFunction, "Called. MaxNumSubLayersMinus1=%d\n", MaxNumSubLayersMinus1);

    BitReader bb(sps_nalu_bb);
    *pCpbDpbDelaysPresentFlag = 0;
    if (commonInfPresentFlag) {
        READ_FLAG(bb, pHrd, nal_hrd_parameters_present_flag);
        READ_FLAG(bb, pHrd, vcl_hrd_parameters_present_flag);
        if (pHrd->nal_hrd_parameters_present_flag || pHrd->vcl_hrd_parameters_present_flag) {
            *pCpbDpbDelaysPresentFlag = 1;
            READ_FLAG(bb, pHrd, sub_pic_hrd_params_present_flag);
            if (pHrd->sub_pic_hrd_params_present_flag) {
                READ_U(bb, 8, pHrd, tick_divisor_minus2);
                READ_U(bb, 5, pHrd, du_cpb_removal_delay_increment_length_minus1);
                READ_FLAG(bb, pHrd, sub_pic_cpb_params_in_pic_timing_sei_flag);
                READ_U(bb, 5, pHrd, dpb_output_delay_du_length_minus1);
            }
            READ_U(bb, 4, pHrd, bit_rate_scale);
            READ_U(bb, 4, pHrd, cpb_size_scale);
            if (pHrd->sub_pic_hrd_params_present_flag)
                READ_U(bb, 4, pHrd, cpb_size_du_scale);
            READ_U(bb, 5, pHrd, initial_cpb_removal_delay_length_minus1);
            READ_U(bb, 5, pHrd, au_cpb_removal_delay_length_minus1);
            READ_U(bb, 5, pHrd, dpb_output_delay_length_minus1);
        }
    }
    for (int i = 0; i <= MaxNumSubLayersMinus1; i++) {
        READ_FLAG(bb, pHrd, fixed_pic_rate_general_flag, i);
        if (pHrd->fixed_pic_rate_general_flag[i])
            pHrd->fixed_pic_rate_within_cvs_flag[i] = 1;
        else
            READ_FLAG(bb, pHrd, fixed_pic_rate_within_cvs_flag, i);
        if (pHrd->fixed_pic_rate_within_cvs_flag[i])
            READ_UE(bb, pHrd, elemental_duration_in_tc_minus1, i);
        else
            READ_FLAG(bb, pHrd, low_delay_hrd_flag, i);
        // where the flag was not read, the record's own value decides
        if (pHrd->low_delay_hrd_flag[i])
            pHrd->cpb_cnt_minus1[i] = 0;
        else
            READ_UE_MAX(bb, H265_HRD_CPB_COUNT - 1, pHrd, cpb_cnt_minus1, i);
        const int cpb_cnt_minus1 = static_cast<int>(pHrd->cpb_cnt_minus1[i]);
        if (pHrd->nal_hrd_parameters_present_flag)
            READ_STRUCTURE(_parse_sub_layer_hrd_parameters(bb.Lend(), pHrd->sub_pic_hrd_params_present_flag,
                                                           cpb_cnt_minus1, &pHrd->s_l_nal_hrd_parameters[i]),
                           "cannot parse sub_layer_hrd_parameters.\n");
        if (pHrd->vcl_hrd_parameters_present_flag)
            READ_STRUCTURE(_parse_sub_layer_hrd_parameters(bb.Lend(), pHrd->sub_pic_hrd_params_present_flag,
                                                           cpb_cnt_minus1, &pHrd->s_l_vcl_hrd_parameters[i]),
                           "cannot parse sub_layer_hrd_parameters.\n");
    }
    TRACE(kFunction, "Done.\n");
    return 0;
}

int _parse_sub_layer_hrd_parameters(bitbuffer_t *sps_nalu_bb, int sub_pic_hrd_params_present_flag,
                                    int cpb_cnt_minus1, sub_layer_hrd_parameters_t *slhp) {
    ASSERT_ARGUMENT(sps_nalu_bb != NULL);
    ASSERT_ARGUMENT(slhp != NULL);
    if (sps_nalu_bb == nullptr || slhp == nullptr || cpb_cnt_minus1 >= H265_HRD_CPB_COUNT)
        return -1;
    TRACE(kFunction, "Called. cpb_cnt_minus1=%d\n", cpb_cnt_minus1);

    BitReader bb(sps_nalu_bb);
    for (int i = 0; i <= cpb_cnt_minus1; i++) {
        READ_UE(bb, slhp, bit_rate_value_minus1, i);
        READ_UE(bb, slhp, cpb_size_value_minus1, i);
        if (sub_pic_hrd_params_present_flag) {
            READ_UE(bb, slhp, cpb_size_du_value_minus1, i);
            READ_UE(bb, slhp, bit_rate_du_value_minus1, i);
        }
        READ_FLAG(bb, slhp, cbr_flag, i);
    }
    TRACE(kFunction, "Done.\n");
    return 0;
}
