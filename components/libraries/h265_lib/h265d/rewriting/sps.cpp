#include "h265d/rewriting/sps.h"

#include "common/read.h"
#include "common/write.h"
#include "h265d/rewriting/rewrite_run.h"
#include "h265d/rewriting/sps_frame.h"
#include "h265d/rewriting/sps_tail.h"

namespace {

// Reads an element of the input and drops it. The report is in `text`.
int SkipUe(const TraceSite &site, BitReader &bb, const char *text) {
    uint32_t dropped = 0;
    if (bb.GetGolomb(&dropped) != -1)
        return 0;
    TraceAt(site, kError, text);
    return -1;
}

int SkipFlag(const TraceSite &site, BitReader &bb, const char *text) {
    int dropped = 0;
    if (bb.GetFlag(&dropped) != -1)
        return 0;
    TraceAt(site, kError, text);
    return -1;
}

// The input's picture size and conformance window. Whether there is a window the record says, not the input.
int SkipPictureSize(const TraceSite &site, bitbuffer_t *sps_bb, const sps_h265_t &sps) {
    static constexpr char kSize[] = "cannot parse pic_width_in_luma_samples.\n";  // width and height alike
    BitReader bb(sps_bb);
    if (SkipUe(site, bb, kSize) == -1 || SkipUe(site, bb, kSize) == -1 ||
        SkipFlag(site, bb, "cannot parse conformance_window_flag.\n") == -1)
        return -1;
    if (!sps.conformance_window_flag)
        return 0;
    if (SkipUe(site, bb, "cannot parse conf_win_left_offset.\n") == -1 ||
        SkipUe(site, bb, "cannot parse conf_win_right_offset.\n") == -1 ||
        SkipUe(site, bb, "cannot parse conf_win_top_offset.\n") == -1 ||
        SkipUe(site, bb, "cannot parse conf_win_bottom_offset.\n") == -1)
        return -1;
    return 0;
}

}  // namespace

int _modify_sps_parameters(bitbuffer_t *sps_bb, int SpsSodbLength, const sps_h265_t *pSpsElements,
                           bitbuffer_t *new_sps_bb, int NewSpsSodbLength) {
    constexpr int kSourceFlags = 4;  // progressive, interlaced, non-packed, frame-only
    // The picture size and the conformance offsets are all reported under one name.
    static constexpr char kSizeNotSet[] = "cannot parse pic_width_in_luma_samples.\n";

    const sps_h265_t *const sps = pSpsElements;
    ASSERT_ARGUMENT(sps_bb != NULL);
    ASSERT_ARGUMENT(pSpsElements != NULL);
    ASSERT_ARGUMENT(new_sps_bb != NULL);
    ASSERT_ARGUMENT(NewSpsSodbLength >= (SpsSodbLength + MIN_VUI_PARAMETERS_SIZE_BYTES));
    if (sps_bb == nullptr || sps == nullptr || new_sps_bb == nullptr)
        return -1;
    TRACE(kFunction, "Called, sps_bb:%p.\n", static_cast<void *>(sps_bb));
    BitString string{TRACE_SITE, nullptr};
    if (!AllocateBitString(&string))
        return -1;

    int num_bits = sps->ptl.general_scantype_bitoffset;
    if (CopyRun(sps_bb, num_bits, new_sps_bb, &string) == -1)
        return -1;
    {
        BitWriter bb(new_sps_bb);
        SET_FLAG(bb, &sps->ptl, general_progressive_source_flag);
        SET_FLAG(bb, &sps->ptl, general_interlaced_source_flag);
        SET_FLAG_AS(bb, 0, "cannot parse general_non_packed_constraint_flag.\n");
        SET_FLAG_AS(bb, 0, "Failed to set general_frame_only_constraint_flag.\n");
    }
    AdvanceBitOffset(sps_bb, kSourceFlags);

    num_bits = BitsUpTo(sps->before_pic_num_samples_offset, *sps_bb);
    TRACE(kFunction, "num_bits:%d from general_frame_only_constraint_flag to pic_width_in_luma_samples.\n",
          num_bits);
    if (CopyRun(sps_bb, num_bits, new_sps_bb, &string) == -1)
        return -1;
    {
        BitWriter bb(new_sps_bb);
        SET_UE_AS(bb, sps->pic_width_in_luma_samples, kSizeNotSet);
        SET_UE_AS(bb, sps->pic_height_in_luma_samples, kSizeNotSet);
        SET_FLAG(bb, sps, conformance_window_flag);
        if (sps->conformance_window_flag) {
            SET_UE_AS(bb, sps->conf_win_left_offset, kSizeNotSet);
            SET_UE_AS(bb, sps->conf_win_right_offset, kSizeNotSet);
            SET_UE_AS(bb, sps->conf_win_top_offset, kSizeNotSet);
            SET_UE_AS(bb, sps->conf_win_bottom_offset, kSizeNotSet);
        }
    }
    if (SkipPictureSize(TRACE_SITE, sps_bb, *sps) == -1)
        return -1;

    if (sps->vui_parameters_present_flag != 1) {
        TEXT_ASSERTION("vui parameters should be present at this point.");
        return -1;
    }
    num_bits = BitsUpTo(sps->vui_parameters_present_offset, *sps_bb);
    TRACE(kFunction, "num_bits:%d from bit_depth_luma_minus8 to vui_parameters_present_flag.\n", num_bits);
    if (CopyRun(sps_bb, num_bits, new_sps_bb, &string) == -1)
        return -1;
    return FinishSps(sps_bb, SpsSodbLength, sps, new_sps_bb, &string);
}

BOOL H265Lib_modify_sps_NAL(const unsigned char *pBuffer, unsigned int buffer_len,
                            const sps_h265_t *pSpsElements, unsigned char **ppNewSpsBuffer,
                            UINT *pNewSPSLength) {
    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(buffer_len > 4);
    ASSERT_ARGUMENT(pSpsElements != NULL);
    ASSERT_ARGUMENT(ppNewSpsBuffer != NULL);
    ASSERT_ARGUMENT(pNewSPSLength != NULL);
    if (ppNewSpsBuffer == nullptr || pNewSPSLength == nullptr)
        return FALSE;
    const SpsRewriting result = RewriteSpsNal(TRACE_SITE, pBuffer, buffer_len, pSpsElements,
                                              _modify_sps_parameters, ppNewSpsBuffer, pNewSPSLength);
    if (result == SpsRewriting::kRefused)
        return FALSE;
    const bool done = result == SpsRewriting::kDone;
    if (done)
        TRACE(kFunction, "RBSP encapsulation done NewSPSBufferLength:%zu.\n", size_t{*pNewSPSLength});
    TRACE(kFunction, "Done, bRetCode:\"%s\".\n", done ? "TRUE" : "FALSE");
    return done;
}
