#include "h265d/sei/pic_timing.h"

#include <cstdlib>

#define READ_FAILURE FALSE
#include "common/read.h"
#include "h265d/framing/parse_frame.h"
#include "h265d/sei/payload.h"

BOOL _parse_sei_pic_timing(bitbuffer_t *pSeiPicTimingBb, const SEI_message_t *pMsgHeader,
                           const vui_h265_t *pVui, sei_h265_pic_timing_t *pPt) {
    ASSERT_ARGUMENT(pSeiPicTimingBb != NULL);
    ASSERT_ARGUMENT(pMsgHeader != NULL);
    ASSERT_ARGUMENT(pVui != NULL);
    ASSERT_ARGUMENT(pPt != NULL);
    if (pSeiPicTimingBb == nullptr || pMsgHeader == nullptr || pVui == nullptr || pPt == nullptr)
        return FALSE;
    TRACE(kFunction, "Advancing to Payload index:%d, Payload_type:%#x, Payload_size:%#x.\n",
          pMsgHeader->payload_index, pMsgHeader->payload_type, pMsgHeader->payload_size);
    AdvanceToPayload(pSeiPicTimingBb, pMsgHeader->payload_index);
    BitReader bb(pSeiPicTimingBb);

    if (pVui->frame_field_info_present_flag) {
        READ_U(bb, 4, pPt, pic_struct);
        READ_U(bb, 2, pPt, source_scan_type);
        READ_FLAG(bb, pPt, duplicate_flag);
    }
    if (!pVui->CpbDpbDelaysPresentFlag)
        return TRUE;
    const hrd_h265_t &hrd = pVui->nal_hrd;  // the VCL HRD is never consulted
    READ_V_AS(bb, hrd.au_cpb_removal_delay_length_minus1 + 1U, pPt->au_cpb_removal_delay_minus1,
              "cannot parse au_cpb_removal_delay_minus1.\n");
    READ_V_AS(bb, hrd.dpb_output_delay_length_minus1 + 1U, pPt->pic_dpb_output_delay,
              "cannot parse dpb_output_delay.\n");
    if (hrd.sub_pic_hrd_params_present_flag)
        READ_V_AS(bb, hrd.dpb_output_delay_du_length_minus1 + 1U, pPt->pic_dpb_output_du_delay,
                  "cannot parse pic_dpb_output_du_delay.\n");
    if (!hrd.sub_pic_hrd_params_present_flag || !hrd.sub_pic_cpb_params_in_pic_timing_sei_flag)
        return TRUE;

    const UINT64 increment_length = hrd.du_cpb_removal_delay_increment_length_minus1 + 1U;
    READ_UE(bb, pPt, num_decoding_units_minus1);
    READ_FLAG(bb, pPt, du_common_cpb_removal_delay_flag);
    if (pPt->du_common_cpb_removal_delay_flag)
        // reported under the name of an element before it
        READ_V_AS(bb, increment_length, pPt->du_common_cpb_removal_delay_increment_minus1,
                  "cannot parse dpb_output_delay.\n");
    for (UINT64 i = 0; i <= pPt->num_decoding_units_minus1; i++) {
        UINT64 num_nalus_in_du_minus1 = 0;
        // names the count instead of the array
        READ_UE_AS(bb, num_nalus_in_du_minus1, "cannot parse num_decoding_units_minus1[%d].\n",
                   static_cast<int>(i));
        if (i >= H265_PIC_TIMING_DECODING_UNITS) {
            TRACE(kError, "cannot store more than %d num_decoding_units_minus1.\n",
                  H265_PIC_TIMING_DECODING_UNITS);
            return TRUE;
        }
        pPt->num_nalus_in_du_minus1[i] = num_nalus_in_du_minus1;
        if (!pPt->du_common_cpb_removal_delay_flag && i < pPt->num_decoding_units_minus1)
            READ_V_AS(bb, increment_length, pPt->du_cpb_removal_delay_increment_minus1[i],
                      "cannot parse du_cpb_removal_delay_increment_minus1[%d].\n", static_cast<int>(i));
    }
    return TRUE;
}

BOOL H265Lib_Parse_sei_pictiming_nal(const unsigned char *pBuffer, int BufferLen,
                                     const SEI_message_t *pMsgHeader, const vui_h265_t *pVUI,
                                     sei_h265_pic_timing_t *pPt) {
    static constexpr ParseFrameTexts kTexts = {TRACE_SITE, kCapitalBufferLenTooSmall,
                                               "Failed to parse_sei_pictiming_nal! buffer:%p.\n",
                                               kNoSodbFromNal};

    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(pMsgHeader != NULL);
    ASSERT_ARGUMENT(pVUI != NULL);
    ASSERT_ARGUMENT(pPt != NULL);

    unsigned char *pNalSodbBuffer = nullptr;
    bitbuffer_t bb;
    if (!OpenSodbOnHeap({pBuffer, BufferLen}, kTexts, kNoMemoryForNalSodbBuffer, &pNalSodbBuffer, &bb))
        return FALSE;
    const BOOL parsed = _parse_sei_pic_timing(&bb, pMsgHeader, pVUI, pPt);
    std::free(pNalSodbBuffer);
    if (!parsed)
        TRACE(kError, "Failed to parse sei pic_timing.\n");
    return parsed;
}
