// SEI messages in a few words.

#ifndef H265TOOL_SEI_SUMMARY_H
#define H265TOOL_SEI_SUMMARY_H

#include <string>

#include "reading/sei.h"

namespace h265tool {

// The messages of a NAL unit: names with values, or with sizes.
std::string SeiSummary(const Sei &sei);

// "10:21:17:04, 10:21:17:05": a clock timestamp each, "--" for what is not there; ";" in front of the frames
// of a drop-frame count.
std::string TimeCodeText(const sei_h265_time_code_t &time_code);

// "10", or "none" when the message says that there is no active format.
std::string ActiveFormatText(const SEI_afd_t &afd);

}  // namespace h265tool

#endif
