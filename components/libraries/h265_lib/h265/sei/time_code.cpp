#include "h265/sei/time_code.h"

#include "common/write.h"
#include "h265/sei/sei_nal_unit.h"

namespace {

constexpr int TIME_CODE_SODB_SIZE = 30;
constexpr int MIN_TIME_CODE_BUFFER = 36;  // whatever the message takes

// Table D.9.
enum CountingType : unsigned char {
    NO_DROPPING = 0,
    DROPPING_PER_MINUTE = 4,   // counts 0 and 1, each minute that is no multiple of ten
    DROPPING_UNSPECIFIED = 6,  // unspecified numbers of unspecified counts
};

bool Is2997(int frame_rate) {
    return frame_rate >= 29000 && frame_rate <= 29999;
}

bool Is5994(int frame_rate) {
    return frame_rate >= 59000 && frame_rate <= 59999;
}

unsigned char CountingTypeOf(const SEI_time_code_info_t &info, const vitc_t *vitc) {
    if (!Is2997(info.FrameRate) && !Is5994(info.FrameRate))
        return NO_DROPPING;
    if (info.enTimeSource == EMBEDDED_TIME_CODE)
        return vitc != nullptr && (vitc->Flag1 & 1) != 0 ? DROPPING_PER_MINUTE : NO_DROPPING;
    return info.enSystemTCCountingMode != SYSTEM_TC_SMPTE12M_1_COUNT_MODE ? DROPPING_UNSPECIFIED
                                                                          : DROPPING_PER_MINUTE;
}

// Whether the frame is the first one behind dropped counts.
bool FollowsDroppedCounts(const SEI_time_code_info_t &info, const SEI_COMMERCIALTC &time) {
    if (time.seconds != 0 || time.minutes % 10 == 0)
        return false;
    return (Is2997(info.FrameRate) && time.n_frames == 2) || (Is5994(info.FrameRate) && time.n_frames == 4);
}

void FillClockTimestamp(const SEI_time_code_info_t &info, const vitc_t *vitc, int i,
                        sei_h265_time_code_t *tc) {
    const vui_h265_t &vui = info.pParsedSps->vui;
    tc->clock_timestamp_flag[i] = 1;
    tc->units_field_based_flag[i] = vui.field_seq_flag == 1 || vui.frame_field_info_present_flag != 0;
    tc->counting_type[i] = CountingTypeOf(info, vitc);
    tc->full_timestamp_flag[i] = 1;
    tc->discontinuity_flag[i] = 0;
    tc->cnt_drop_flag[i] =
        tc->counting_type[i] == DROPPING_PER_MINUTE && FollowsDroppedCounts(info, info.WallTime);
    if (tc->units_field_based_flag[i] || info.FrameRate >= 29000)
        tc->time_offset_length[i] = static_cast<unsigned char>(
            _FindNumberOfBitsToHoldInteger(static_cast<unsigned int>(vui.vui_num_units_in_tick)));
    if (tc->time_offset_length[i] != 0)
        tc->time_offset_value[i] = static_cast<INT64>(
            tc->units_field_based_flag[i] ? vui.vui_num_units_in_tick : vui.vui_num_units_in_tick >> 1);
}

}  // namespace

unsigned int _FindNumberOfBitsToHoldInteger(unsigned int v) {
    return v > 1 ? static_cast<unsigned int>(31 - __builtin_clz(v)) : 0;
}

BOOL _DeriveNumClockTs(const sps_h265_t *pSps, unsigned char *pNumClockTS) {
    ASSERT_ARGUMENT(pSps != NULL);
    ASSERT_ARGUMENT(pNumClockTS != NULL);
    if (pSps == nullptr || pNumClockTS == nullptr)
        return FALSE;
    *pNumClockTS = 1;
    return TRUE;
}

int _SMPTEVitcToSEIPictiming(const vitc_t *pVitcData, SEI_time_code_info_t *SEIData) {
    constexpr int kMaxFrames = 85;  // two decimal digits of a time code; not tied to the frame rate
    if (pVitcData == nullptr) {
        TRACE(kError, "pVitcData:%p is NULL!\n", static_cast<const void *>(pVitcData));
        return -1;
    }
    if (SEIData == nullptr) {
        TRACE(kError, "SEIData:%p is NULL!\n", static_cast<void *>(SEIData));
        return -1;
    }
    const auto number = [](unsigned char tens, unsigned char units) {
        return static_cast<unsigned char>(tens * 10 + units);
    };
    SEI_COMMERCIALTC &time = SEIData->WallTime;
    time.n_frames = number(pVitcData->FrameTens, pVitcData->FrameUnits);
    time.seconds = number(pVitcData->SecondTens, pVitcData->SecondUnits);
    time.minutes = number(pVitcData->MinuteTens, pVitcData->MinuteUnits);
    time.hours = number(pVitcData->HourTens, pVitcData->HourUnits);
    if (time.n_frames <= kMaxFrames && time.seconds <= 59 && time.minutes <= 59 && time.hours <= 23)
        return 0;
    TRACE(kError, "SEIData time(HH:MM:SS:FF):(%d:%d:%d:%d) is NOT in the expected boudaries\n", time.hours,
          time.minutes, time.seconds, time.n_frames);
    return -1;
}

