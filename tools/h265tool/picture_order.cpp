#include "picture_order.h"

#include <algorithm>

#include "nal_unit.h"

namespace h265tool {
namespace {

constexpr uint64_t kMaxLog2Lsb = 16;  // clause 7.4.3.2.1

// Random access decodable and skipped leading pictures, and sub-layer non-reference pictures (Table 7-1):
// no prevTid0Pic.
bool IsLeadingOrNonReference(unsigned int nal_unit_type) {
    constexpr unsigned int kLastSubLayerType =
        14;  // RSV_VCL_N14; up to there the even types are not referred to
    return IsRadl(nal_unit_type) || IsRasl(nal_unit_type) ||
           (nal_unit_type <= kLastSubLayerType && nal_unit_type % 2 == 0);
}

}  // namespace

PictureOrder PictureOrderCounter::Next(const PictureStart &picture) {
    const unsigned int type = picture.nal_unit_type;
    PictureOrder order;
    order.starts_cvs = first_ || IsIdr(type) || IsBla(type);
    if (IsIrap(type) || first_)
        skips_ = order.starts_cvs;
    first_ = false;
    order.is_skipped = IsRasl(type) && skips_;

    const int64_t max_lsb = int64_t{1} << std::min<uint64_t>(picture.log2_max_lsb, kMaxLog2Lsb);
    const int64_t lsb =
        IsIdr(type) ? 0 : static_cast<int64_t>(picture.slice_pic_order_cnt_lsb) & (max_lsb - 1);
    int64_t msb = 0;
    if (!order.starts_cvs) {
        msb = prev_msb_;
        if (lsb < prev_lsb_ && prev_lsb_ - lsb >= max_lsb / 2)
            msb += max_lsb;
        else if (lsb > prev_lsb_ && lsb - prev_lsb_ > max_lsb / 2)
            msb -= max_lsb;
    }
    order.PicOrderCntVal = msb + lsb;
    if (order.starts_cvs || (picture.temporal_id == 0 && !IsLeadingOrNonReference(type))) {
        prev_lsb_ = lsb;
        prev_msb_ = msb;
    }
    return order;
}

}  // namespace h265tool
