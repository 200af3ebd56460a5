#include "reading/unit_reader.h"

#include <cstring>

#include "reading/aud.h"
#include "reading/vps.h"
#include "unit_error.h"

namespace h265tool {
namespace {

// More than any NAL unit that is no slice and no SEI needs; longer ones are refused by the library anyway.
constexpr size_t kNonVclHeadSize = size_t{64} << 10;

// SEI NAL units carry whatever their makers put into user data; what is longer is cut off.
constexpr size_t kSeiHeadSize = size_t{1} << 20;

// In the id of a cleared record before a parse: what is still there afterwards was not read.
constexpr UINT64 kIdNotRead = ~UINT64{0};

void CheckHeader(const NalUnitHeader &header) {
    if (header.forbidden_zero_bit != 0)
        throw UnitError("forbidden_zero_bit is 1");
    if (header.nuh_temporal_id_plus1 == 0)
        throw UnitError("nuh_temporal_id_plus1 is 0");
}

// The syntax of the base layer is not that of others, nor do their parameter sets have ids of the same kind.
bool DependsOnLayer(unsigned int nal_unit_type) {
    return IsSlice(nal_unit_type) || nal_unit_type == kVps || nal_unit_type == kSps || nal_unit_type == kPps;
}

}  // namespace

UnitReader::UnitReader()
    : vps_(std::make_unique<vps_h265_t>()),
      sps_(std::make_unique<sps_h265_t>()),
      pps_(std::make_unique<pps_h265_t>()) {}

size_t UnitReader::HeadSize(unsigned int nal_unit_type) {
    if (IsSei(nal_unit_type))
        return kSeiHeadSize;
    return IsVcl(nal_unit_type) ? kSliceHeadSize : kNonVclHeadSize;
}

UnitContent UnitReader::Read(const NalUnit &unit) {
    try {
        const std::optional<NalUnitHeader> header = unit.Header();
        if (!header.has_value())
            throw UnitError("the NAL unit header is truncated");
        CheckHeader(*header);
        return ReadWithHeader(unit, *header);
    } catch (const UnitError &error) {
        return Unparsable{error.what()};
    }
}

UnitContent UnitReader::ReadWithHeader(const NalUnit &unit, const NalUnitHeader &header) {
    if (header.nuh_layer_id > 0 && DependsOnLayer(header.nal_unit_type))
        return OtherLayer();
    if (IsSlice(header.nal_unit_type))
        return ReadSlice(unit);
    if (IsSei(header.nal_unit_type))
        return ReadSei(unit, &diagnostics_);
    switch (header.nal_unit_type) {
        case kVps:
            return ReadVps(unit);
        case kSps:
            return ReadSps(unit);
        case kPps:
            return ReadPps(unit);
        case kAud:
            return ReadAud(unit);
        default:
            return std::monostate{};
    }
}

Slice UnitReader::ReadSlice(const NalUnit &unit) {
    Slice slice = h265tool::ReadSlice(unit, sets_, &diagnostics_);
    last_sps_id_ = slice.active.sps.seq_parameter_set_id;
    return slice;
}

void UnitReader::ReadPicTimings(const Slice *slice, Sei *sei) {
    const sps_h265_t *sps = nullptr;
    if (slice != nullptr)
        sps = &slice->active.sps;
    else if (last_sps_id_.has_value())
        sps = sets_.FindSps(*last_sps_id_);
    else
        sps = sets_.OnlySps();
    h265tool::ReadPicTimings(sps, &diagnostics_, sei);
}

const vps_h265_t *UnitReader::ReadVps(const NalUnit &unit) {
    if (vps_bytes_ == unit.head)
        return vps_.get();
    vps_bytes_.clear();
    if (!h265tool::ReadVps(unit, &diagnostics_, vps_.get()))
        throw UnitError(diagnostics_.FirstError());
    vps_bytes_ = unit.head;
    return vps_.get();
}

const sps_h265_t *UnitReader::ReadSps(const NalUnit &unit) {
    if (sps_bytes_ == unit.head)
        return sps_.get();
    sps_bytes_.clear();
    std::memset(sps_.get(), 0, sizeof *sps_);
    sps_->seq_parameter_set_id = kIdNotRead;
    diagnostics_.Clear();
    if (!H265Lib_Parse_sps_nal(unit.head.data(), unit.head.size(), sps_.get())) {
        sets_.MarkUnreadableSps(sps_->seq_parameter_set_id);
        throw UnitError(diagnostics_.FirstError());
    }
    sets_.Keep(*sps_);
    sps_bytes_ = unit.head;
    return sps_.get();
}

const pps_h265_t *UnitReader::ReadPps(const NalUnit &unit) {
    if (pps_bytes_ == unit.head)
        return pps_.get();
    pps_bytes_.clear();
    std::memset(pps_.get(), 0, sizeof *pps_);
    pps_->pps_pic_parameter_set_id = kIdNotRead;
    diagnostics_.Clear();
    if (!H265Lib_Parse_pps_nal(unit.head.data(), static_cast<int>(unit.head.size()), pps_.get())) {
        sets_.MarkUnreadablePps(pps_->pps_pic_parameter_set_id);
        throw UnitError(diagnostics_.FirstError());
    }
    sets_.Keep(*pps_);
    pps_bytes_ = unit.head;
    return pps_.get();
}

}  // namespace h265tool
