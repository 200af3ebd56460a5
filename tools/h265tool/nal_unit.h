// A NAL unit of a byte stream, of which only the head is kept.

#ifndef H265TOOL_NAL_UNIT_H
#define H265TOOL_NAL_UNIT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "annexb_scanner.h"

namespace h265tool {

// nal_unit_type, Table 7-1: the values that the tool tells apart.
enum NalUnitType : unsigned int {
    kRadlN = 6,
    kRadlR = 7,
    kRaslN = 8,
    kRaslR = 9,  // the last of the slices of non-IRAP pictures
    kBlaWLp = 16,
    kBlaNLp = 18,
    kIdrWRadl = 19,
    kIdrNLp = 20,
    kCra = 21,
    kReservedIrap23 = 23,  // the last of the IRAP range
    kReservedVcl31 = 31,   // the last of the VCL NAL units
    kVps = 32,
    kSps = 33,
    kPps = 34,
    kAud = 35,
    kEos = 36,
    kEob = 37,
    kPrefixSei = 39,
    kSuffixSei = 40,
};

constexpr bool IsVcl(unsigned int nal_unit_type) {
    return nal_unit_type <= kReservedVcl31;
}

// A coded slice segment; reserved VCL types are not, as far as anybody knows.
constexpr bool IsSlice(unsigned int nal_unit_type) {
    return nal_unit_type <= kRaslR || (nal_unit_type >= kBlaWLp && nal_unit_type <= kCra);
}

constexpr bool IsIrap(unsigned int nal_unit_type) {
    return nal_unit_type >= kBlaWLp && nal_unit_type <= kReservedIrap23;
}

constexpr bool IsIdr(unsigned int nal_unit_type) {
    return nal_unit_type == kIdrWRadl || nal_unit_type == kIdrNLp;
}

constexpr bool IsBla(unsigned int nal_unit_type) {
    return nal_unit_type >= kBlaWLp && nal_unit_type <= kBlaNLp;
}

constexpr bool IsRadl(unsigned int nal_unit_type) {
    return nal_unit_type == kRadlN || nal_unit_type == kRadlR;
}

constexpr bool IsRasl(unsigned int nal_unit_type) {
    return nal_unit_type == kRaslN || nal_unit_type == kRaslR;
}

constexpr bool IsSei(unsigned int nal_unit_type) {
    return nal_unit_type == kPrefixSei || nal_unit_type == kSuffixSei;
}

// "TRAIL_N" to "UNSPEC63".
std::string_view NalUnitTypeName(unsigned int nal_unit_type);

constexpr size_t kNalUnitHeaderSize = 2;

// nal_unit_header( ), clause 7.3.1.2.
struct NalUnitHeader {
    unsigned int forbidden_zero_bit;
    unsigned int nal_unit_type;
    unsigned int nuh_layer_id;
    unsigned int nuh_temporal_id_plus1;
};

struct NalUnit {
    uint64_t offset = 0;  // in the stream, of the first byte of the start code
    uint64_t size = 0;    // bytes from there to the end of the NAL unit
    unsigned int start_code_length = 0;
    std::vector<unsigned char> head;  // the start code and the first bytes of the NAL unit, often all

    std::span<const unsigned char> HeadBehindStartCode() const {
        return std::span(head).subspan(start_code_length);
    }
    bool IsWhole() const { return head.size() == size; }
    std::optional<NalUnitHeader> Header() const;  // none when the NAL unit is shorter
};

// Collects the head of each NAL unit and hands it to `take`, which it is valid for during the call.
class NalUnitCollector : public NalUnitSink {
 public:
    // How many bytes of a NAL unit of this type are kept behind the start code.
    using Limit = std::function<size_t(unsigned int nal_unit_type)>;

    NalUnitCollector(Limit limit, std::function<void(const NalUnit &)> take);

    void Begin(uint64_t offset, unsigned int start_code_length) override;
    void Bytes(std::span<const unsigned char> bytes) override;
    void End() override;

 private:
    void Append(std::span<const unsigned char> bytes, size_t limit);

    Limit limit_;
    std::function<void(const NalUnit &)> take_;
    NalUnit unit_;
};

}  // namespace h265tool

#endif
