// Picture timing with another pic_struct.

#ifndef H265TOOL_EDIT_REWRITE_PIC_TIMING_H
#define H265TOOL_EDIT_REWRITE_PIC_TIMING_H

#include "diagnostics.h"
#include "h265.h"
#include "nal_unit.h"
#include "reading/sei.h"

namespace h265tool {

// The SEI NAL unit with this pic_struct in all its picture timing messages, and `sei`, which it was read
// into, too. `sps` is the active SPS, with frame_field_info_present_flag. Throws UnitError.
NalUnit WithPicStruct(const NalUnit &unit, unsigned char pic_struct, const sps_h265_t &sps, Sei *sei,
                      Diagnostics *diagnostics);

}  // namespace h265tool

#endif
