#include "h265d/display/expected_display.h"
#include "h265d/display/sub_structures.h"

namespace test {
namespace {

using testing::Contains;

const char *const kConstraintFlags[] = {
    "max_12bits_constraint_flag",    "max_10bits_constraint_flag",       "max_8bits_constraint_flag",
    "max_422chroma_constraint_flag", "max_420chroma_constraint_flag",    "max_monochrome_constraint_flag",
    "intra_constraint_flag",         "one_picture_only_constraint_flag", "lower_bitrate_constraint_flag",
};

class ProfileTierLevelDisplay : public testing::Test {
 protected:
    // The general part up to the frame-only flag.
    void AddGeneralStart(unsigned char profile_idc) {
        LINE(expected_, ptl_, general_profile_space, 3);
        LINE(expected_, ptl_, general_tier_flag, 1);
        LINE(expected_, ptl_, general_profile_idc, profile_idc);
        for (int j = 0; j < 32; j++)
            expected_.Line("general_profile_compatibility_flag[" + std::to_string(j) + "]",
                           ptl_.general_profile_compatibility_flag[j]);
        LINE(expected_, ptl_, general_progressive_source_flag, 1);
        LINE(expected_, ptl_, general_interlaced_source_flag, 0);
        LINE(expected_, ptl_, general_non_packed_constraint_flag, 1);
        LINE(expected_, ptl_, general_frame_only_constraint_flag, 0);
    }

    void AddConstraints(in_profile_tier_level_t *block, int first, UINT64 reserved) {
        ptl_general_profile_idc_4_10 &flags = block->profile_4_10;
        int *const fields[] = {&flags.max_12bits_constraint_flag,    &flags.max_10bits_constraint_flag,
                               &flags.max_8bits_constraint_flag,     &flags.max_422chroma_constraint_flag,
                               &flags.max_420chroma_constraint_flag, &flags.max_monochrome_constraint_flag,
                               &flags.intra_constraint_flag,         &flags.one_picture_only_constraint_flag,
                               &flags.lower_bitrate_constraint_flag};
        for (int i = 0; i < 9; i++)
            expected_.Line(kConstraintFlags[i], *fields[i] = first + i);
        LINE(expected_, flags, reserved_zero_34bits, reserved);
    }

    void AddReserved43(in_profile_tier_level_t *block) {
        LINE(expected_, *block, reserved_zero_43bits, 0x7FF'FFFF'FFFF);
    }

    void AddInbld() { LINE(expected_, ptl_, general_inbld_flag, 1); }
    void AddReservedBit() {  // with the value of the other flag
        ptl_.general_inbld_flag = 1;
        ptl_.general_reserved_zero_bit = 0;
        expected_.Text("general_reserved_zero_bit=1.\n");
    }
    void AddLevel() { LINE(expected_, ptl_, general_level_idc, 255); }

    void AddSubLayerFlags(unsigned char maxNumSubLayersMinus1) {
        for (int i = 0; i < maxNumSubLayersMinus1; i++) {
            expected_.Line("sub_layer_profile_present_flag[" + std::to_string(i) + "]",
                           ptl_.sub_layer_profile_present_flag[i]);
            expected_.Line("sub_layer_level_present_flag[" + std::to_string(i) + "]",
                           ptl_.sub_layer_level_present_flag[i]);
        }
        for (int i = maxNumSubLayersMinus1; i < 8; i++)
            ENTRY_LINE(expected_, ptl_, reserved_zero_2bits, i, static_cast<unsigned char>(i % 4));
    }

    void AddSubLayerProfile(int i, unsigned char profile_idc) {
        ENTRY_LINE(expected_, ptl_, sub_layer_profile_space, i, 2);
        ENTRY_LINE(expected_, ptl_, sub_layer_tier_flag, i, 1);
        ENTRY_LINE(expected_, ptl_, sub_layer_profile_idc, i, profile_idc);
        for (int j = 0; j < 32; j++)
            expected_.Line("sub_layer_profile_compatibility_flag[" + std::to_string(j) + "]",
                           ptl_.sub_layer_profile_compatibility_flag[i][j]);
        ENTRY_LINE(expected_, ptl_, sub_layer_progressive_source_flag, i, 0);
        ENTRY_LINE(expected_, ptl_, sub_layer_interlaced_source_flag, i, 1);
        ENTRY_LINE(expected_, ptl_, sub_layer_non_packed_constrained_flag, i, 0);
        ENTRY_LINE(expected_, ptl_, sub_layer_frame_only_constrained_flag, i, 1);
    }

    void Expect(unsigned char maxNumSubLayersMinus1) {
        ExpectDisplay(
            ptl_,
            [=](const profile_tier_level_t *ptl) { _display_profile_tier_level(ptl, maxNumSubLayersMinus1); },
            expected_);
    }

