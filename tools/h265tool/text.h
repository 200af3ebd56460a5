// Puts texts and numbers together.

#ifndef H265TOOL_TEXT_H
#define H265TOOL_TEXT_H

#include <string>
#include <type_traits>

namespace h265tool {

// Numbers in decimal, also those of character types.
template <typename... Parts>
std::string Text(const Parts &...parts) {
    std::string text;
    const auto append = [&text]<typename Part>(const Part &part) {
        if constexpr (std::is_arithmetic_v<Part>)
            text += std::to_string(part);
        else
            text += part;
    };
    (append(parts), ...);
    return text;
}

}  // namespace h265tool

#endif
