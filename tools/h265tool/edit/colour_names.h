// Names of the code points that describe colours (ITU-T H.273; Tables E.3 to E.5).

#ifndef H265TOOL_EDIT_COLOUR_NAMES_H
#define H265TOOL_EDIT_COLOUR_NAMES_H

#include <optional>
#include <string_view>

namespace h265tool {

// Names as ffmpeg prints and takes them and as H.273 has them ("bt709", "BT.709"), whatever the case, and
// numbers from 0 to 255. None for what is neither.
std::optional<unsigned char> ParseColourPrimaries(std::string_view name);
std::optional<unsigned char> ParseTransferCharacteristics(std::string_view name);
std::optional<unsigned char> ParseMatrixCoeffs(std::string_view name);

}  // namespace h265tool

#endif
