#include "rate.h"

#include <charconv>
#include <numeric>

#include "text.h"
#include "usage_error.h"

namespace h265tool {
namespace {

// Leaves room in 64 bits for products with picture counts and the caption rate.
constexpr uint64_t kMaxPart = 10'000'000;

}  // namespace

std::string Rate::Text() const {
    return denominator == 1 ? h265tool::Text(numerator) : h265tool::Text(numerator, "/", denominator);
}

std::optional<Rate> MakeRate(uint64_t numerator, uint64_t denominator) {
    if (numerator == 0 || denominator == 0)
        return std::nullopt;
    const uint64_t divisor = std::gcd(numerator, denominator);
    const Rate rate{numerator / divisor, denominator / divisor};
    if (rate.numerator > kMaxPart || rate.denominator > kMaxPart)
        return std::nullopt;
    return rate;
}

std::optional<Rate> ParseRate(const std::string &text) {
    const char *const end = text.data() + text.size();
    uint64_t numerator = 0;
    uint64_t denominator = 1;
    auto [at, error] = std::from_chars(text.data(), end, numerator);
    if (error == std::errc{} && at != end && *at == '/') {
        const auto second = std::from_chars(at + 1, end, denominator);
        at = second.ptr;
        error = second.ec;
    }
    if (error != std::errc{} || at != end)
        return std::nullopt;
    return MakeRate(numerator, denominator);
}

Rate RateOption(const std::string &option, const std::string &text) {
    const std::optional<Rate> rate = ParseRate(text);
    if (!rate.has_value())
        throw UsageError(option, h265tool::Text("\"", text, "\" is no rate (N or N/D)"));
    return *rate;
}

std::optional<Rate> RateOf(const vui_h265_t &vui) {
    if (!vui.vui_timing_info_present_flag)
        return std::nullopt;
    return MakeRate(vui.vui_time_scale, vui.vui_num_units_in_tick);
}

std::optional<unsigned int> TimeCodeFrames(const Rate &rate) {
    const uint64_t frames = (rate.numerator + rate.denominator / 2) / rate.denominator;
    const uint64_t whole = frames * rate.denominator;
    // 29.97 is written as 30000/1001 and as 2997/100: up to 0.11 % below the whole rate
    if (rate.numerator > whole || (whole - rate.numerator) * 10'000 > whole * 11)
        return std::nullopt;
    return static_cast<unsigned int>(frames);
}

unsigned int DroppedCounts(const Rate &rate) {
    const std::optional<unsigned int> frames = TimeCodeFrames(rate);
    if (!frames.has_value() || rate.numerator >= *frames * rate.denominator)
        return 0;
    return *frames == 30 ? 2 : *frames == 60 ? 4 : 0;
}

}  // namespace h265tool
