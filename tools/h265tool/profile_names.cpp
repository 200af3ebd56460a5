#include "profile_names.h"

#include <array>

#include "text.h"

namespace h265tool {
namespace {

constexpr unsigned int kRangeExtensions = 4;

constexpr std::array kNames = {
    "",  // 0: none
    "Main",
    "Main 10",
    "Main Still Picture",
    "Format range extensions",
    "High throughput",
    "Multiview Main",
    "Scalable Main",
    "3D Main",
    "Screen-extended",
    "Scalable format range extensions",
    "High throughput screen-extended",
};

// Table A.2 has a name for each combination of constraint flags in use; they are built alike.
std::string RangeExtensionsName(const ptl_general_profile_idc_4_10 &flags) {
    std::string name = "Main";
    if (flags.max_monochrome_constraint_flag)
        name = "Monochrome";
    else if (!flags.max_422chroma_constraint_flag)
        name += " 4:4:4";
    else if (!flags.max_420chroma_constraint_flag)
        name += " 4:2:2";
    if (!flags.max_12bits_constraint_flag)
        name += " 16";
    else if (!flags.max_10bits_constraint_flag)
        name += " 12";
    else if (!flags.max_8bits_constraint_flag)
        name += " 10";
    if (flags.one_picture_only_constraint_flag)
        name += " Still Picture";
    else if (flags.intra_constraint_flag)
        name += " Intra";
    return name;
}

// general_profile_idc, or, where that is 0, the first profile that the stream says it is compatible with.
unsigned int ProfileIdc(const profile_tier_level_t &ptl) {
    if (ptl.general_profile_idc != 0)
        return ptl.general_profile_idc;
    for (unsigned int idc = 1; idc < H265_PTL_COMPATIBILITY_FLAGS; idc++) {
        if (ptl.general_profile_compatibility_flag[idc])
            return idc;
    }
    return 0;
}

}  // namespace

std::string ProfileName(const profile_tier_level_t &ptl) {
    const unsigned int idc = ProfileIdc(ptl);
    if (ptl.general_profile_space == 0) {
        if (idc == kRangeExtensions)
            return RangeExtensionsName(ptl.u_general.profile_4_10);
        if (idc > 0 && idc < kNames.size())
            return kNames[idc];
    }
    return Text("unknown (", idc, ")");
}

std::string LevelName(unsigned char general_level_idc) {
    const unsigned int tenths = general_level_idc / 3U;  // general_level_idc is 30 times the level
    return tenths % 10 == 0 ? Text(tenths / 10) : Text(tenths / 10, ".", tenths % 10);
}

std::string ProfileTierLevelName(const profile_tier_level_t &ptl) {
    return Text(ProfileName(ptl), " profile, ", ptl.general_tier_flag ? "High" : "Main", " tier, level ",
                LevelName(ptl.general_level_idc));
}

}  // namespace h265tool
