// A NAL unit that cannot be read; what() is the reason, as it is shown to the user.

#ifndef H265TOOL_UNIT_ERROR_H
#define H265TOOL_UNIT_ERROR_H

#include <cstdint>
#include <stdexcept>

#include "text.h"

namespace h265tool {

class UnitError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// Runs `work`, and adds the place of the NAL unit to a UnitError that it throws.
template <typename Work>
void WithPlace(uint64_t offset, Work work) {
    try {
        work();
    } catch (const UnitError &error) {
        throw UnitError(Text("NAL unit at offset ", offset, ": ", error.what()));
    }
}

}  // namespace h265tool

#endif
