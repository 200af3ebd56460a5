// The syntax of the time code message.

#include "common/write.h"
#include "h265/sei/message_writer.h"
#include "h265/sei/time_code.h"

namespace {

constexpr int TIME_CODE = 136;  // payload type

}  // namespace

int _set_sei_timecode_elements(bitbuffer_t *sei_nalu_bb, const sei_h265_time_code_t *pTc) {
    ASSERT_ARGUMENT(sei_nalu_bb != NULL);
    ASSERT_ARGUMENT(pTc != NULL);
    if (sei_nalu_bb == nullptr || pTc == nullptr)
        return -1;

    unsigned int size_position = 0;
    if (BeginSeiMessage(TRACE_SITE, sei_nalu_bb, TIME_CODE, &size_position) == -1)
        return -1;
    BitWriter bb(sei_nalu_bb);
    SET_U_AS(bb, 2, pTc->num_clocks_ts, "Failed to set num_clocks_ts:%d.\n", pTc->num_clocks_ts);
    for (int i = 0; i < pTc->num_clocks_ts && i < H265_TIME_CODE_CLOCKS; i++) {
        SET_FLAG_VALUE(bb, pTc, clock_timestamp_flag, i);
        if (!pTc->clock_timestamp_flag[i])
            continue;
        SET_FLAG_VALUE(bb, pTc, units_field_based_flag, i);
        SET_U_VALUE(bb, 5, pTc, counting_type, i);
        SET_FLAG_VALUE(bb, pTc, full_timestamp_flag, i);
        SET_FLAG_VALUE(bb, pTc, discontinuity_flag, i);
        SET_FLAG_VALUE(bb, pTc, cnt_drop_flag, i);
        SET_U_VALUE(bb, 9, pTc, n_frames, i);
        if (pTc->full_timestamp_flag[i]) {
            SET_U_VALUE(bb, 6, pTc, seconds_value, i);
            SET_U_VALUE(bb, 6, pTc, minutes_value, i);
            SET_U_VALUE(bb, 5, pTc, hours_value, i);
        } else {
            SET_FLAG_VALUE(bb, pTc, seconds_flag, i);
            if (pTc->seconds_flag[i]) {
                SET_U_VALUE(bb, 6, pTc, seconds_value, i);
                SET_FLAG_VALUE(bb, pTc, minutes_flag, i);
                if (pTc->minutes_flag[i]) {
                    SET_U_VALUE(bb, 6, pTc, minutes_value, i);
                    SET_FLAG_VALUE(bb, pTc, hours_flag, i);
                    if (pTc->hours_flag[i])
                        SET_U_VALUE(bb, 5, pTc, hours_value, i);
                }
            }
        }
        SET_U_VALUE(bb, 5, pTc, time_offset_length, i);
        if (pTc->time_offset_length[i] != 0) {
            TRACE(kFunction, "num_bits:%d for time_offset_value.\n", pTc->time_offset_length[i]);
            SET_I_VALUE(bb, pTc->time_offset_length[i], pTc, time_offset_value, i);
        }
    }
    if (EndSeiMessage(TRACE_SITE, bb.Lend(), size_position) == -1)
        return -1;
    const int bytes = BytesWritten(*sei_nalu_bb);
    TRACE(kFunction, "Final sei time_code num_bits:%d, Bytes:%d.\n", bb.offset(), bytes);
    return bytes;
}
