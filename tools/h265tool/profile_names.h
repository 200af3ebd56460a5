// Profiles, tiers and levels by their names, ITU-T H.265 Annex A.

#ifndef H265TOOL_PROFILE_NAMES_H
#define H265TOOL_PROFILE_NAMES_H

#include <string>

#include "h265.h"

namespace h265tool {

std::string ProfileName(const profile_tier_level_t &ptl);           // "Main 4:2:2 10"
std::string LevelName(unsigned char general_level_idc);             // "3.1"
std::string ProfileTierLevelName(const profile_tier_level_t &ptl);  // "Main profile, High tier, level 3.1"

}  // namespace h265tool

#endif
