// Puts texts and numbers together.

#ifndef H265TOOL_TEXT_H
#define H265TOOL_TEXT_H

#include <array>
#include <charconv>
#include <concepts>
#include <string>
#include <string_view>

namespace h265tool {

// The digits of a number, also of one of a character type.
class Decimal {
 public:
    template <std::integral Number>
    explicit Decimal(Number number) {
        char *const end = std::to_chars(digits_.data(), digits_.data() + digits_.size(), +number).ptr;
        length_ = static_cast<size_t>(end - digits_.data());
    }

    std::string_view text() const { return {digits_.data(), length_}; }

 private:
    std::array<char, 24> digits_;
    size_t length_;
};

// Numbers become decimal.
template <typename... Parts>
void AppendText(std::string *text, const Parts &...parts) {
    const auto append = [text]<typename Part>(const Part &part) {
        if constexpr (std::integral<Part>)
            *text += Decimal(part).text();
        else
            *text += part;
    };
    (append(parts), ...);
}

template <typename... Parts>
std::string Text(const Parts &...parts) {
    std::string text;
    AppendText(&text, parts...);
    return text;
}

}  // namespace h265tool

#endif
