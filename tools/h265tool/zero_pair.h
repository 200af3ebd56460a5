// The inner loop of the start code search.

#ifndef H265TOOL_ZERO_PAIR_H
#define H265TOOL_ZERO_PAIR_H

#include <cstddef>
#include <span>

namespace h265tool {

// The position of the first two zero bytes in a row; bytes.size() when there are none.
size_t FindZeroPair(std::span<const unsigned char> bytes);

}  // namespace h265tool

#endif
