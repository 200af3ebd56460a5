// Video parameter sets with all their HRDs.

#ifndef H265TOOL_READING_VPS_H
#define H265TOOL_READING_VPS_H

#include "diagnostics.h"
#include "h265.h"
#include "nal_unit.h"

namespace h265tool {

// H265Lib_Parse_vps_nal into a cleared record, with what the library leaves to its caller: the value 1 that
// H.265 infers for cprms_present_flag[0], and the common part of an HRD that has none of its own, which is
// that of the HRD before it (clause 7.4.3.1). False: `diagnostics` says why.
bool ReadVps(const NalUnit &unit, Diagnostics *diagnostics, vps_h265_t *vps);

}  // namespace h265tool

#endif
