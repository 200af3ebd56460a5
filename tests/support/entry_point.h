// What the parse entry points of parameter sets do with NAL units whose frame is malformed.

#ifndef TESTS_SUPPORT_ENTRY_POINT_H
#define TESTS_SUPPORT_ENTRY_POINT_H

#include <functional>
#include <string>
#include <vector>

#include "h265.h"

namespace test {

struct EntryPoint {
    std::function<BOOL(const unsigned char *nal, size_t length)> parse;
    std::string length_name;           // in "<length_name>:3 is too small. Malformed NAL.\n"
    std::string no_start_code;         // in "<no_start_code> buffer:0x1234.\n"
    size_t longest = 0;                // bytes that are accepted, from the NAL unit header on
    std::vector<std::string> added{};  // reported once more when there was a NAL unit to parse
};

// Lengths up to 4, a missing start code, no payload, and a NAL unit that is too long: each fails with the
// right reports.
void ExpectRefusesMalformedFrames(const EntryPoint &entry_point);

}  // namespace test

#endif
