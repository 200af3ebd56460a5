#include "reading/isolated_message.h"

#include <utility>

#include "bitbuffer.h"

namespace h265tool {
namespace {

constexpr unsigned char kTrailingBits = 0x80;

// payloadType or payloadSize, clause 7.3.5.
void AppendSum(uint64_t value, std::vector<unsigned char> *bytes) {
    for (; value >= 0xFF; value -= 0xFF)
        bytes->push_back(0xFF);
    bytes->push_back(static_cast<unsigned char>(value));
}

}  // namespace

IsolatedMessage Isolated(const RawSeiMessage &message, const NalUnit &unit, TrailingBits trailing_bits) {
    std::vector<unsigned char> rbsp;
    AppendSum(message.payload_type, &rbsp);
    AppendSum(message.payload_size, &rbsp);
    const auto payload_index = static_cast<UINT>(rbsp.size());
    rbsp.insert(rbsp.end(), message.payload.begin(), message.payload.end());
    if (trailing_bits == TrailingBits::kWith)
        rbsp.push_back(kTrailingBits);

    std::vector<unsigned char> nal_unit(unit.head.begin(),
                                        unit.head.begin() + unit.start_code_length + kNalUnitHeaderSize);
    const size_t start = nal_unit.size();
    nal_unit.resize(start + rbsp.size() + rbsp.size() / 2);  // at most one byte more for each two
    const int length =
        RBSP_encapsulation_within_NAL(rbsp.data(), static_cast<int>(rbsp.size()), nal_unit.data() + start,
                                      static_cast<int>(nal_unit.size() - start));
    nal_unit.resize(start + static_cast<size_t>(length));
    return {std::move(nal_unit),
            {static_cast<unsigned char>(message.payload_type), static_cast<UINT>(message.payload_size),
             payload_index}};
}

}  // namespace h265tool
