#include "edit/aspect_ratio.h"

#include <array>
#include <limits>
#include <numeric>

#include "h265.h"

namespace h265tool {
namespace {

struct Ratio {
    uint32_t width;
    uint32_t height;

    bool operator==(const Ratio &) const = default;
};

// Table E.1, from aspect_ratio_idc 1 on.
constexpr std::array<Ratio, 16> kRatios = {{{1, 1},
                                            {12, 11},
                                            {10, 11},
                                            {16, 11},
                                            {40, 33},
                                            {24, 11},
                                            {20, 11},
                                            {32, 11},
                                            {80, 33},
                                            {18, 11},
                                            {15, 11},
                                            {64, 33},
                                            {160, 99},
                                            {4, 3},
                                            {3, 2},
                                            {2, 1}}};

}  // namespace

std::optional<AspectRatio> MakeAspectRatio(uint32_t width, uint32_t height) {
    constexpr uint32_t kMax = std::numeric_limits<uint16_t>::max();
    if (width == 0 || height == 0)
        return std::nullopt;
    const uint32_t divisor = std::gcd(width, height);
    const Ratio ratio = {width / divisor, height / divisor};
    for (size_t i = 0; i < kRatios.size(); i++) {
        if (ratio == kRatios[i])
            return AspectRatio{static_cast<unsigned char>(i + 1), 0, 0};
    }
    if (ratio.width > kMax || ratio.height > kMax)
        return std::nullopt;
    return AspectRatio{IH265ENC_ASPECTRATIO_EXTENDED, static_cast<uint16_t>(ratio.width),
                       static_cast<uint16_t>(ratio.height)};
}

}  // namespace h265tool
