#include "h265d/rewriting/pic_timing.h"

#include <algorithm>
#include <climits>

#include "common/write.h"
#include "h265d/framing/nal_type_offset.h"
#include "h265d/sei/payload.h"
#include "h265d/sei/trailing_bits.h"

namespace {

constexpr unsigned int SEI_SODB_CAPACITY = 1512;

}  // namespace

int _modify_sei_pictiming_parameters(bitbuffer_t *sei_nalu_bb, int SEISodbLength, const vui_h265_t *pVUI,
                                     UINT PayloadIndex, const sei_h265_pic_timing_t *pPt) {
    bitbuffer_t *const bb = sei_nalu_bb;
    ASSERT_ARGUMENT(sei_nalu_bb != NULL);
    ASSERT_ARGUMENT(SEISodbLength > 0);
    ASSERT_ARGUMENT(pPt != NULL);
    ASSERT_ARGUMENT(pVUI != NULL);
    if (bb == nullptr || pPt == nullptr || pVUI == nullptr)
        return -1;
    TRACE(kFunction, "Called, sei_nalu_bb:%p, SEISodbLength:%d.\n", static_cast<void *>(bb), SEISodbLength);
    DisplayBitBuffer(bb, "ORIGINAL PICTIMING BUFFER.");
    AdvanceToPayload(bb, PayloadIndex);
    TRACE(kFunction, "Advancing to Payload index:%d.\n", PayloadIndex);
    if (!pVUI->frame_field_info_present_flag) {
        TEXT_ASSERTION("VUI frame_field_info_present_flag should be present.");
        TRACE(kFunction, "Done.\n");
        return -1;
    }
    SET_U(bb, 4, pPt, pic_struct);
    TRACE(kInformation, "Set pic_struct to:%d.\n", pPt->pic_struct);
    DisplayBitBuffer(bb, "FINAL pictiming SEI");
    const int bytes = BytesWritten(*bb);
    TRACE(kFunction, "Final pictiming SEI num_bits:%d, Bytes:%d.\n", bb->bit_offset, bytes);
    return bytes;
}

BOOL H265Lib_modify_pictiming_sei_NAL(unsigned char *pBuffer, UINT *pBufferLen, const vui_h265_t *pVUI,
                                      UINT PayloadIndex, const sei_h265_pic_timing_t *pPt) {
    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(pBufferLen != NULL);
    if (pBufferLen != nullptr)
        ASSERT_ARGUMENT(*pBufferLen >= 4);
    ASSERT_ARGUMENT(pVUI != NULL);
    ASSERT_ARGUMENT(pPt != NULL);
    if (pBufferLen == nullptr)
        return FALSE;

    const int length = static_cast<int>(std::min<UINT>(*pBufferLen, INT_MAX));
    int offset = 0;
    if (!_GetNALTypeOffset(pBuffer, length, &offset)) {
        TRACE(kError, "Failed to get NAL type offset from pBuffer:%p.\n", static_cast<void *>(pBuffer));
        return FALSE;
    }
    const int payload_start = offset + 2;
    TRACE(kInformation, "NALTypeOffset:%d, PayloadStartOffset:%d.\n", offset, payload_start);
    const TrailingBits trailing = FindTrailingBits(TRACE_SITE, pBuffer, length, offset);
    TRACE(kInformation,
          "Found StopBitPos:%d, StopBitOffsetFromEoNAL:%d, LastByte[%d]:%02X, NALLenWoRBSPTrailingBits:%d, "
          "NALTypeOffset:%d, BufferLength:%d.\n",
          trailing.StopBitPos, length - trailing.last - 1, trailing.last, pBuffer[trailing.last],
          trailing.length_without, offset, length);
    if (TraceLetsThrough(kFunction))
        _DoDbgPrintBuffer(g_hH265LibDbg, kFunction, pBuffer, *pBufferLen, "ORIGINAL SEI NAL", __func__,
                          __FILE_NAME__, __LINE__);

    unsigned char sodb[SEI_SODB_CAPACITY + 1];  // and the trailing bits
    int sodb_length = H265Lib_SODB_deencapsulation_from_NAL(
        pBuffer + offset, static_cast<unsigned int>(trailing.length_without), sodb, SEI_SODB_CAPACITY);
    if (sodb_length < 1) {
        TRACE(kError, "Failed to get SODB from RBSP. Output buffer is too small.\n");
        return FALSE;
    }
    bitbuffer_t bb;
    if (__DoInitBitBuffer(&bb, sodb, static_cast<unsigned int>(sodb_length) * 8, __func__, __FILE_NAME__,
                          __LINE__) != 0) {
        TRACE(kError, "Failed to init Bitbuffer.\n");
        return FALSE;
    }
    if (_modify_sei_pictiming_parameters(&bb, sodb_length, pVUI, PayloadIndex, pPt) < 0) {
        TRACE(kError, "Failed to set SEI pictiming parameters.\n");
        return FALSE;
    }
    if (trailing.StopBitPos == 8)
        sodb[sodb_length++] = pBuffer[trailing.last];
    const int encapsulated = RBSP_encapsulation_within_NAL_Ex(
        sodb, sodb_length, pBuffer + payload_start, length - payload_start, RBSP_ENCAPSULATION_MODE_BYTES);
    *pBufferLen = static_cast<UINT>(payload_start + encapsulated);
    if (TraceLetsThrough(kInformation))
        _DoDbgPrintBuffer(g_hH265LibDbg, kInformation, pBuffer, *pBufferLen, "MODIFIED SEI NAL", __func__,
                          __FILE_NAME__, __LINE__);
    TRACE(kFunction, "SEINALInputLength:%d, SEINALOutputLength:%d.\n", length, *pBufferLen);
    return TRUE;
}
