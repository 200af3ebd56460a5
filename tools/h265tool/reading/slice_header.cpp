#include "reading/slice_header.h"

#include "reading/payload.h"
#include "unit_error.h"

namespace h265tool {
namespace {

// The start of slice_segment_header( ), clause 7.3.6.1: what comes before anything that depends on parameter
// sets.
uint64_t ReadPpsId(const NalUnit &unit, unsigned int nal_unit_type) {
    constexpr size_t kUpToPpsId = 16;  // header, flags and the longest id, with emulation prevention
    PayloadStart<kUpToPpsId> payload(unit);
    bitbuffer_t *const bits = payload.bits();
    AdvanceBitOffset(bits, 1);  // first_slice_segment_in_pic_flag
    if (IsIrap(nal_unit_type))
        AdvanceBitOffset(bits, 1);  // no_output_of_prior_pics_flag
    uint32_t slice_pic_parameter_set_id = 0;
    if (GetUint32Golomb(bits, &slice_pic_parameter_set_id) != 0)
        throw UnitError("failed to get slice_pic_parameter_set_id.");
    return slice_pic_parameter_set_id;
}

}  // namespace

Slice ReadSlice(const NalUnit &unit, const ParameterSets &sets, Diagnostics *diagnostics) {
    const unsigned int nal_unit_type = unit.Header()->nal_unit_type;
    const ActiveSets active = sets.Activated(ReadPpsId(unit, nal_unit_type));
    Slice slice{nal_unit_type, active, {}};
    diagnostics->Clear();
    if (!H265Lib_Parse_slice_header_nal(unit.head.data(), static_cast<int>(unit.head.size()),
                                        &active.sps_for_slices, &active.pps, &slice.header))
        throw UnitError(diagnostics->FirstError());
    return slice;
}

}  // namespace h265tool
