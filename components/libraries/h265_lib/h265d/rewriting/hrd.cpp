#include "h265d/rewriting/hrd.h"

#include <algorithm>
#include <climits>

#include "common/write.h"

int _set_hrd_parameters(bitbuffer_t *sps_nalu_bb, int commonInfPresentFlag, int MaxNumSubLayersMinus1,
                        const hrd_h265_t *pHrd) {
    ASSERT_ARGUMENT(sps_nalu_bb != NULL);
    ASSERT_ARGUMENT(pHrd != NULL);
    if (sps_nalu_bb == nullptr || pHrd == nullptr)
        return -1;
    TRACE(kFunction, "Called. commonInfPresentFlag:%d, MaxNumSubLayersMinus1=%d\n", commonInfPresentFlag,
          MaxNumSubLayersMinus1);

    BitWriter bb(sps_nalu_bb);
    if (commonInfPresentFlag) {
        SET_FLAG_AS(bb, pHrd->nal_hrd_parameters_present_flag,
                    "Failed to set nal_hrd_parameters_present_flag:%d.\n",
                    pHrd->nal_hrd_parameters_present_flag);
        SET_FLAG(bb, pHrd, vcl_hrd_parameters_present_flag);
        if (pHrd->nal_hrd_parameters_present_flag || pHrd->vcl_hrd_parameters_present_flag) {
            SET_FLAG(bb, pHrd, sub_pic_hrd_params_present_flag);
            if (pHrd->sub_pic_hrd_params_present_flag) {
                SET_U(bb, 8, pHrd, tick_divisor_minus2);
                SET_U(bb, 5, pHrd, du_cpb_removal_delay_increment_length_minus1);
                SET_FLAG(bb, pHrd, sub_pic_cpb_params_in_pic_timing_sei_flag);
                SET_U(bb, 5, pHrd, dpb_output_delay_du_length_minus1);
            }
            SET_U(bb, 4, pHrd, bit_rate_scale);
            SET_U(bb, 4, pHrd, cpb_size_scale);
            if (pHrd->sub_pic_hrd_params_present_flag)
                SET_U(bb, 4, pHrd, cpb_size_du_scale);
            SET_U(bb, 5, pHrd, initial_cpb_removal_delay_length_minus1);
            SET_U(bb, 5, pHrd, au_cpb_removal_delay_length_minus1);
            SET_U(bb, 5, pHrd, dpb_output_delay_length_minus1);
        }
    }
    for (int i = 0; i <= MaxNumSubLayersMinus1; i++) {
        if (i >= H265_HRD_SUB_LAYERS) {
            ReportUnwritable(TRACE_SITE, "fixed_pic_rate_general_flag", i);
            return -1;
        }
        SET_FLAG(bb, pHrd, fixed_pic_rate_general_flag, i);
        if (!pHrd->fixed_pic_rate_general_flag[i])
            SET_FLAG(bb, pHrd, fixed_pic_rate_within_cvs_flag, i);
        if (pHrd->fixed_pic_rate_within_cvs_flag[i])
            SET_UE(bb, pHrd, elemental_duration_in_tc_minus1, i);
        else
            SET_FLAG(bb, pHrd, low_delay_hrd_flag, i);
        if (!pHrd->low_delay_hrd_flag[i])
            SET_UE(bb, pHrd, cpb_cnt_minus1, i);
        const int cpb_cnt_minus1 =
            static_cast<int>(std::min<uint32_t>(static_cast<uint32_t>(pHrd->cpb_cnt_minus1[i]), INT_MAX));
        if (pHrd->nal_hrd_parameters_present_flag)
            SET_STRUCTURE(_set_sub_layer_hrd_parameters(bb.Lend(), pHrd->sub_pic_hrd_params_present_flag,
                                                        cpb_cnt_minus1, &pHrd->s_l_nal_hrd_parameters[i]),
                          "Failed to set sub_layer_hrd_parameters[%d].\n", i);
        if (pHrd->vcl_hrd_parameters_present_flag)
            SET_STRUCTURE(_set_sub_layer_hrd_parameters(bb.Lend(), pHrd->sub_pic_hrd_params_present_flag,
                                                        cpb_cnt_minus1, &pHrd->s_l_vcl_hrd_parameters[i]),
                          "Failed to set sub_layer_hrd_parameters[%d].\n", i);
    }
    TRACE(kFunction, "Done.\n");
    return 0;
}

int _set_sub_layer_hrd_parameters(bitbuffer_t *sps_nalu_bb, int sub_pic_hrd_params_present_flag,
                                  int cpb_cnt_minus1, const sub_layer_hrd_parameters_t *slhp) {
    ASSERT_ARGUMENT(sps_nalu_bb != NULL);
    ASSERT_ARGUMENT(slhp != NULL);
    if (sps_nalu_bb == nullptr || slhp == nullptr)
        return -1;
    TRACE(kFunction, "Called. cpb_cnt_minus1=%d\n", cpb_cnt_minus1);

    BitWriter bb(sps_nalu_bb);
    for (int i = 0; i <= cpb_cnt_minus1; i++) {
        if (i >= H265_HRD_CPB_COUNT) {
            ReportUnwritable(TRACE_SITE, "bit_rate_value_minus1", i);
            return -1;
        }
        SET_UE(bb, slhp, bit_rate_value_minus1, i);
        SET_UE(bb, slhp, cpb_size_value_minus1, i);
        if (sub_pic_hrd_params_present_flag) {
            SET_UE(bb, slhp, cpb_size_du_value_minus1, i);
            SET_UE(bb, slhp, bit_rate_du_value_minus1, i);
        }
        SET_FLAG(bb, slhp, cbr_flag, i);
    }
    TRACE(kFunction, "Done.\n");
    return 0;
}
