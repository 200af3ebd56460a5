#include "insert/access_units.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "text.h"
#include "unit_error.h"

namespace h265tool {
namespace {

// NAL units of the base layer in front of which an access unit begins, when the last slice of the one before
// has come: VPS, SPS, PPS, AUD, prefix SEI, reserved and unspecified ones that may begin access units.
bool IsInFrontOfPictures(unsigned int nal_unit_type) {
    return (nal_unit_type >= kVps && nal_unit_type <= kAud) || nal_unit_type == kPrefixSei ||
           (nal_unit_type >= 41 && nal_unit_type <= 44) || (nal_unit_type >= 48 && nal_unit_type <= 55);
}

// pic_type of an access unit delimiter that a slice needs, Table 7-2: I 0, P 1, B 2.
unsigned int PicTypeOf(uint64_t slice_type) {
    return slice_type > 2 ? 2 : static_cast<unsigned int>(2 - slice_type);
}

}  // namespace

void AccessUnitSplitter::Take(const NalUnit &unit) {
    const UnitContent content = reader_.Read(unit);
    const std::optional<NalUnitHeader> header = unit.Header();
    const Slice *const slice = std::get_if<Slice>(&content);
    if (const auto *unparsable = std::get_if<Unparsable>(&content);
        unparsable != nullptr && header.has_value() && IsSlice(header->nal_unit_type))
        throw UnitError(unparsable->reason);
    if (header.has_value() && header->nuh_layer_id == 0) {
        if (StartsAccessUnit(*header, slice))
            Begin(unit);
        if (slice != nullptr)
            TakeSlice(*header, *slice);
        else if (header->nal_unit_type == kAud && in_access_unit_)
            layout_.access_units.back().has_delimiter = true;
        else if (header->nal_unit_type == kSps)
            sps_came_ = true;
        else if (IsBaseLayerSei(unit) && in_access_unit_)
            TakeSei(unit);

        if (header->nal_unit_type == kEos || header->nal_unit_type == kEob)
            order_.EndOfSequence();
        if (header->nal_unit_type == kEos)
            ends_sequence_ = true;
        if (header->nal_unit_type == kEob)
            end_of_bitstream_ = units_;
    }
    units_++;
}

bool AccessUnitSplitter::StartsAccessUnit(const NalUnitHeader &header, const Slice *slice) const {
    if (in_access_unit_ && !in_picture_)
        return false;  // it waits for its first slice
    return IsInFrontOfPictures(header.nal_unit_type) ||
           (slice != nullptr && slice->header.first_slice_segment_in_pic_flag);
}

void AccessUnitSplitter::Begin(const NalUnit &unit) {
    AccessUnit access_unit;
    access_unit.offset = unit.offset;
    access_unit.first_unit = units_;
    layout_.access_units.push_back(std::move(access_unit));
    in_access_unit_ = true;
    in_picture_ = false;
    ends_sequence_ = false;
    end_of_bitstream_.reset();
    pic_timing_unit_.reset();
}

void AccessUnitSplitter::TakeSlice(const NalUnitHeader &header, const Slice &slice) {
    if (slice.header.first_slice_segment_in_pic_flag)
        BeginPicture(header, slice);
    else if (!in_picture_)
        throw UnitError("the first slice segment of the picture is missing");
    AccessUnit &access_unit = layout_.access_units.back();
    if (!slice.header.dependent_slice_segment_flag)
        access_unit.pic_type = std::max(access_unit.pic_type, PicTypeOf(slice.header.slice_type));
}

void AccessUnitSplitter::BeginPicture(const NalUnitHeader &header, const Slice &slice) {
    AccessUnit &access_unit = layout_.access_units.back();
    const sps_h265_t &sps = slice.active.sps;
    access_unit.first_slice = units_;
    access_unit.temporal_id = header.nuh_temporal_id_plus1 - 1;
    access_unit.sps = Shared(sps);
    const PictureOrder order =
        order_.Next({header.nal_unit_type, access_unit.temporal_id, slice.header.slice_pic_order_cnt_lsb,
                     static_cast<unsigned int>(sps.log2_max_pic_order_cnt_lsb_minus4 + 4)});
    access_unit.PicOrderCntVal = order.PicOrderCntVal;
    access_unit.starts_cvs = order.starts_cvs;
    access_unit.is_output = slice.header.pic_output_flag && !order.is_skipped;
    in_picture_ = true;
    if (pic_timing_unit_.has_value())
        ParsePicTiming();
}

void AccessUnitSplitter::TakeSei(const NalUnit &unit) {
    const std::optional<std::vector<SeiPart>> messages = SplitSei(unit);
    if (!messages.has_value())
        return;
    for (const SeiPart &message : *messages) {
        layout_.access_units.back().has.set(static_cast<size_t>(message.kind));
        if (message.kind == SeiKind::kPicTiming) {
            pic_timing_unit_ = unit;
            pic_timing_header_ = message.header;
        }
    }
}

void AccessUnitSplitter::ParsePicTiming() {
    AccessUnit &access_unit = layout_.access_units.back();
    // a message that cannot be read is as good as none
    const auto record = std::make_unique<sei_h265_pic_timing_t>();
    if (H265Lib_Parse_sei_pictiming_nal(pic_timing_unit_->head.data(),
                                        static_cast<int>(pic_timing_unit_->head.size()), &pic_timing_header_,
                                        &access_unit.sps->vui, record.get()))
        access_unit.pic_timing = {record->source_scan_type, record->duplicate_flag,
                                  record->au_cpb_removal_delay_minus1, record->pic_dpb_output_delay};
}

// Streams repeat their parameter sets: one copy of each that differs from the one before. Padding that
// differs would only cost a copy more.
std::shared_ptr<const sps_h265_t> AccessUnitSplitter::Shared(const sps_h265_t &sps) {
    const bool is_last = last_sps_ != nullptr && last_sps_->seq_parameter_set_id == sps.seq_parameter_set_id;
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    if (!is_last || (sps_came_ && std::memcmp(last_sps_.get(), &sps, sizeof sps) != 0))
        last_sps_ = std::make_shared<const sps_h265_t>(sps);
    sps_came_ = false;
    return last_sps_;
}

StreamLayout AccessUnitSplitter::Finish() {
    std::vector<AccessUnit> &access_units = layout_.access_units;
    if (in_access_unit_ && !in_picture_)
        access_units.pop_back();  // parameter sets or the like without a picture
    if (access_units.empty())
        throw UnitError("it holds no picture");
    if (!ends_sequence_)
        layout_.end_of_sequence = end_of_bitstream_.value_or(units_);
    NumberPresentation(&access_units);
    return std::move(layout_);
}

void NumberPresentation(std::vector<AccessUnit> *access_units) {
    uint64_t presented = 0;
    for (auto begin = access_units->begin(); begin != access_units->end();) {
        const auto end = std::find_if(begin + 1, access_units->end(),
                                      [](const AccessUnit &access_unit) { return access_unit.starts_cvs; });
        std::vector<AccessUnit *> sequence;
        for (auto at = begin; at != end; ++at)
            sequence.push_back(&*at);
        std::stable_sort(sequence.begin(), sequence.end(), [](const AccessUnit *a, const AccessUnit *b) {
            return a->PicOrderCntVal < b->PicOrderCntVal;
        });
        for (AccessUnit *access_unit : sequence) {
            access_unit->presentation = presented;
            presented += access_unit->is_output ? 1 : 0;
        }
        begin = end;
    }
}

}  // namespace h265tool
