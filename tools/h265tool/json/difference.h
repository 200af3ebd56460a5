// What two JSON documents differ in.

#ifndef H265TOOL_JSON_DIFFERENCE_H
#define H265TOOL_JSON_DIFFERENCE_H

#include <optional>
#include <string>

#include "json/json.h"

namespace h265tool {

struct JsonDifference {
    std::string path;      // "vui.nal_hrd.cbr_flag[0]"
    std::string expected;  // the value as text, or "nothing"
    std::string actual;
};

// The first one; none when they are equal. The order of an object's members does not matter.
std::optional<JsonDifference> FirstDifference(const Json &expected, const Json &actual);

}  // namespace h265tool

#endif
