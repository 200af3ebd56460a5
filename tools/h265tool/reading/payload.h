// The bits at the start of a NAL unit's payload, for what the tool reads by itself.

#ifndef H265TOOL_READING_PAYLOAD_H
#define H265TOOL_READING_PAYLOAD_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "bitbuffer.h"
#include "h265.h"
#include "nal_unit.h"

namespace h265tool {

// The first `size` bytes behind the start code, de-encapsulated, as a cursor behind the NAL unit header.
template <size_t size>
class PayloadStart {
 public:
    // The NAL unit has a whole header.
    explicit PayloadStart(const NalUnit &unit) {
        const std::span bytes = unit.HeadBehindStartCode();
        const auto length = static_cast<unsigned int>(std::min(bytes.size(), size));
        const int count = H265Lib_SODB_deencapsulation_from_NAL(bytes.data(), length, bytes_.data(), size);
        bits_.bit_buffer = bytes_.data();
        bits_.num_bits = count > 0 ? static_cast<unsigned int>(count) * 8 : 0;
    }
    PayloadStart(const PayloadStart &) = delete;
    PayloadStart &operator=(const PayloadStart &) = delete;

    bitbuffer_t *bits() { return &bits_; }

 private:
    std::array<unsigned char, size> bytes_{};
    bitbuffer_t bits_{};
};

}  // namespace h265tool

#endif
