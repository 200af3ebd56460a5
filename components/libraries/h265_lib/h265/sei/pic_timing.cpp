#include "h265/sei/pic_timing.h"

#include <algorithm>
#include <climits>

#include "common/write.h"
#include "h265/sei/message_writer.h"
#include "h265/sei/sei_nal_unit.h"

namespace {

constexpr int PIC_TIMING = 1;  // payload type
constexpr int PIC_TIMING_SODB_SIZE = 32;
constexpr UINT MIN_PICTIMING_SEI_NAL_LENGTH = 32;

constexpr unsigned int MAX_LENGTH = 32;  // bits of a delay

}  // namespace

int _set_pictiming_elements(bitbuffer_t *pictiming_bb, int PicTimingSodbLength, const vui_h265_t *pVui,
                            const sei_h265_pic_timing_t *pPt) {
    ASSERT_ARGUMENT(pictiming_bb != NULL);
    ASSERT_ARGUMENT(PicTimingSodbLength > 0);
    ASSERT_ARGUMENT(pVui != NULL);
    ASSERT_ARGUMENT(pPt != NULL);
    if (pictiming_bb == nullptr || pVui == nullptr || pPt == nullptr)
        return -1;

    unsigned int size_position = 0;
    if (BeginSeiMessage(TRACE_SITE, pictiming_bb, PIC_TIMING, &size_position) == -1)
        return -1;
    BitWriter bb(pictiming_bb);
    // these three whatever frame_field_info_present_flag says
    SET_U_AS(bb, 4, pPt->pic_struct, "Failed to set pic_struct:%d.\n", pPt->pic_struct);
    SET_U_AS(bb, 2, pPt->source_scan_type, "Failed to set source_scan_type:%d.\n", pPt->source_scan_type);
    // reported under the name of its neighbour
    SET_FLAG_AS(bb, pPt->duplicate_flag, "Failed to set source_scan_type:%d.\n", pPt->duplicate_flag);

    const hrd_h265_t &hrd = pVui->nal_hrd;
    const bool CpbDpbDelaysPresentFlag =
        hrd.nal_hrd_parameters_present_flag || hrd.vcl_hrd_parameters_present_flag;
    if (CpbDpbDelaysPresentFlag) {
        const unsigned int au_cpb_removal_delay_length = hrd.au_cpb_removal_delay_length_minus1 + 1U;
        if (au_cpb_removal_delay_length <= MAX_LENGTH)
            SET_U_AS(bb, au_cpb_removal_delay_length, pPt->au_cpb_removal_delay_minus1,
                     "Failed to set au_cpb_removal_delay_minus1.\n");
        else
            TEXT_ASSERTION("Syntax Element \"au_cpb_removal_delay_length_minus1\" is longer than expected");
        const unsigned int dpb_output_delay_length = hrd.dpb_output_delay_length_minus1 + 1U;
        if (dpb_output_delay_length <= MAX_LENGTH)
            SET_U_AS(bb, dpb_output_delay_length, pPt->pic_dpb_output_delay,
                     "Failed to set dpb_output_delay.\n");
        else
            TEXT_ASSERTION("Syntax Element \"dpb_output_delay_length_minus1\" is longer than expected");
    }
    // decoding units are not supported: the message is then shorter than H.265 has it
    if (hrd.sub_pic_hrd_params_present_flag && hrd.sub_pic_cpb_params_in_pic_timing_sei_flag)
        REPORT_ASSERTION("0");

    if (EndSeiMessage(TRACE_SITE, bb.Lend(), size_position) == -1)
        return -1;
    DisplayBitBuffer(pictiming_bb, "FINAL PICTIMING SEI");
    const int bytes = BytesWritten(*pictiming_bb);
    TRACE(kFunction, "Final sei pictiming num_bits:%d, Bytes:%d.\n", bb.offset(), bytes);
    return bytes;
}

BOOL H265Lib_format_sei_pictiming_nal(unsigned char *pBuffer, UINT *pBufferLen, const vui_h265_t *pVui,
                                      const sei_h265_pic_timing_t *pPt) {
    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(pBufferLen != NULL);
    if (pBufferLen != nullptr)
        ASSERT_ARGUMENT(*pBufferLen >= MIN_PICTIMING_SEI_NAL_LENGTH);
    ASSERT_ARGUMENT(pVui != NULL);
    ASSERT_ARGUMENT(pPt != NULL);
    if (pBuffer == nullptr || pBufferLen == nullptr || pVui == nullptr || pPt == nullptr)
        return FALSE;

    unsigned char sodb[PIC_TIMING_SODB_SIZE] = {};
    bitbuffer_t bb;
    if (__DoInitBitBuffer(&bb, sodb, PIC_TIMING_SODB_SIZE * 8, __func__, __FILE_NAME__, __LINE__) != 0) {
        TRACE(kError, "Failed to init Bitbuffer.\n");
        return FALSE;
    }
    const int sodb_length = _set_pictiming_elements(&bb, PIC_TIMING_SODB_SIZE, pVui, pPt);
    const int capacity = static_cast<int>(std::min<UINT>(*pBufferLen, INT_MAX));
    const int encapsulated = EncapsulateSei(sodb, sodb_length, pBuffer, capacity);
    if (encapsulated == 0) {
        TRACE(kWarning, "SEI pictiming RBSP Encapsulation failed!\n");
        return FALSE;
    }
    *pBufferLen = static_cast<UINT>(encapsulated + kSeiNalPrefixSize);
    return TRUE;
}
