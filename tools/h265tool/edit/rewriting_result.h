// The tool trusts no rewriting: it reads the result, and compares it with what was asked for.

#ifndef H265TOOL_EDIT_REWRITING_RESULT_H
#define H265TOOL_EDIT_REWRITING_RESULT_H

#include <span>

#include "json/json.h"
#include "nal_unit.h"

namespace h265tool {

// The NAL unit with these bytes, start code included, up to its trailing bits. Throws UnitError when they are
// a header alone: that is what the library's rewriting gives when the payload did not fit.
NalUnit Rewritten(const NalUnit &unit, std::span<const unsigned char> bytes);

// Throws UnitError when the NAL unit holds something else than was asked for.
void CheckRewritten(const Json &expected, const Json &actual);

}  // namespace h265tool

#endif
