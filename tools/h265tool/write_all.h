// Writes to a descriptor.

#ifndef H265TOOL_WRITE_ALL_H
#define H265TOOL_WRITE_ALL_H

#include <span>

namespace h265tool {

// Also what takes more than one call, or is interrupted. Returns 0, or the number of the error.
int WriteAll(int descriptor, std::span<const unsigned char> bytes);

}  // namespace h265tool

#endif
