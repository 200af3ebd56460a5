#include "insert/sei_messages.h"

#include <algorithm>
#include <array>
#include <span>

#include "bitbuffer.h"
#include "reading/rbsp.h"
#include "reading/sei_walk.h"
#include "sei_names.h"

namespace h265tool {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kTrailingBits = 0x80;

// United States, ATSC, then user identifier and user data type code.
constexpr std::array<unsigned char, 8> kCaptionsStart = {0xB5, 0x00, 0x31, 'G', 'A', '9', '4', 3};
constexpr std::array<unsigned char, 7> kAfdStart = {0xB5, 0x00, 0x31, 'D', 'T', 'G', '1'};

// MISB ST 0604.
constexpr std::array<unsigned char, 16> kPrecisionTimeUuid = {0xA8, 0x68, 0x7D, 0xD4, 0xD7, 0x59, 0x37, 0x58,
                                                              0xA5, 0xCE, 0xF0, 0x33, 0x8B, 0x65, 0x45, 0xF1};

bool StartsWith(std::span<const unsigned char> payload, std::span<const unsigned char> start) {
    return payload.size() >= start.size() && std::equal(start.begin(), start.end(), payload.begin());
}

SeiKind KindOf(uint64_t payload_type, std::span<const unsigned char> payload) {
    if (payload_type == kPicTiming)
        return SeiKind::kPicTiming;
    if (payload_type == kTimeCode)
        return SeiKind::kTimeCode;
    if (payload_type == kUserDataRegistered && StartsWith(payload, kCaptionsStart))
        return SeiKind::kCaptions;
    if (payload_type == kUserDataRegistered && StartsWith(payload, kAfdStart))
        return SeiKind::kAfd;
    if (payload_type == kUserDataUnregistered && StartsWith(payload, kPrecisionTimeUuid))
        return SeiKind::kPrecisionTime;
    return SeiKind::kOther;
}

}  // namespace

bool IsBaseLayerSei(const NalUnit &unit) {
    const std::optional<NalUnitHeader> header = unit.Header();
    return header.has_value() && header->nuh_layer_id == 0 && IsSei(header->nal_unit_type);
}

std::optional<std::vector<SeiPart>> SplitSei(const NalUnit &unit) {
    if (!unit.IsWhole())
        return std::nullopt;
    const Bytes rbsp = Rbsp(unit);
    const SeiWalk walk = WalkSei(rbsp);
    if (!walk.error.empty())
        return std::nullopt;
    std::vector<SeiPart> parts;
    auto begin = rbsp.begin();
    for (const RawSeiMessage &message : walk.messages) {
        const SEI_message_t header{static_cast<unsigned char>(message.payload_type),
                                   static_cast<UINT>(message.payload_size),
                                   static_cast<UINT>(message.payload_index)};
        const auto end =
            rbsp.begin() + static_cast<std::ptrdiff_t>(message.payload_index + message.payload.size());
        parts.push_back({KindOf(message.payload_type, message.payload), header, Bytes(begin, end)});
        begin = end;
    }
    return parts;
}

std::vector<unsigned char> JoinSei(const NalUnit &unit, const std::vector<SeiPart> &messages) {
    Bytes rbsp;
    for (const SeiPart &message : messages)
        rbsp.insert(rbsp.end(), message.bytes.begin(), message.bytes.end());
    rbsp.push_back(kTrailingBits);

    const size_t header_end = unit.start_code_length + kNalUnitHeaderSize;
    Bytes joined(header_end + rbsp.size() +
                 rbsp.size() / 2);  // a byte of emulation prevention after each two
    std::copy_n(unit.head.begin(), header_end, joined.begin());
    const int length =
        RBSP_encapsulation_within_NAL(rbsp.data(), static_cast<int>(rbsp.size()), joined.data() + header_end,
                                      static_cast<int>(joined.size() - header_end));
    joined.resize(header_end + static_cast<size_t>(length));
    return joined;
}

}  // namespace h265tool
