// The messages of a SEI NAL unit, one by one.

#ifndef H265TOOL_INSERT_SEI_MESSAGES_H
#define H265TOOL_INSERT_SEI_MESSAGES_H

#include <optional>
#include <vector>

#include "h265.h"
#include "nal_unit.h"

namespace h265tool {

// The messages that the tool inserts.
enum class SeiKind { kOther, kCaptions, kAfd, kTimeCode, kPrecisionTime, kPicTiming };

constexpr size_t kSeiKinds = 6;

struct SeiPart {
    SeiKind kind;
    SEI_message_t header;              // as the library's parsers want it
    std::vector<unsigned char> bytes;  // sei_message( ) as a whole, without emulation prevention
};

// A SEI NAL unit of the base layer: of other layers, they concern other pictures.
bool IsBaseLayerSei(const NalUnit &unit);

// sei_rbsp( ), clause 7.3.2.4. None when the NAL unit holds something else, or is not whole.
std::optional<std::vector<SeiPart>> SplitSei(const NalUnit &unit);

// The NAL unit with these messages: the start code and the header stay.
std::vector<unsigned char> JoinSei(const NalUnit &unit, const std::vector<SeiPart> &messages);

}  // namespace h265tool

#endif
