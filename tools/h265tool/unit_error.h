// A NAL unit that cannot be read; what() is the reason, as it is shown to the user.

#ifndef H265TOOL_UNIT_ERROR_H
#define H265TOOL_UNIT_ERROR_H

#include <stdexcept>

namespace h265tool {

class UnitError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace h265tool

#endif
