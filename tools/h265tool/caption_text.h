// Captions as text.

#ifndef H265TOOL_CAPTION_TEXT_H
#define H265TOOL_CAPTION_TEXT_H

#include <string>

#include "h265.h"

namespace h265tool {

// cc_type, CTA-708: what a caption construct carries.
enum CaptionType : unsigned char {
    kField1 = 0,  // CEA-608, first field
    kField2 = 1,
    kDtvccData = 2,
    kDtvccStart = 3,
};

// The CEA-608 bytes of a field, kField1 or kField2, without their parity bits: printable characters as UTF-8,
// control codes in braces, by their mnemonics ("{RCL}") or as two bytes ("{1470}"). Padding gives nothing.
std::string Cea608Text(const SEI_cc_t &captions, CaptionType field);

// The DTVCC bytes in hexadecimal, a "|" in front of each packet.
std::string DtvccText(const SEI_cc_t &captions);

}  // namespace h265tool

#endif
