// SEI payload types and their names, ITU-T H.265 clause D.2.1.

#ifndef H265TOOL_SEI_NAMES_H
#define H265TOOL_SEI_NAMES_H

#include <cstdint>
#include <string>

namespace h265tool {

// payloadType: the values that the tool tells apart.
enum SeiPayloadType : unsigned int {
    kBufferingPeriod = 0,
    kPicTiming = 1,
    kUserDataRegistered = 4,
    kUserDataUnregistered = 5,
    kActiveParameterSets = 129,
    kDecodingUnitInfo = 130,
    kTimeCode = 136,
};

constexpr char kReservedSeiMessage[] = "reserved_sei_message";

// "buffering_period"; "reserved_sei_message" for types that mean nothing in a NAL unit of this type.
std::string SeiPayloadName(uint64_t payload_type, unsigned int nal_unit_type);

}  // namespace h265tool

#endif
