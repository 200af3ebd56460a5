// Slice segment headers with the parameter sets that they refer to.

#ifndef H265TOOL_READING_SLICE_HEADER_H
#define H265TOOL_READING_SLICE_HEADER_H

#include "diagnostics.h"
#include "h265.h"
#include "nal_unit.h"
#include "parameter_sets.h"

namespace h265tool {

// The fields of ssh_h265_t end within so many bytes of a NAL unit.
constexpr size_t kSliceHeadSize = 96;

struct Slice {
    unsigned int nal_unit_type;
    ActiveSets active;
    ssh_h265_t header;
};

// Throws UnitError.
Slice ReadSlice(const NalUnit &unit, const ParameterSets &sets, Diagnostics *diagnostics);

}  // namespace h265tool

#endif
