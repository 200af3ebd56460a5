#include "reading/sei_walk.h"

#include <optional>

#include "text.h"

namespace h265tool {
namespace {

using Bytes = std::span<const unsigned char>;

// The messages without rbsp_trailing_bits( ), which are a byte of their own since payloads end on byte
// boundaries.
Bytes WithoutTrailingBits(Bytes rbsp) {
    while (!rbsp.empty() && rbsp.back() == 0)
        rbsp = rbsp.first(rbsp.size() - 1);
    if (!rbsp.empty() && rbsp.back() == 0x80)
        rbsp = rbsp.first(rbsp.size() - 1);
    return rbsp;
}

// payloadType or payloadSize: the bytes up to the first that is not 0xFF, added up.
std::optional<uint64_t> ReadSum(Bytes bytes, size_t *at) {
    uint64_t sum = 0;
    while (*at < bytes.size()) {
        const unsigned char byte = bytes[(*at)++];
        sum += byte;
        if (byte != 0xFF)
            return sum;
    }
    return std::nullopt;
}

}  // namespace

SeiWalk WalkSei(Bytes rbsp) {
    const Bytes bytes = WithoutTrailingBits(rbsp);
    SeiWalk walk;
    if (bytes.empty())
        walk.error = "it holds no SEI message";
    for (size_t at = 0; at < bytes.size();) {
        const std::optional<uint64_t> type = ReadSum(bytes, &at);
        const std::optional<uint64_t> size = ReadSum(bytes, &at);
        if (!type.has_value() || !size.has_value()) {
            walk.error = "the header of a SEI message is truncated";
            return walk;
        }
        if (*size > bytes.size() - at) {
            walk.error = Text("the payload of a SEI message of type ", *type, " has ", *size,
                              " bytes, but there are ", bytes.size() - at);
            return walk;
        }
        walk.messages.push_back({*type, *size, at, bytes.subspan(at, *size)});
        at += *size;
    }
    return walk;
}

}  // namespace h265tool
