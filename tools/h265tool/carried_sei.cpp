#include "carried_sei.h"

#include <algorithm>
#include <utility>

#include "reading/payload.h"

namespace h265tool {
namespace {

// first_slice_segment_in_pic_flag is there also when the rest cannot be read.
bool StartsPicture(const NalUnit &unit) {
    PayloadStart<8> payload(unit);
    int first_slice_segment_in_pic_flag = 0;
    return GetNextBitEx(payload.bits(), &first_slice_segment_in_pic_flag) == 0 &&
           first_slice_segment_in_pic_flag != 0;
}

std::string ErrorOf(const UnitContent &content) {
    if (const auto *const unparsable = std::get_if<Unparsable>(&content))
        return unparsable->reason;
    const auto *const sei = std::get_if<Sei>(&content);
    if (sei == nullptr)
        return {};
    for (const SeiMessage &message : sei->messages) {
        if (const auto *const unparsable = std::get_if<Unparsable>(&message.content))
            return message.payload_name + ": " + unparsable->reason;
    }
    return sei->error;
}

// Of all temporal sub-layers.
uint64_t MaxNumReorderPics(const sps_h265_t &sps) {
    constexpr uint64_t kMax = 15;  // clause 7.4.3.2.1: MaxDpbSize - 1
    const size_t highest = std::min<size_t>(sps.sps_max_sub_layers_minus1, H265_SPS_SUB_LAYERS - 1);
    return std::min<uint64_t>(sps.sps_max_num_reorder_pics[highest], kMax);
}

template <typename Item>
void AppendAll(std::vector<Item> *items, std::vector<Item> *more) {
    items->insert(items->end(), more->begin(), more->end());
    more->clear();
}

}  // namespace

void CarriedSei::Append(const Sei &sei) {
    for (const SeiMessage &message : sei.messages) {
        if (const auto *const cc = std::get_if<SEI_cc_t>(&message.content))
            captions.push_back(*cc);
        else if (const auto *const time_code = std::get_if<sei_h265_time_code_t>(&message.content))
            time_codes.push_back(*time_code);
        else if (const auto *const format = std::get_if<SEI_afd_t>(&message.content))
            afd.push_back(*format);
    }
}

CarriedSeiReader::CarriedSeiReader(TakePicture take_picture, TakeError take_error)
    : take_picture_(std::move(take_picture)), take_error_(std::move(take_error)) {}

void CarriedSeiReader::Take(const NalUnit &unit) {
    const UnitContent content = reader_.Read(unit);
    if (const std::string error = ErrorOf(content); !error.empty())
        take_error_(unit, error);
    const std::optional<NalUnitHeader> header = unit.Header();
    if (!header.has_value() || header->nuh_layer_id > 0)
        return;
    if (const auto *const sei = std::get_if<Sei>(&content))
        TakeSei(unit, *sei);
    else if (IsSlice(header->nal_unit_type))
        TakeSlice(unit, std::get_if<Slice>(&content));
    else if (header->nal_unit_type == kEos || header->nal_unit_type == kEob)
        order_counter_.EndOfSequence();
}

void CarriedSeiReader::TakeSei(const NalUnit &unit, const Sei &sei) {
    if (unit.Header()->nal_unit_type == kPrefixSei)
        in_front_.Append(sei);
    else if (!pictures_.empty())
        pictures_.back().picture.carried.Append(sei);
}

void CarriedSeiReader::TakeSlice(const NalUnit &unit, const Slice *slice) {
    if (StartsPicture(unit) || pictures_.empty()) {
        pictures_.emplace_back().picture.number = count_++;
        if (slice != nullptr)
            TakePictureStart(unit, *slice);
        else
            pictures_.back().is_placed = true;
        HandOn();
    }
    CarriedSei &carried = pictures_.back().picture.carried;
    AppendAll(&carried.captions, &in_front_.captions);
    AppendAll(&carried.time_codes, &in_front_.time_codes);
    AppendAll(&carried.afd, &in_front_.afd);
}

void CarriedSeiReader::TakePictureStart(const NalUnit &unit, const Slice &slice) {
    const NalUnitHeader header = *unit.Header();
    const sps_h265_t &sps = slice.active.sps;
    const PictureOrder order = order_counter_.Next({header.nal_unit_type, header.nuh_temporal_id_plus1 - 1,
                                                    slice.header.slice_pic_order_cnt_lsb,
                                                    sps.log2_max_pic_order_cnt_lsb_minus4 + 4});
    const auto place = [this](uint64_t number, uint64_t presentation) {
        Waiting &waiting = pictures_[number - pictures_.front().picture.number];
        waiting.picture.presentation = presentation;
        waiting.is_placed = true;
    };
    if (order.starts_cvs)
        output_order_.Finish(place);
    Waiting &waiting = pictures_.back();
    waiting.picture.PicOrderCntVal = order.PicOrderCntVal;
    if (order.is_skipped || !slice.header.pic_output_flag)
        waiting.is_placed = true;
    else
        output_order_.Add(waiting.picture.number, order.PicOrderCntVal, MaxNumReorderPics(sps), place);
}

// The last picture stays: its suffix SEI is to come.
void CarriedSeiReader::HandOn() {
    while (pictures_.size() > 1 && pictures_.front().is_placed) {
        take_picture_(pictures_.front().picture);
        pictures_.pop_front();
    }
}

void CarriedSeiReader::Finish() {
    output_order_.Finish([this](uint64_t number, uint64_t presentation) {
        pictures_[number - pictures_.front().picture.number].picture.presentation = presentation;
    });
    for (const Waiting &waiting : pictures_)
        take_picture_(waiting.picture);
    pictures_.clear();
}

}  // namespace h265tool
