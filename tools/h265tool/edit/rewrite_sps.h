// An SPS with other content.

#ifndef H265TOOL_EDIT_REWRITE_SPS_H
#define H265TOOL_EDIT_REWRITE_SPS_H

#include <memory>

#include "diagnostics.h"
#include "h265.h"
#include "nal_unit.h"

namespace h265tool {

struct RewrittenSps {
    NalUnit unit;
    std::unique_ptr<sps_h265_t> sps;  // as it is read from there
};

// The SPS, which was read into `sps`, with what is different in `edited`. Throws UnitError.
//
// When only the VUI is, nothing else changes. Otherwise general_non_packed_constraint_flag and
// general_frame_only_constraint_flag become 0, and an SPS without VUI gets one that says what none says.
RewrittenSps RewriteSps(const NalUnit &unit, const sps_h265_t &sps, const sps_h265_t &edited,
                        Diagnostics *diagnostics);

}  // namespace h265tool

#endif
