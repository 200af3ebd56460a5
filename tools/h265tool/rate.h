// Picture rates as exact fractions.

#ifndef H265TOOL_RATE_H
#define H265TOOL_RATE_H

#include <cstdint>
#include <optional>
#include <string>

#include "h265.h"

namespace h265tool {

// Pictures per second; fields where each picture is one.
struct Rate {
    uint64_t numerator;
    uint64_t denominator;

    bool operator==(const Rate &) const = default;

    std::string Text() const;  // "30000/1001", "25"
    uint64_t Thousandths() const { return numerator * 1000 / denominator; }
};

// None for what is no rate: a part that is 0, or above 10 million when the fraction is reduced.
std::optional<Rate> MakeRate(uint64_t numerator, uint64_t denominator);

std::optional<Rate> ParseRate(const std::string &text);  // N[/D]

// The value of an option. Throws UsageError.
Rate RateOption(const std::string &option, const std::string &text);

std::optional<Rate> RateOf(const vui_h265_t &vui);  // vui_time_scale / vui_num_units_in_tick

// The frames that a time code counts in a second, when the rate is whole or 1000/1001 of a whole one.
std::optional<unsigned int> TimeCodeFrames(const Rate &rate);

// The counts that drop-frame leaves out in a minute, SMPTE ST 12-1: 2 at 29.97, 4 at 59.94, else 0.
unsigned int DroppedCounts(const Rate &rate);

}  // namespace h265tool

#endif
