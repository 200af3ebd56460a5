// Byte streams and NAL units, taken apart by plain loops.

#ifndef FUZZ_SUPPORT_BYTE_STREAM_H
#define FUZZ_SUPPORT_BYTE_STREAM_H

#include "support/fuzz_input.h"

namespace fuzz {

inline constexpr size_t kNalUnitHeaderSize = 2;

// 3 or 4; 0 when the bytes do not begin with a start code.
size_t StartCodeLength(const Bytes &bytes);

// 0 when there is no header.
int NalUnitType(const Bytes &nal);

// The NAL units of a stream, each with its start code; what stands in front of the first one is dropped.
std::vector<Bytes> Split(const Bytes &stream);

// Without emulation prevention bytes.
Bytes Decapsulated(const Bytes &payload);

// What stands behind start code and header, without emulation prevention bytes; empty without a start code.
Bytes Sodb(const Bytes &nal);

// Sets n bits of a byte string, from a position on that counts from the top bit of the first byte.
void SetBits(Bytes *bytes, size_t position, unsigned int n, unsigned int value);

}  // namespace fuzz

#endif
