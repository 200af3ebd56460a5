// Access unit delimiters as streams have them.

#ifndef H265TOOL_READING_AUD_H
#define H265TOOL_READING_AUD_H

#include "h265.h"
#include "nal_unit.h"

namespace h265tool {

// access_unit_delimiter_rbsp( ), clause 7.3.2.5: pic_type is the first three bits behind the NAL unit header.
// (The library looks for it where data that still hold the header have it, and fails on an ordinary
// delimiter.) Throws UnitError.
aud_h265_t ReadAud(const NalUnit &unit);

}  // namespace h265tool

#endif
