#include "insert/utc.h"

#include <algorithm>
#include <chrono>
#include <string_view>

namespace h265tool {
namespace {

// A digit stands for each 0.
bool HasForm(std::string_view text, std::string_view form) {
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char character, char expected) {
        return expected == '0' ? character >= '0' && character <= '9' : character == expected;
    });
}

}  // namespace

std::optional<int64_t> ParseUtc(const std::string &text) {
    constexpr std::string_view kWhole = "0000-00-00T00:00:00";
    constexpr std::string_view kFraction = ".000000";
    if (text.size() <= kWhole.size() || text.back() != 'Z')
        return std::nullopt;
    std::string fraction = text.substr(kWhole.size(), text.size() - kWhole.size() - 1);
    const size_t fraction_size =
        fraction.empty() ? 0 : std::clamp<size_t>(fraction.size(), 2, kFraction.size());
    if (!HasForm(text.substr(0, kWhole.size()), kWhole) ||
        !HasForm(fraction, kFraction.substr(0, fraction_size)))
        return std::nullopt;

    const auto number = [&text](size_t at, size_t digits) { return std::stoi(text.substr(at, digits)); };
    const std::chrono::year_month_day date{std::chrono::year(number(0, 4)),
                                           std::chrono::month(static_cast<unsigned int>(number(5, 2))),
                                           std::chrono::day(static_cast<unsigned int>(number(8, 2)))};
    const int hours = number(11, 2);
    const int minutes = number(14, 2);
    const int seconds = number(17, 2);
    if (!date.ok() || date.year() < std::chrono::year(1970) || hours > 23 || minutes > 59 || seconds > 59)
        return std::nullopt;

    fraction.resize(kFraction.size(), '0');
    const std::chrono::microseconds time = std::chrono::sys_days(date).time_since_epoch() +
                                           std::chrono::hours(hours) + std::chrono::minutes(minutes) +
                                           std::chrono::seconds(seconds) +
                                           std::chrono::microseconds(std::stoi("0" + fraction.substr(1)));
    return time.count();
}

}  // namespace h265tool
