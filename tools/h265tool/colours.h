// Colours of a terminal.

#ifndef H265TOOL_COLOURS_H
#define H265TOOL_COLOURS_H

#include <string_view>

namespace h265tool {

// What begins each colour; all are empty where there are none.
struct Colours {
    std::string_view minor;  // what the eye may pass over
    std::string_view key_picture;
    std::string_view parameter_set;
    std::string_view error;
};

// Of standard output, when the option --color is "always", "never" or "auto": on a terminal that has colours,
// unless the environment has NO_COLOR.
const Colours &ColoursFor(std::string_view when);

// What ends a colour: nothing, where there are none.
constexpr std::string_view EndOf(std::string_view colour) {
    return colour.empty() ? colour : "\033[0m";
}

}  // namespace h265tool

#endif
