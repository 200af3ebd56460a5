// time_code( payloadSize ) as the tests write it down, ITU-T H.265 clause D.2.27.

#ifndef TESTS_H265_SEI_TIME_CODE_SYNTAX_H
#define TESTS_H265_SEI_TIME_CODE_SYNTAX_H

#include "h265/sei/built_sei.h"

namespace test {

#define TIME_CODE_ELEMENT(element)               \
    static_cast<uint64_t>(tc.element), kNotKept, \
        "Failed to set " #element ":" + std::to_string(static_cast<int>(tc.element)) + ".\n"
#define TIME_CODE_ENTRY(element)                            \
    static_cast<uint64_t>(tc.element[i]), kNotKept,         \
        "Failed to set " #element "[" + std::to_string(i) + \
            "]:" + std::to_string(static_cast<int>(tc.element[i])) + ".\n"

inline Syntax TimeCodeMessage(const sei_h265_time_code_t &tc) {
    return SeiMessage(136, [&tc](Syntax *payload) {
        payload->U(2, TIME_CODE_ELEMENT(num_clocks_ts));
        for (int i = 0; i < tc.num_clocks_ts; i++) {
            payload->U(1, TIME_CODE_ENTRY(clock_timestamp_flag));
            if (!tc.clock_timestamp_flag[i])
                continue;
            payload->U(1, TIME_CODE_ENTRY(units_field_based_flag))
                .U(5, TIME_CODE_ENTRY(counting_type))
                .U(1, TIME_CODE_ENTRY(full_timestamp_flag))
                .U(1, TIME_CODE_ENTRY(discontinuity_flag))
                .U(1, TIME_CODE_ENTRY(cnt_drop_flag))
                .U(9, TIME_CODE_ENTRY(n_frames));
            if (tc.full_timestamp_flag[i]) {
                payload->U(6, TIME_CODE_ENTRY(seconds_value))
                    .U(6, TIME_CODE_ENTRY(minutes_value))
                    .U(5, TIME_CODE_ENTRY(hours_value));
            } else {
                payload->U(1, TIME_CODE_ENTRY(seconds_flag));
                if (tc.seconds_flag[i])
                    payload->U(6, TIME_CODE_ENTRY(seconds_value)).U(1, TIME_CODE_ENTRY(minutes_flag));
                if (tc.seconds_flag[i] && tc.minutes_flag[i])
                    payload->U(6, TIME_CODE_ENTRY(minutes_value)).U(1, TIME_CODE_ENTRY(hours_flag));
                if (tc.seconds_flag[i] && tc.minutes_flag[i] && tc.hours_flag[i])
                    payload->U(5, TIME_CODE_ENTRY(hours_value));
            }
            payload->U(5, TIME_CODE_ENTRY(time_offset_length));
            if (tc.time_offset_length[i] > 0)
                payload->U(tc.time_offset_length[i], TIME_CODE_ENTRY(time_offset_value));
        }
    });
}

#undef TIME_CODE_ELEMENT
#undef TIME_CODE_ENTRY

}  // namespace test

#endif