int _AssembleTimecodeSEI(unsigned char *buffer, int len, const vitc_t *pVitc_data,
                         SEI_time_code_info_t *pTimecode_data) {
    static LastLogged last_displayed{0};

    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(pTimecode_data != NULL);
    sei_h265_time_code_t tc{};
    if (len < MIN_TIME_CODE_BUFFER) {
        TRACE(kError, "Received buffer len:%d is smaller than actual size of SEI:%d.\n", len,
              MIN_TIME_CODE_BUFFER);
        return -1;
    }
    if (buffer == nullptr || pTimecode_data == nullptr)
        return -1;
    const SEI_COMMERCIALTC &time = pTimecode_data->WallTime;
    tc.hours_value[0] = time.hours;
    tc.minutes_value[0] = time.minutes;
    tc.seconds_value[0] = time.seconds;
    tc.n_frames[0] = time.n_frames;
    if (!_DeriveNumClockTs(pTimecode_data->pParsedSps, &tc.num_clocks_ts) ||
        tc.num_clocks_ts != 1) {  // GCOVR_EXCL_BR_LINE: no other count is derived
        TRACE(kError, "Failed to derive num_clock_ts.\n");
        return -1;
    }
    for (int i = 0; i < tc.num_clocks_ts; i++)
        FillClockTimestamp(*pTimecode_data, pVitc_data, i, &tc);

    if (IsDue(last_displayed, 4)) {
        const int anc_line = pVitc_data != nullptr ? pVitc_data->VitcCrc * 256 + pVitc_data->VitcCrcErr : -1;
        TRACE(kInformation, "enTimeSource:%s, time H:M:S:F(%d:%d:%d:%d), anc_line:%d, %s.\n",
              pTimecode_data->enTimeSource == EMBEDDED_TIME_CODE ? "VITC" : "SYSTEM", tc.hours_value[0],
              tc.minutes_value[0], tc.seconds_value[0], tc.n_frames[0], anc_line, "");
        TRACE(kInformation, "FrameRate:%d, BottomFieldFlag:%d, ScanType:%d, enSystemTCCountingMode:%d.\n",
              pTimecode_data->FrameRate, pTimecode_data->BottomFieldFlag, pTimecode_data->scan_type,
              pTimecode_data->enSystemTCCountingMode);
    }

    // Failures from here on are reported, and the assembly goes on with what there is.
    unsigned char sodb[TIME_CODE_SODB_SIZE] = {};
    bitbuffer_t bb{};
    if (__DoInitBitBuffer(&bb, sodb, TIME_CODE_SODB_SIZE * 8, __func__, __FILE_NAME__, __LINE__) != 0)
        TRACE(kError, "Failed to init Bitbuffer.");
    const int sodb_length = _set_sei_timecode_elements(&bb, &tc);
    if (sodb_length < 0)
        TRACE(kError, "Failed to set SEI time_code elements.");
    TRACE(kFunction, "About to encapsulate SODB in RBSP.");
    const int encapsulated = EncapsulateSei(sodb, sodb_length, buffer, len);
    if (encapsulated == 0)
        TRACE(kError, "Encapsulation failed!\n");
    TRACE(kFunction, "Max RBSPSize=%d, Encapsulated NAL size=%d\n", TIME_CODE_SODB_SIZE, encapsulated);
    return encapsulated + kSeiNalPrefixSize;
}

int H265Lib_format_sei_time_code_nal(unsigned char *buffer, int len, const vitc_t *pVitcData,
                                     SEI_time_code_info_t *pTimecodeData) {
    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(len > 0);
    ASSERT_ARGUMENT(pVitcData != NULL);  // reported, although the wall time then serves
    ASSERT_ARGUMENT(pTimecodeData != NULL);
    TRACE(kFunction, "Called. Buffer:0x%p, len:%d, pVitc_data:%p, timecode_data:%p\n",
          static_cast<void *>(buffer), len, static_cast<const void *>(pVitcData),
          static_cast<void *>(pTimecodeData));
    if (pVitcData != nullptr && _SMPTEVitcToSEIPictiming(pVitcData, pTimecodeData) == -1) {
        TRACE(kError, "Failed to convert pVitcData:%p into timecode_data:%p\n",
              static_cast<const void *>(pVitcData), static_cast<void *>(pTimecodeData));
        if (pTimecodeData != nullptr)
            pTimecodeData->WallTime = {};
    }
    return _AssembleTimecodeSEI(buffer, len, pVitcData, pTimecodeData);
}
