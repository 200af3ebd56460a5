#include "caption_text.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace h265tool {
namespace {

constexpr unsigned int kWithoutParity = 0x7F;

// Miscellaneous control codes, 20 to 2F behind 14 (or 15 in the second field).
constexpr std::array kControlCodes = {"RCL", "BS",  "AOF", "AON", "DER", "RU2", "RU3", "RU4",
                                      "FON", "RDC", "TR",  "RTD", "EDM", "CR",  "ENM", "EOC"};

// The special characters, 30 to 3F behind 11.
constexpr std::array kSpecialCharacters = {"®", "°", "½", "¿", "™", "¢", "£", "♪",
                                           "à", " ", "è", "â", "ê", "î", "ô", "û"};

// ASCII but for a few characters.
std::string BasicCharacter(unsigned int code) {
    switch (code) {
        case 0x2A:
            return "á";
        case 0x5C:
            return "é";
        case 0x5E:
            return "í";
        case 0x5F:
            return "ó";
        case 0x60:
            return "ú";
        case 0x7B:
            return "ç";
        case 0x7C:
            return "÷";
        case 0x7D:
            return "Ñ";
        case 0x7E:
            return "ñ";
        case 0x7F:
            return "█";
        default:
            return {static_cast<char>(code)};
    }
}

std::string Hexadecimal(unsigned int first, unsigned int second) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "{%02x%02x}", first, second);
    return text.data();
}

// Two bytes of which the first is 01 to 1F.
std::string ControlText(unsigned int first, unsigned int second) {
    const unsigned int of_channel_1 = first & ~8U;  // bit 3 tells the channel of the field
    if ((of_channel_1 == 0x14 || of_channel_1 == 0x15) && second >= 0x20 && second <= 0x2F)
        return std::string("{") + kControlCodes[second - 0x20] + "}";
    if (of_channel_1 == 0x17 && second >= 0x21 && second <= 0x23)
        return std::string("{TO") + static_cast<char>('0' + (second - 0x20)) + "}";
    if (of_channel_1 == 0x11 && second >= 0x30 && second <= 0x3F)
        return kSpecialCharacters[second - 0x30];
    return Hexadecimal(first, second);
}

std::string PairText(unsigned int first, unsigned int second) {
    if (first > 0 && first < 0x20)
        return ControlText(first, second);
    if (second > 0 && second < 0x20)  // no character, and control codes come first
        return Hexadecimal(first, second);
    std::string text;
    for (const unsigned int code : {first, second}) {
        if (code > 0)
            text += BasicCharacter(code);
    }
    return text;
}

}  // namespace

std::string Cea608Text(const SEI_cc_t &captions, CaptionType field) {
    std::string text;
    for (unsigned int i = 0; i < captions.cc_data.cc_count; i++) {
        const caption_t &caption = captions.cc_bytes[i];
        if (caption.flag != 0 && caption.type == field)
            text += PairText(caption.data1 & kWithoutParity, caption.data2 & kWithoutParity);
    }
    return text;
}

std::string DtvccText(const SEI_cc_t &captions) {
    std::string text;
    for (unsigned int i = 0; i < captions.cc_data.cc_count; i++) {
        const caption_t &caption = captions.cc_bytes[i];
        if (caption.flag == 0 || caption.type < kDtvccData)
            continue;
        std::array<char, 8> bytes{};
        std::snprintf(bytes.data(), bytes.size(), "%s%02x%02x", caption.type == kDtvccStart ? "|" : "",
                      caption.data1, caption.data2);
        text += bytes.data();
    }
    return text;
}

}  // namespace h265tool
