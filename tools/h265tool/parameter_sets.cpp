#include "parameter_sets.h"

#include <string>

#include "text.h"
#include "unit_error.h"

namespace h265tool {
namespace {

void CheckId(const char *element, uint64_t id, uint64_t max) {
    if (id > max)
        throw UnitError(Text(element, " is ", id, ", above ", max));
}

// The set in a slot; `reference` gives the words for who asks for it ("refers to PPS 3").
template <typename Slots, typename Reference>
const auto &Referenced(const Slots &slots, uint64_t id, Reference reference) {
    if (id >= slots.size() || (slots[id].set == nullptr && !slots[id].unreadable))
        throw UnitError(Text(reference(), ", which the stream has not carried"));
    if (slots[id].unreadable)
        throw UnitError(Text(reference(), ", which could not be parsed"));
    return *slots[id].set;
}

}  // namespace

void ParameterSets::Keep(const sps_h265_t &sps) {
    CheckId("sps_seq_parameter_set_id", sps.seq_parameter_set_id, kMaxSpsId);
    Slot<Sps> &slot = sps_[sps.seq_parameter_set_id];
    if (slot.set == nullptr)
        slot.set = std::make_unique<Sps>();
    slot.set->sps = sps;
    slot.set->for_slices = SpsForSlices(sps);
    slot.unreadable = false;
}

void ParameterSets::Keep(const pps_h265_t &pps) {
    CheckId("pps_pic_parameter_set_id", pps.pps_pic_parameter_set_id, kMaxPpsId);
    Slot<pps_h265_t> &slot = pps_[pps.pps_pic_parameter_set_id];
    slot.set = std::make_unique<pps_h265_t>(pps);
    slot.unreadable = false;
}

void ParameterSets::MarkUnreadableSps(uint64_t id) {
    if (id <= kMaxSpsId)
        sps_[id] = {nullptr, true};
}

void ParameterSets::MarkUnreadablePps(uint64_t id) {
    if (id <= kMaxPpsId)
        pps_[id] = {nullptr, true};
}

ActiveSets ParameterSets::Activated(uint64_t slice_pic_parameter_set_id) const {
    const auto to_pps = [&] { return Text("refers to PPS ", slice_pic_parameter_set_id); };
    const pps_h265_t &pps = Referenced(pps_, slice_pic_parameter_set_id, to_pps);
    const auto to_sps = [&] { return Text(to_pps(), " and SPS ", pps.pps_seq_parameter_set_id); };
    const Sps &sps = Referenced(sps_, pps.pps_seq_parameter_set_id, to_sps);
    return {sps.sps, pps, sps.for_slices};
}

const sps_h265_t *ParameterSets::FindSps(uint64_t id) const {
    return id < sps_.size() && sps_[id].set != nullptr ? &sps_[id].set->sps : nullptr;
}

const sps_h265_t *ParameterSets::OnlySps() const {
    const sps_h265_t *only = nullptr;
    for (const Slot<Sps> &slot : sps_) {
        if (slot.set == nullptr)
            continue;
        if (only != nullptr)
            return nullptr;
        only = &slot.set->sps;
    }
    return only;
}

sps_h265_t SpsForSlices(const sps_h265_t &sps) {
    constexpr uint64_t kMaxCtbLog2Size = 6;  // clause 7.4.3.2.1
    sps_h265_t copy = sps;
    if (sps.log2_min_luma_coding_block_size_minus3 > kMaxCtbLog2Size ||
        sps.log2_diff_max_min_luma_coding_block_size > kMaxCtbLog2Size)
        return copy;  // no H.265 picture: the library's reading is as good as any
    const uint64_t CtbLog2SizeY =
        sps.log2_min_luma_coding_block_size_minus3 + 3 + sps.log2_diff_max_min_luma_coding_block_size;
    const uint64_t CtbSizeY = uint64_t{1} << CtbLog2SizeY;
    const auto in_ctbs = [CtbSizeY](uint64_t samples) { return (samples + CtbSizeY - 1) / CtbSizeY; };
    const uint64_t PicSizeInCtbsY =
        in_ctbs(sps.pic_width_in_luma_samples) * in_ctbs(sps.pic_height_in_luma_samples);
    if (PicSizeInCtbsY < 2)
        return copy;
    copy.pic_width_in_luma_samples = (PicSizeInCtbsY - 1) * CtbSizeY;
    copy.pic_height_in_luma_samples = CtbSizeY;
    return copy;
}

}  // namespace h265tool
