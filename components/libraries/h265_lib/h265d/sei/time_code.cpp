#include "h265d/sei/time_code.h"

#include <algorithm>
#include <cstdlib>

#include "common/read.h"
#include "h265d/framing/parse_frame.h"
#include "h265d/sei/payload.h"

// An element that cannot be read is told by the line it stands on.
#define READ_OR_TELL_LINE(read)          \
    do {                                 \
        if ((read) == -1) [[unlikely]] { \
            *pLine = __LINE__;           \
            return FALSE;                \
        }                                \
    } while (0)

BOOL _parse_sei_timecode(bitbuffer_t *pSeiTimeCodeBb, const SEI_message_t *pMsgHeader,
                         sei_h265_time_code_t *pTc, int *pLine) {
    ASSERT_ARGUMENT(pSeiTimeCodeBb != NULL);
    ASSERT_ARGUMENT(pMsgHeader != NULL);
    ASSERT_ARGUMENT(pTc != NULL);
    ASSERT_ARGUMENT(pLine != NULL);
    if (pLine == nullptr)
        return FALSE;
    if (pSeiTimeCodeBb == nullptr || pMsgHeader == nullptr || pTc == nullptr) {
        *pLine = __LINE__;
        return FALSE;
    }
    TRACE(kFunction, "Advancing to Payload index:%d, Payload_type:%#x, Payload_size:%#x.\n",
          pMsgHeader->payload_index, pMsgHeader->payload_type, pMsgHeader->payload_size);
    AdvanceToPayload(pSeiTimeCodeBb, pMsgHeader->payload_index);
    BitReader bb(pSeiTimeCodeBb);

    READ_OR_TELL_LINE(ReadU(bb, 2, pTc->num_clocks_ts));
    const int clocks = std::min<int>(pTc->num_clocks_ts, H265_TIME_CODE_CLOCKS);
    for (int i = 0; i < clocks; i++) {
        READ_OR_TELL_LINE(ReadFlag(bb, pTc->clock_timestamp_flag[i]));
        if (!pTc->clock_timestamp_flag[i])
            continue;
        READ_OR_TELL_LINE(ReadFlag(bb, pTc->units_field_based_flag[i]));
        READ_OR_TELL_LINE(ReadU(bb, 5, pTc->counting_type[i]));
        READ_OR_TELL_LINE(ReadFlag(bb, pTc->full_timestamp_flag[i]));
        READ_OR_TELL_LINE(ReadFlag(bb, pTc->discontinuity_flag[i]));
        READ_OR_TELL_LINE(ReadFlag(bb, pTc->cnt_drop_flag[i]));
        READ_OR_TELL_LINE(ReadU(bb, 9, pTc->n_frames[i]));
        if (pTc->full_timestamp_flag[i]) {
            pTc->seconds_flag[i] = pTc->minutes_flag[i] = pTc->hours_flag[i] = 1;  // implied
            READ_OR_TELL_LINE(ReadU(bb, 6, pTc->seconds_value[i]));
            READ_OR_TELL_LINE(ReadU(bb, 6, pTc->minutes_value[i]));
            READ_OR_TELL_LINE(ReadU(bb, 5, pTc->hours_value[i]));
        } else {
            READ_OR_TELL_LINE(ReadFlag(bb, pTc->seconds_flag[i]));
            if (pTc->seconds_flag[i]) {
                READ_OR_TELL_LINE(ReadU(bb, 6, pTc->seconds_value[i]));
                READ_OR_TELL_LINE(ReadFlag(bb, pTc->minutes_flag[i]));
                if (pTc->minutes_flag[i]) {
                    READ_OR_TELL_LINE(ReadU(bb, 6, pTc->minutes_value[i]));
                    READ_OR_TELL_LINE(ReadFlag(bb, pTc->hours_flag[i]));
                    if (pTc->hours_flag[i])
                        READ_OR_TELL_LINE(ReadU(bb, 5, pTc->hours_value[i]));
                }
            }
        }
        READ_OR_TELL_LINE(ReadU(bb, 5, pTc->time_offset_length[i]));
        if (pTc->time_offset_length[i] != 0)
            READ_OR_TELL_LINE(ReadI(bb, pTc->time_offset_length[i], pTc->time_offset_value[i]));
        TRACE(kDetail,
              "DEBUG - HH:MM:SS:FF:%02lu:%02lu:%02lu:%02lu. ct_full_flag:%d, ct_flag:%d time_offset:%d.\n",
              static_cast<unsigned long>(pTc->hours_value[i]),
              static_cast<unsigned long>(pTc->minutes_value[i]),
              static_cast<unsigned long>(pTc->seconds_value[i]), static_cast<unsigned long>(pTc->n_frames[i]),
              pTc->full_timestamp_flag[i], pTc->clock_timestamp_flag[i],
              static_cast<int>(pTc->time_offset_value[i]));
    }
    return TRUE;
}

BOOL H265Lib_Parse_sei_timecode_nal(const unsigned char *pBuffer, int BufferLen,
                                    const SEI_message_t *pMsgHeader, sei_h265_time_code_t *pTc) {
    // no length test of its own: the assertion reports, and the start code search fails
    static constexpr ParseFrameTexts kTexts = {
        TRACE_SITE, nullptr, "Failed to parse_sei_timecode_nal! buffer:%p.\n", kNoSodbFromNal};

    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(BufferLen > 4);
    ASSERT_ARGUMENT(pTc != NULL);

    unsigned char *pNalSodbBuffer = nullptr;
    bitbuffer_t bb;
    if (!OpenSodbOnHeap({pBuffer, BufferLen}, kTexts, kNoMemoryForNalSodbBuffer, &pNalSodbBuffer, &bb))
        return FALSE;
    int line = 0;
    const BOOL parsed = _parse_sei_timecode(&bb, pMsgHeader, pTc, &line);
    std::free(pNalSodbBuffer);
    if (!parsed)
        TRACE(kError, "Failed to parse sei time_code on line %d.\n", line);
    return parsed;
}
