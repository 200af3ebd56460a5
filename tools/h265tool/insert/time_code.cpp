#include "insert/time_code.h"

#include <array>
#include <cstddef>

namespace h265tool {
namespace {

constexpr uint64_t kMinutesPerDay = uint64_t{24} * 60;

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

}  // namespace

std::optional<TimeCode> ParseTimeCode(std::string_view text) {
    constexpr std::string_view kForm = "00:00:00:00";
    if (text.size() != kForm.size())
        return std::nullopt;
    std::array<unsigned int, 4> parts{};
    for (size_t i = 0; i < text.size(); i++) {
        const bool last_separator = i == 8;
        if (kForm[i] == '0') {
            if (!IsDigit(text[i]))
                return std::nullopt;
            parts[i / 3] = parts[i / 3] * 10 + static_cast<unsigned int>(text[i] - '0');
        } else if (text[i] != ':' && !(last_separator && text[i] == ';')) {
            return std::nullopt;
        }
    }
    if (parts[0] > 23 || parts[1] > 59 || parts[2] > 59)
        return std::nullopt;
    return TimeCode{parts[0], parts[1], parts[2], parts[3], text[8] == ';'};
}

bool TimeCodeCount::Has(const TimeCode &time_code) const {
    const bool is_dropped = time_code.drop_frame && time_code.frames < dropped_ && time_code.seconds == 0 &&
                            time_code.minutes % 10 != 0;
    return time_code.frames < frames_per_second_ && !is_dropped;
}

uint64_t TimeCodeCount::FrameNumber(const TimeCode &time_code) const {
    const uint64_t minutes = uint64_t{time_code.hours} * 60 + time_code.minutes;
    const uint64_t counts = (minutes * 60 + time_code.seconds) * frames_per_second_ + time_code.frames;
    return time_code.drop_frame ? counts - dropped_ * (minutes - minutes / 10) : counts;
}

TimeCode TimeCodeCount::At(uint64_t frame_number, bool drop_frame) const {
    const uint64_t dropped = drop_frame ? dropped_ : 0;
    const uint64_t counts_per_minute = uint64_t{60} * frames_per_second_;
    const uint64_t frames_per_minute = counts_per_minute - dropped;  // but for each tenth
    const uint64_t frames_per_ten = 10 * counts_per_minute - 9 * dropped;
    uint64_t count = frame_number % (kMinutesPerDay / 10 * frames_per_ten);
    const uint64_t tens = count / frames_per_ten;
    const uint64_t within_ten = count % frames_per_ten;
    count += tens * 9 * dropped;
    if (within_ten >= counts_per_minute)
        count += ((within_ten - counts_per_minute) / frames_per_minute + 1) * dropped;

    const uint64_t seconds = count / frames_per_second_;
    return {static_cast<unsigned int>(seconds / 3600), static_cast<unsigned int>(seconds / 60 % 60),
            static_cast<unsigned int>(seconds % 60), static_cast<unsigned int>(count % frames_per_second_),
            drop_frame};
}

}  // namespace h265tool
