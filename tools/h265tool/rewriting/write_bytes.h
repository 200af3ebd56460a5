// Where the bytes of a rewritten stream go.

#ifndef H265TOOL_REWRITING_WRITE_BYTES_H
#define H265TOOL_REWRITING_WRITE_BYTES_H

#include <cstdint>
#include <functional>
#include <span>

namespace h265tool {

using WriteBytes = std::function<void(std::span<const unsigned char>)>;

// The zero bytes between NAL units belong to none, and are as many afterwards as before.
void WriteZeros(const WriteBytes &write, uint64_t count);

}  // namespace h265tool

#endif
