// The payload of a NAL unit as the syntax has it.

#ifndef H265TOOL_READING_RBSP_H
#define H265TOOL_READING_RBSP_H

#include <vector>

#include "nal_unit.h"

namespace h265tool {

// What is kept behind the NAL unit header, without emulation prevention bytes.
std::vector<unsigned char> Rbsp(const NalUnit &unit);

}  // namespace h265tool

#endif
