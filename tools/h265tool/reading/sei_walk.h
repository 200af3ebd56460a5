// Finds the messages of a SEI NAL unit.

#ifndef H265TOOL_READING_SEI_WALK_H
#define H265TOOL_READING_SEI_WALK_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace h265tool {

// One sei_message( ), clause 7.3.5.
struct RawSeiMessage {
    uint64_t payload_type = 0;
    uint64_t payload_size = 0;
    size_t payload_index = 0;                // of the payload's first byte, in the walked bytes
    std::span<const unsigned char> payload;  // part of them
};

struct SeiWalk {
    std::vector<RawSeiMessage> messages;
    std::string error;  // why the walk ended early; empty when it did not
};

// Walks through sei_rbsp( ), the bytes behind the NAL unit header without emulation prevention bytes. Types
// and sizes of 255 and more are read as H.265 codes them: a byte 0xFF for each 255 in front of the rest.
SeiWalk WalkSei(std::span<const unsigned char> rbsp);

}  // namespace h265tool

#endif
