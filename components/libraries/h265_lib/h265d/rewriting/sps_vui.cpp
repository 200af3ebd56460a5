// Replacing the VUI of an SPS.

#include "common/trace.h"
#include "h265d/rewriting/rewrite_run.h"
#include "h265d/rewriting/sps.h"
#include "h265d/rewriting/sps_frame.h"
#include "h265d/rewriting/sps_tail.h"

int _set_sps_vui_parameters(bitbuffer_t *sps_nalu_bb, int SpsSodbLength, const sps_h265_t *sps,
                            bitbuffer_t *new_sps_nalu_bb, int NewSpsSodbLength) {
    ASSERT_ARGUMENT(sps_nalu_bb != NULL);
    ASSERT_ARGUMENT(sps != NULL);
    ASSERT_ARGUMENT(new_sps_nalu_bb != NULL);
    ASSERT_ARGUMENT(NewSpsSodbLength >= (SpsSodbLength + MIN_VUI_PARAMETERS_SIZE_BYTES));
    if (sps_nalu_bb == nullptr || sps == nullptr || new_sps_nalu_bb == nullptr)
        return -1;
    TRACE(kFunction, "Called, new_sps_nalu_bb:%p, NewSpsSodbLength:%d.\n",
          static_cast<void *>(new_sps_nalu_bb), NewSpsSodbLength);
    BitString string{TRACE_SITE, nullptr};
    if (!AllocateBitString(&string))
        return -1;
    if (sps->vui_parameters_present_flag != 1)  // silently, unlike the rewriting of the whole SPS
        return -1;
    if (CopyRun(sps_nalu_bb, sps->vui_parameters_present_offset, new_sps_nalu_bb, &string) == -1)
        return -1;
    return FinishSps(sps_nalu_bb, SpsSodbLength, sps, new_sps_nalu_bb, &string);
}

BOOL H265Lib_Set_sps_vui_parameters_NAL(const unsigned char *pBuffer, unsigned int buffer_len,
                                        const sps_h265_t *pSpsElements, unsigned char **ppNewSpsBuffer,
                                        UINT *pNewSPSLength) {
    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(ppNewSpsBuffer != NULL);
    ASSERT_ARGUMENT(pNewSPSLength != NULL);
    if (ppNewSpsBuffer == nullptr || pNewSPSLength == nullptr)
        return FALSE;
    const SpsRewriting result = RewriteSpsNal(TRACE_SITE, pBuffer, buffer_len, pSpsElements,
                                              _set_sps_vui_parameters, ppNewSpsBuffer, pNewSPSLength);
    if (result == SpsRewriting::kFailed)  // success is not traced
        TRACE(kFunction, "Done, bRetCode:\"%s\".\n", "FALSE");
    return result == SpsRewriting::kDone;
}