    profile_tier_level_t ptl_{};
    ExpectedDisplay expected_{"_display_profile_tier_level", 6};
};

TEST_F(ProfileTierLevelDisplay, MainProfile) {
    AddGeneralStart(1);
    AddReserved43(&ptl_.u_general);
    AddInbld();
    AddLevel();
    Expect(0);
}

TEST_F(ProfileTierLevelDisplay, CompatibilityFlagsAlone) {
    ptl_.general_profile_compatibility_flag[4] = 1;
    ptl_.general_profile_compatibility_flag[31] = 1;
    AddGeneralStart(0);
    AddConstraints(&ptl_.u_general, 10, 0x3'FFFF'FFFF);
    AddInbld();
    AddLevel();
    Expect(0);
}

TEST_F(ProfileTierLevelDisplay, ProfilesDecideWhatFollows) {
    for (int profile = 0; profile < 32; profile++) {
        for (const bool by_flag : {false, true}) {
            profile_tier_level_t ptl{};
            if (by_flag)
                ptl.general_profile_compatibility_flag[profile] = 1;
            else
                ptl.general_profile_idc = static_cast<unsigned char>(profile);
            const auto texts = DisplayedTexts(6, [&] { _display_profile_tier_level(&ptl, 0); });
            const bool constraints = profile >= 4 && profile <= 7;
            const bool inbld = profile >= 1 && profile <= 5;
            EXPECT_EQ(texts.size(), constraints ? 51u : 42u) << profile;
            EXPECT_THAT(texts,
                        Contains(constraints ? "reserved_zero_34bits=0.\n" : "reserved_zero_43bits=0.\n"));
            EXPECT_THAT(texts,
                        Contains(inbld ? "general_inbld_flag=0.\n" : "general_reserved_zero_bit=0.\n"));
        }
    }
}

TEST_F(ProfileTierLevelDisplay, SubLayers) {
    ptl_.sub_layer_profile_present_flag[0] = 1;
    ptl_.sub_layer_level_present_flag[0] = 1;
    ptl_.sub_layer_profile_present_flag[2] = 1;
    ptl_.sub_layer_level_present_flag[3] = 1;
    ptl_.sub_layer_profile_present_flag[4] = 1;
    ptl_.sub_layer_profile_compatibility_flag[0][5] = 1;
    ptl_.sub_layer_profile_compatibility_flag[2][4] = 1;
    AddGeneralStart(8);
    AddReserved43(&ptl_.u_general);
    AddReservedBit();
    AddLevel();
    AddSubLayerFlags(6);
    AddSubLayerProfile(0, 5);  // profile 4 alone counts here
    AddReserved43(&ptl_.u_sub_layer[0]);
    ENTRY_LINE(expected_, ptl_, sub_layer_level_idc, 0, 93);
    AddSubLayerProfile(2, 1);
    AddConstraints(&ptl_.u_sub_layer[2], 30, 7);
    ENTRY_LINE(expected_, ptl_, sub_layer_level_idc, 3, 120);
    AddSubLayerProfile(4, 4);
    AddConstraints(&ptl_.u_sub_layer[4], 50, 9);
    Expect(6);
}

TEST_F(ProfileTierLevelDisplay, ReservedBitsFillUpToEightSubLayers) {
    AddGeneralStart(1);
    AddReserved43(&ptl_.u_general);
    AddInbld();
    AddLevel();
    AddSubLayerFlags(2);
    Expect(2);
}

TEST_F(ProfileTierLevelDisplay, AnyRecordStaysWithinItsArrays) {
    const auto count = [](int byte, unsigned char sub_layers) {
        return MessagesOfFilledRecord<profile_tier_level_t>(
            byte, [=](const profile_tier_level_t *ptl) { _display_profile_tier_level(ptl, sub_layers); });
    };
    constexpr size_t kGeneral = 51;
    constexpr size_t kSubLayer = 2 + 3 + 32 + 4 + 10 + 1;
    for (const int byte : {0xFF, 0xA5}) {
        EXPECT_EQ(count(byte, 0), kGeneral);
        EXPECT_EQ(count(byte, 7), kGeneral + 7 * kSubLayer + 1);
        EXPECT_EQ(count(byte, 8), kGeneral + 8 * kSubLayer);
        EXPECT_EQ(count(byte, 255), kGeneral + 8 * kSubLayer);
    }
}

TEST_F(ProfileTierLevelDisplay, NullIsReported) {
    ExpectNullIsReported("ptl != NULL", [] { _display_profile_tier_level(nullptr, 0); });
}

}  // namespace
}  // namespace test
