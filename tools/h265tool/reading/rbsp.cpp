#include "reading/rbsp.h"

#include <algorithm>

#include "h265.h"

namespace h265tool {

std::vector<unsigned char> Rbsp(const NalUnit &unit) {
    const std::span nal = unit.HeadBehindStartCode();
    std::vector<unsigned char> rbsp(nal.size());
    const auto size = static_cast<unsigned int>(nal.size());
    const int length = H265Lib_SODB_deencapsulation_from_NAL(nal.data(), size, rbsp.data(), size);
    rbsp.resize(static_cast<size_t>(std::max(length, 0)));
    return rbsp;
}

}  // namespace h265tool
