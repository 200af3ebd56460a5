// Scenarist SCC files: CEA-608 byte pairs with the time codes of their first frames.

#ifndef H265TOOL_INSERT_SCC_H
#define H265TOOL_INSERT_SCC_H

#include <cstdint>
#include <istream>
#include <stdexcept>
#include <vector>

#include "insert/time_code.h"

namespace h265tool {

// A line that cannot be read; what() names it by its number.
class SccError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// CEA-608 carries one pair in each of 30000/1001 frames per second, in field 1.
struct CaptionPair {
    uint64_t frame;  // from the start on, each frame once, ascending
    unsigned char data1;
    unsigned char data2;

    bool operator==(const CaptionPair &) const = default;
};

// The time code `start` is that of frame 0. It counts as those of the file do, with or without drop-frame.
// Pairs that are not through when the next line is due delay it. Throws SccError.
std::vector<CaptionPair> ReadScc(std::istream &file, const TimeCode &start);

}  // namespace h265tool

#endif
