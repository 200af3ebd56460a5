// H265Lib_format_sei_time_code_nal: the time comes out of a scan and a parse.

#include <memory>

#include "h265.h"
#include "support/built_sei.h"
#include "support/check.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"

namespace {

using fuzz::ExactBuffer;
using fuzz::FuzzInput;

std::unique_ptr<vitc_t> AnyVitc(FuzzInput *input) {
    auto vitc = fuzz::AnyRecord<vitc_t>(input);
    if (input->Flag()) {
        vitc->HourTens = static_cast<unsigned char>(input->Below(3));
        vitc->MinuteTens = static_cast<unsigned char>(input->Below(6));
        vitc->SecondTens = static_cast<unsigned char>(input->Below(6));
        vitc->FrameTens = static_cast<unsigned char>(input->Below(6));
        vitc->HourUnits = vitc->MinuteUnits = vitc->SecondUnits = vitc->FrameUnits =
            static_cast<unsigned char>(input->Below(10));
    }
    return vitc;
}

// As many bits as the elements have.
void CheckTime(const sei_h265_time_code_t &tc, const SEI_COMMERCIALTC &time) {
    FUZZ_CHECK(tc.num_clocks_ts == 1 && tc.clock_timestamp_flag[0] == 1 && tc.full_timestamp_flag[0] == 1);
    FUZZ_CHECK(tc.hours_value[0] == (time.hours & 31) && tc.minutes_value[0] == (time.minutes & 63));
    FUZZ_CHECK(tc.seconds_value[0] == (time.seconds & 63) && tc.n_frames[0] == time.n_frames);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    constexpr int kSmallest = 36;
    constexpr int kHeaderAlone = 5;
    FuzzInput input(data, size);
    const fuzz::DiscardedTrace trace(&input);
    ExactBuffer buffer(input.Flag() ? 64 : input.Below(64));
    const auto vitc = AnyVitc(&input);
    const auto info = fuzz::AnyRecord<SEI_time_code_info_t>(&input);
    const auto sps = fuzz::AnyRecord<sps_h265_t>(&input);
    info->pParsedSps = input.Byte() == 0xFF ? nullptr : sps.get();
    if (input.Flag())
        info->FrameRate = input.Flag() ? 29970 : 59940;
    const bool has_vitc = input.Flag();

    const int length = H265Lib_format_sei_time_code_nal(buffer.data(), buffer.length(),
                                                        has_vitc ? vitc.get() : nullptr, info.get());
    const bool possible = buffer.length() >= kSmallest && info->pParsedSps != nullptr;
    FUZZ_CHECK(possible ? length >= kHeaderAlone && length <= buffer.length() : length == -1);
    if (length <= kHeaderAlone)
        return 0;
    fuzz::BuiltSei sei(buffer.Content(static_cast<size_t>(length)));
    FUZZ_CHECK(sei.suid == SUID_TIME_CODE);
    sei_h265_time_code_t tc{};
    FUZZ_CHECK(H265Lib_Parse_sei_timecode_nal(sei.nal.data(), sei.nal.length(), &sei.header, &tc));
    CheckTime(tc, info->WallTime);
    return 0;
}
