// Sample aspect ratios as the VUI codes them.

#ifndef H265TOOL_EDIT_ASPECT_RATIO_H
#define H265TOOL_EDIT_ASPECT_RATIO_H

#include <cstdint>
#include <optional>

namespace h265tool {

struct AspectRatio {
    unsigned char aspect_ratio_idc;
    uint16_t sar_width;  // with EXTENDED_SAR, else 0
    uint16_t sar_height;
};

// The ratio in its lowest terms: from Table E.1 where it is there, else with EXTENDED_SAR. None when a part
// is 0 or does not fit.
std::optional<AspectRatio> MakeAspectRatio(uint32_t width, uint32_t height);

}  // namespace h265tool

#endif
