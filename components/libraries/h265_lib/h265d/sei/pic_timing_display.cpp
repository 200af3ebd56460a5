// Printing a picture timing message.

#include "common/trace.h"

void H265Lib_Display_sei_pictiming(const sei_h265_pic_timing_t *pPt, const vui_h265_t *pVui) {
    ASSERT_ARGUMENT(pPt != NULL);
    if (pPt == nullptr || pVui == nullptr)
        return;
    const hrd_h265_t &hrd = pVui->nal_hrd;
    const auto value = [](UINT64 number) { return static_cast<unsigned int>(number); };

    TRACE(kDisplay, "SEI pictiming structure:\n");
    TRACE(kDisplay, "++++++++++++++++++++++++\n");
    TRACE(kDisplay, "pic_struct=%u.\n", pPt->pic_struct);
    TRACE(kDisplay, "source_scan_type=%u.\n", pPt->source_scan_type);
    TRACE(kDisplay, "duplicate_flag=%u.\n", pPt->duplicate_flag);
    if (pVui->CpbDpbDelaysPresentFlag) {
        TRACE(kDisplay, "au_cpb_removal_delay_minus1=%u.\n", value(pPt->au_cpb_removal_delay_minus1));
        TRACE(kDisplay, "pic_dpb_output_delay=%u.\n", value(pPt->pic_dpb_output_delay));
        if (hrd.sub_pic_hrd_params_present_flag)
            TRACE(kDisplay, "pic_dpb_output_du_delay=%u.\n", value(pPt->pic_dpb_output_du_delay));
    }
    if (hrd.sub_pic_hrd_params_present_flag && hrd.sub_pic_cpb_params_in_pic_timing_sei_flag) {
        TRACE(kDisplay, "num_decoding_units_minus1=%u.\n", value(pPt->num_decoding_units_minus1));
        TRACE(kDisplay, "du_common_cpb_removal_delay_flag=%u.\n", pPt->du_common_cpb_removal_delay_flag);
        if (pPt->du_common_cpb_removal_delay_flag)
            TRACE(kDisplay, "du_common_cpb_removal_delay_increment_minus1=%u.\n",
                  value(pPt->du_common_cpb_removal_delay_increment_minus1));
        for (int i = 0;
             i < H265_PIC_TIMING_DECODING_UNITS && static_cast<UINT64>(i) <= pPt->num_decoding_units_minus1;
             i++) {
            TRACE(kDisplay, "num_nalus_in_du_minus1[%d]=%u.\n", i, value(pPt->num_nalus_in_du_minus1[i]));
            if (!pPt->du_common_cpb_removal_delay_flag &&
                static_cast<UINT64>(i) < pPt->num_decoding_units_minus1)
                TRACE(kDisplay, "du_cpb_removal_delay_increment_minus1[%d]=%u.\n", i,
                      value(pPt->du_cpb_removal_delay_increment_minus1[i]));
        }
    }
    TRACE(kDisplay, "+++++++++++++++++++++++++++++\n");
}
