// NAL units made from payload bytes, by plain byte loops.

#ifndef TESTS_SUPPORT_NAL_UNIT_H
#define TESTS_SUPPORT_NAL_UNIT_H

#include <cstddef>
#include <vector>

namespace test {

using Bytes = std::vector<unsigned char>;

// Inserts emulation prevention bytes.
Bytes Encapsulated(const Bytes &rbsp);

// Start code of 3 or 4 bytes, NAL unit header (layer 0, temporal id 0), encapsulated payload.
Bytes NalUnit(int nal_unit_type, const Bytes &rbsp, int start_code_length = 4);

}  // namespace test

#endif
