// Time codes, SMPTE ST 12-1, and how they count.

#ifndef H265TOOL_INSERT_TIME_CODE_H
#define H265TOOL_INSERT_TIME_CODE_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace h265tool {

struct TimeCode {
    unsigned int hours;
    unsigned int minutes;
    unsigned int seconds;
    unsigned int frames;
    bool drop_frame;

    bool operator==(const TimeCode &) const = default;
};

// HH:MM:SS:FF, or HH:MM:SS;FF for drop-frame. The frames may be any two digits.
std::optional<TimeCode> ParseTimeCode(std::string_view text);

// How time codes number the frames of a day. `dropped`: the counts left out at each minute that is no
// multiple of ten, by drop-frame time codes only.
class TimeCodeCount {
 public:
    TimeCodeCount(unsigned int frames_per_second, unsigned int dropped)
        : frames_per_second_(frames_per_second), dropped_(dropped) {}

    // Whether there is a frame of this time code.
    bool Has(const TimeCode &time_code) const;

    // The number of the frame, from 00:00:00:00 on.
    uint64_t FrameNumber(const TimeCode &time_code) const;

    // The inverse; after 23:59:59 comes 00:00:00.
    TimeCode At(uint64_t frame_number, bool drop_frame) const;

 private:
    unsigned int frames_per_second_;
    unsigned int dropped_;
};

}  // namespace h265tool

#endif
