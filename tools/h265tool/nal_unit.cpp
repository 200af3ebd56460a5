#include "nal_unit.h"

#include <algorithm>
#include <array>
#include <utility>

#include "h265.h"

namespace h265tool {

std::string_view NalUnitTypeName(unsigned int nal_unit_type) {
    constexpr unsigned int kNotNamedByLibrary = 49;
    static constexpr std::array kNames = {"UNSPEC49", "UNSPEC50", "UNSPEC51", "UNSPEC52", "UNSPEC53",
                                          "UNSPEC54", "UNSPEC55", "UNSPEC56", "UNSPEC57", "UNSPEC58",
                                          "UNSPEC59", "UNSPEC60", "UNSPEC61", "UNSPEC62", "UNSPEC63"};
    return nal_unit_type < kNotNamedByLibrary ? GetH265NalTypeString(nal_unit_type)
                                              : kNames.at(nal_unit_type - kNotNamedByLibrary);
}

std::optional<NalUnitHeader> NalUnit::Header() const {
    const std::span bytes = HeadBehindStartCode();
    if (bytes.size() < kNalUnitHeaderSize)
        return std::nullopt;
    const unsigned int bits = static_cast<unsigned int>(bytes[0]) << 8 | bytes[1];
    return NalUnitHeader{bits >> 15, bits >> 9 & 0x3F, bits >> 3 & 0x3F, bits & 7};
}

NalUnitCollector::NalUnitCollector(Limit limit, std::function<void(const NalUnit &)> take)
    : limit_(std::move(limit)), take_(std::move(take)) {}

void NalUnitCollector::Begin(uint64_t offset, unsigned int start_code_length) {
    unit_.offset = offset;
    unit_.size = start_code_length;
    unit_.start_code_length = start_code_length;
    unit_.head.assign(start_code_length, 0);
    unit_.head.back() = 1;
}

void NalUnitCollector::Bytes(std::span<const unsigned char> bytes) {
    unit_.size += bytes.size();
    // the type is known, and with it the limit, when the header is there: its bytes may come one by one
    if (!unit_.Header().has_value()) {
        const size_t missing = kNalUnitHeaderSize - unit_.HeadBehindStartCode().size();
        const size_t count = std::min(missing, bytes.size());
        Append(bytes.first(count), kNalUnitHeaderSize);
        bytes = bytes.subspan(count);
    }
    if (!bytes.empty())
        Append(bytes, std::max(kNalUnitHeaderSize, limit_(unit_.Header()->nal_unit_type)));
}

void NalUnitCollector::Append(std::span<const unsigned char> bytes, size_t limit) {
    const size_t room = limit - std::min(limit, unit_.HeadBehindStartCode().size());
    const std::span kept = bytes.first(std::min(room, bytes.size()));
    unit_.head.insert(unit_.head.end(), kept.begin(), kept.end());
}

void NalUnitCollector::End() {
    take_(unit_);
}

}  // namespace h265tool
