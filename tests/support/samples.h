// The NAL units of the sample streams.

#ifndef TESTS_SUPPORT_SAMPLES_H
#define TESTS_SUPPORT_SAMPLES_H

#include <string>
#include <vector>

#include "support/nal_unit.h"

namespace test {

// The NAL units of a file of tests/samples, each with its three-byte start code and without trailing zeros.
std::vector<Bytes> SampleNalUnits(const std::string &file);

// Those of one nal_unit_type.
std::vector<Bytes> SampleNalUnits(const std::string &file, int nal_unit_type);

}  // namespace test

#endif
