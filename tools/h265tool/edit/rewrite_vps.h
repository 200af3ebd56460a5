// A VPS with other content.

#ifndef H265TOOL_EDIT_REWRITE_VPS_H
#define H265TOOL_EDIT_REWRITE_VPS_H

#include "diagnostics.h"
#include "h265.h"
#include "nal_unit.h"

namespace h265tool {

// The VPS, which was read into `vps`, with interlaced source material. Throws UnitError.
NalUnit InterlacedVps(const NalUnit &unit, const vps_h265_t &vps, Diagnostics *diagnostics);

}  // namespace h265tool

#endif
