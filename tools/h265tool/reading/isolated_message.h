// A SEI message in a NAL unit of its own.

#ifndef H265TOOL_READING_ISOLATED_MESSAGE_H
#define H265TOOL_READING_ISOLATED_MESSAGE_H

#include <vector>

#include "h265.h"
#include "nal_unit.h"
#include "reading/sei_walk.h"

namespace h265tool {

// What the library's parsers take.
struct IsolatedMessage {
    std::vector<unsigned char> nal_unit;
    SEI_message_t header;

    int Length() const { return static_cast<int>(nal_unit.size()); }
};

enum class TrailingBits { kWith, kWithout };

// The message of `unit` in a NAL unit like it: the library looks for the first of a kind, and cannot read on
// behind the payload's end there. Without trailing bits they cannot be taken for the payload either.
IsolatedMessage Isolated(const RawSeiMessage &message, const NalUnit &unit, TrailingBits trailing_bits);

}  // namespace h265tool

#endif
