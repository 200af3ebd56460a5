// Colours of a terminal.

#ifndef H265TOOL_COLOURS_H
#define H265TOOL_COLOURS_H

#include <string>
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

// Back to none.
inline constexpr std::string_view kEndOfColour = "\033[0m";

// Calls `append`, which appends to the line; that is in the colour then.
template <typename Append>
void InColour(std::string_view colour, std::string *line, Append append) {
    *line += colour;
    append();
    if (!colour.empty())
        *line += kEndOfColour;
}

}  // namespace h265tool

#endif
