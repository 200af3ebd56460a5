// Puts texts and numbers together.

#ifndef H265TOOL_TEXT_H
#define H265TOOL_TEXT_H

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <limits>
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

// A text that ends `width` characters behind where it is put, or later.
struct ToTheRight {
    std::string_view text;
    size_t width;
};

// How long each part can become, and how it is put at a place that has room for it; for AppendText.
template <std::integral Number>
constexpr size_t RoomFor(Number) {
    return std::numeric_limits<Number>::digits10 + 2;  // a digit that not every value has, and a sign
}

template <std::integral Number>
char *Put(char *at, Number number) {
    return std::to_chars(at, at + RoomFor(number), +number).ptr;  // also of a character type
}

inline size_t RoomFor(std::string_view text) {
    return text.size();
}

inline char *Put(char *at, std::string_view text) {
    return std::copy(text.begin(), text.end(), at);
}

// A literal, whose length the compiler knows.
template <size_t size>
constexpr size_t RoomFor(const char (&)[size]) {
    return size - 1;
}

template <size_t size>
char *Put(char *at, const char (&literal)[size]) {
    return std::copy_n(literal, size - 1, at);
}

inline size_t RoomFor(const ToTheRight &column) {
    return std::max(column.text.size(), column.width);
}

inline char *Put(char *at, const ToTheRight &column) {
    return Put(std::fill_n(at, RoomFor(column) - column.text.size(), ' '), column.text);
}

// Numbers become decimal. The string grows once for all parts, none of which may be a view of it.
template <typename... Parts>
void AppendText(std::string *text, const Parts &...parts) {
    const size_t length = text->size();
    text->resize(length + (RoomFor(parts) + ... + 0));
    char *end = text->data() + length;
    ((end = Put(end, parts)), ...);
    text->resize(static_cast<size_t>(end - text->data()));
}

template <typename... Parts>
std::string Text(const Parts &...parts) {
    std::string text;
    AppendText(&text, parts...);
    return text;
}

}  // namespace h265tool

#endif
