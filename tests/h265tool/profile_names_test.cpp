#include "profile_names.h"

#include <gtest/gtest.h>

namespace h265tool {
namespace {

profile_tier_level_t Profile(unsigned char idc) {
    profile_tier_level_t ptl{};
    ptl.general_profile_idc = idc;
    return ptl;
}

TEST(ProfileName, NamesProfiles) {
    EXPECT_EQ(ProfileName(Profile(1)), "Main");
    EXPECT_EQ(ProfileName(Profile(2)), "Main 10");
    EXPECT_EQ(ProfileName(Profile(9)), "Screen-extended");
    EXPECT_EQ(ProfileName(Profile(0)), "unknown (0)");
    EXPECT_EQ(ProfileName(Profile(31)), "unknown (31)");
    profile_tier_level_t other_space = Profile(1);
    other_space.general_profile_space = 1;
    EXPECT_EQ(ProfileName(other_space), "unknown (1)");
}

TEST(ProfileName, TakesACompatibleProfileInPlaceOfNone) {
    profile_tier_level_t ptl = Profile(0);
    ptl.general_profile_compatibility_flag[2] = 1;
    EXPECT_EQ(ProfileName(ptl), "Main 10");
}

TEST(ProfileName, NamesRangeExtensionsByTheirConstraints) {
    struct Case {
        const char *name;
        int max_12, max_10, max_8, max_422, max_420, monochrome, intra, one_picture;
    };
    constexpr Case kCases[] = {
        {"Monochrome", 1, 1, 1, 1, 1, 1, 0, 0},
        {"Monochrome 16", 0, 0, 0, 1, 1, 1, 0, 0},
        {"Main 12", 1, 0, 0, 1, 1, 0, 0, 0},
        {"Main 4:2:2 10", 1, 1, 0, 1, 0, 0, 0, 0},
        {"Main 4:4:4", 1, 1, 1, 0, 0, 0, 0, 0},
        {"Main 4:4:4 12", 1, 0, 0, 0, 0, 0, 0, 0},
        {"Main Intra", 1, 1, 1, 1, 1, 0, 1, 0},
        {"Main 4:4:4 16 Intra", 0, 0, 0, 0, 0, 0, 1, 0},
        {"Main 4:4:4 Still Picture", 1, 1, 1, 0, 0, 0, 1, 1},
    };
    for (const Case &c : kCases) {
        profile_tier_level_t ptl = Profile(4);
        ptl.u_general.profile_4_10 = {c.max_12, c.max_10,      c.max_8, c.max_422, c.max_420, c.monochrome,
                                      c.intra,  c.one_picture, 1,       0,         0,         0};
        EXPECT_EQ(ProfileName(ptl), c.name);
    }
}

TEST(LevelName, IsAThirtieth) {
    EXPECT_EQ(LevelName(30), "1");
    EXPECT_EQ(LevelName(93), "3.1");
    EXPECT_EQ(LevelName(186), "6.2");
    EXPECT_EQ(LevelName(255), "8.5");
}

TEST(ProfileTierLevelName, PutsThemTogether) {
    profile_tier_level_t ptl = Profile(1);
    ptl.general_tier_flag = 1;
    ptl.general_level_idc = 123;
    EXPECT_EQ(ProfileTierLevelName(ptl), "Main profile, High tier, level 4.1");
}

}  // namespace
}  // namespace h265tool
