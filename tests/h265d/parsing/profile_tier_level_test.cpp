#include "h265d/parsing/profile_tier_level.h"

#include <gmock/gmock.h>

#include "support/syntax.h"

namespace test {
namespace {

using testing::ElementsAre;

// What a profile_tier_level( ) of a test consists of.
struct Layer {
    int profile_idc = 1;
    int compatible_with = -1;  // one further profile
};

class ProfileTierLevel : public testing::Test {
 protected:
    static std::string Unreadable(const std::string &element) { return "cannot parse " + element + ".\n"; }
    static std::string Unreadable(const std::string &element, int i) {
        return Unreadable(element + "[" + std::to_string(i) + "]");
    }

    // Everything in front of the 43 bits.
    void GeneralHead(const Layer &layer) {
        syntax_.U(2, 2, &ptl_.general_profile_space, Unreadable("general_profile_space"))
            .Flag(1, &ptl_.general_tier_flag, Unreadable("general_tier_flag"))
            .U(5, static_cast<uint64_t>(layer.profile_idc), &ptl_.general_profile_idc,
               Unreadable("general_profile_idc"));
        for (int j = 0; j < 32; j++)
            syntax_.Flag(j == layer.compatible_with, &ptl_.general_profile_compatibility_flag[j],
                         Unreadable("general_profile_compatibility_flag", j));
        syntax_.Flag(1, &ptl_.general_progressive_source_flag, Unreadable("general_progressive_source_flag"))
            .Flag(0, &ptl_.general_interlaced_source_flag, Unreadable("general_interlaced_source_flag"))
            .Flag(1, &ptl_.general_non_packed_constraint_flag,
                  Unreadable("general_non_packed_constraint_flag"))
            .Flag(1, &ptl_.general_frame_only_constraint_flag,
                  Unreadable("general_frame_only_constraint_flag"));
    }

    // The nine flags of profiles 4 to 10. `prefix` and `suffix` make the names of the reports.
    void NineFlags(ptl_general_profile_idc_4_10 *block, const std::string &prefix,
                   const std::string &suffix) {
        const auto flag = [&](int value, int *field, const std::string &name) {
            syntax_.Flag(value, field, Unreadable(prefix + name + suffix));
        };
        flag(1, &block->max_12bits_constraint_flag, "max_12bits_constraint_flag");
        flag(0, &block->max_10bits_constraint_flag, "max_10bits_constraint_flag");
        flag(1, &block->max_8bits_constraint_flag, "max_8bits_constraint_flag");
        flag(1, &block->max_422chroma_constraint_flag, "max_422chroma_constraint_flag");
        flag(0, &block->max_420chroma_constraint_flag, "max_420chroma_constraint_flag");
        flag(1, &block->max_monochrome_constraint_flag, "max_monochrome_constraint_flag");
        flag(0, &block->intra_constraint_flag, "intra_constraint_flag");
        flag(1, &block->one_picture_only_constraint_flag, "one_picture_only_constraint_flag");
        flag(0, &block->lower_bitrate_constraint_flag, "lower_bitrate_constraint_flag");
    }

    void GeneralNineFlags() { NineFlags(&ptl_.u_general.profile_4_10, "", ""); }

    void General34Bits() {
        syntax_.U(34, 0x2'1234'5678, &ptl_.u_general.profile_4_10.reserved_zero_34bits,
                  Unreadable("reserved_zero_34bits"));
    }

    void General14BitsAnd33() {
        // the 14-bit flag is reported under the name of its neighbour
        syntax_
            .Flag(1, &ptl_.u_general.profile_4_10.max_14bits_constraint_flag,
                  Unreadable("lower_bitrate_constraint_flag"))
            .U(33, 0x1'8765'4321, &ptl_.u_general.profile_4_10.reserved_zero_33bits,
               Unreadable("reserved_zero_33bits"));
    }

    void GeneralProfile2() {
        syntax_.U(7, 0x55, &ptl_.u_general.profile_2.reserved_zero_7bits, Unreadable("reserved_zero_7bits"))
            .Flag(1, &ptl_.u_general.profile_2.one_picture_only_constraint_flag,
                  Unreadable("one_picture_only_constraint_flag"))
            .U(35, 0x4'0000'0001, &ptl_.u_general.profile_2.reserved_zero_35bits,
               Unreadable("reserved_zero_35bits"));
    }

    void General43Bits() {
        syntax_.U(43, 0x400'0000'0001, &ptl_.u_general.reserved_zero_43bits,
                  Unreadable("reserved_zero_44bits"));
    }

    void GeneralInbld() { syntax_.Flag(1, &ptl_.general_inbld_flag, Unreadable("general_inbld_flag")); }

    void GeneralReservedZeroBit() {
        syntax_.Flag(1, &ptl_.general_reserved_zero_bit, Unreadable("general_reserved_zero_bit"));
    }

    void GeneralLevel() { syntax_.U(8, 93, &ptl_.general_level_idc, Unreadable("general_level_idc")); }

    // A whole general part of profile 1, then the presence flags of the sub-layers.
    void GeneralAndPresence(int maxNumSubLayersMinus1, int profile_present, int level_present) {
        GeneralHead({});
        General43Bits();
        GeneralInbld();
        GeneralLevel();
        for (int i = 0; i < maxNumSubLayersMinus1; i++)
            syntax_
                .Flag(profile_present, &ptl_.sub_layer_profile_present_flag[i],
                      Unreadable("sub_layer_profile_present_flag", i))
                .Flag(level_present, &ptl_.sub_layer_level_present_flag[i],
                      Unreadable("sub_layer_level_present_flag", i));
        if (maxNumSubLayersMinus1 > 0) {
            for (int i = maxNumSubLayersMinus1; i < 8; i++)
                syntax_.U(2, 2, &ptl_.reserved_zero_2bits[i], Unreadable("reserved_zero_2bits", i));
        }
    }

    void SubLayerHead(int i, const Layer &layer) {
        // the profile is reported under the name of the profile space
        syntax_.U(2, 1, &ptl_.sub_layer_profile_space[i], Unreadable("sub_layer_profile_space", i))
            .Flag(0, &ptl_.sub_layer_tier_flag[i], Unreadable("sub_layer_tier_flag", i))
            .U(5, static_cast<uint64_t>(layer.profile_idc), &ptl_.sub_layer_profile_idc[i],
               Unreadable("sub_layer_profile_space", i));
        for (int j = 0; j < 32; j++)
            syntax_.Flag(j == layer.compatible_with, &ptl_.sub_layer_profile_compatibility_flag[i][j],
                         Unreadable("sub_layer_profile_compatibility_flag[" + std::to_string(i) + "]", j));
        syntax_
            .Flag(0, &ptl_.sub_layer_progressive_source_flag[i],
                  Unreadable("sub_layer_progressive_source_flag", i))
            .Flag(1, &ptl_.sub_layer_interlaced_source_flag[i],
                  Unreadable("sub_layer_interlaced_source_flag", i))
            .Flag(0, &ptl_.sub_layer_non_packed_constrained_flag[i],
                  Unreadable("sub_layer_non_packed_constrained_flag", i))
            .Flag(1, &ptl_.sub_layer_frame_only_constrained_flag[i],
                  Unreadable("sub_layer_frame_only_constrained_flag", i));
    }

    void SubLayerNineFlags(int i) {
        NineFlags(&ptl_.u_sub_layer[i].profile_4_10, "sub_layer_", "[" + std::to_string(i) + "]");
    }

    void SubLayerInbld(int i) {
        syntax_.Flag(1, &ptl_.sub_layer_inbld_flag[i], Unreadable("sub_layer_inbld_flag", i));
    }

    void SubLayerLevel(int i) {
        syntax_.U(8, 60, &ptl_.sub_layer_level_idc[i], Unreadable("sub_layer_level_idc", i));
    }

    void Sweep(unsigned char maxNumSubLayersMinus1) {
        syntax_.SweepTruncations(&ptl_, [=](bitbuffer_t *bb, profile_tier_level_t *ptl) {
            return _parse_profile_tier_level(bb, maxNumSubLayersMinus1, ptl) == 0;
        });
    }

    Syntax syntax_;
    profile_tier_level_t ptl_;
};

TEST_F(ProfileTierLevel, WithoutSubLayersHas96Bits) {
    GeneralHead({});
    General43Bits();
    GeneralInbld();
    GeneralLevel();
    EXPECT_EQ(syntax_.bits().size(), 96u);
    Sweep(0);
    EXPECT_EQ(ptl_.general_scantype_bitoffset, 40);
    EXPECT_EQ(ptl_.general_reserved_zero_bit, PrefilledValue<int>());
    EXPECT_EQ(ptl_.reserved_zero_2bits[0], kPrefill);
}

TEST_F(ProfileTierLevel, Profile0HasTheReservedBitAndLeavesInbld) {
    GeneralHead({.profile_idc = 0});
    General43Bits();
    GeneralReservedZeroBit();
    GeneralLevel();
    Sweep(0);
    EXPECT_EQ(ptl_.general_inbld_flag, PrefilledValue<int>());
}

TEST_F(ProfileTierLevel, Profile0CompatibleWith1HasInbld) {
    GeneralHead({.profile_idc = 0, .compatible_with = 1});
    General43Bits();
    GeneralInbld();
    GeneralLevel();
    Sweep(0);
}

TEST_F(ProfileTierLevel, Profile1CompatibleWith4HasTheConstraintFlags) {
    GeneralHead({.profile_idc = 1, .compatible_with = 4});
    GeneralNineFlags();
    General34Bits();
    GeneralInbld();
    GeneralLevel();
    Sweep(0);
}

TEST_F(ProfileTierLevel, Profile2HasItsOwnBlock) {
    GeneralHead({.profile_idc = 2});
    GeneralProfile2();
    GeneralInbld();
    GeneralLevel();
    Sweep(0);
}

TEST_F(ProfileTierLevel, Profiles4To10HaveTheConstraintFlags) {
    for (int profile = 4; profile <= 10; profile++) {
        SCOPED_TRACE(profile);
        for (const Layer &layer : {Layer{profile, -1}, Layer{11, profile}}) {
            syntax_ = {};
            GeneralHead(layer);
            GeneralNineFlags();
            if (profile == 5 || profile == 9 || profile == 10)
                General14BitsAnd33();
            else
                General34Bits();
            if (profile == 4 || profile == 5 || profile == 9)
                GeneralInbld();
            else
                GeneralReservedZeroBit();
            GeneralLevel();
            Sweep(0);
        }
    }
}

TEST_F(ProfileTierLevel, Profile3And11HaveThe43Bits) {
    for (const int profile : {3, 11, 31}) {
        syntax_ = {};
        GeneralHead({.profile_idc = profile});
        General43Bits();
        if (profile == 3)
            GeneralInbld();
        else
            GeneralReservedZeroBit();
        GeneralLevel();
        Sweep(0);
    }
}

TEST_F(ProfileTierLevel, OneSubLayerMoreHasSevenReservedPairs) {
    GeneralAndPresence(1, 0, 1);
    SubLayerLevel(0);
    EXPECT_EQ(syntax_.bits().size(), 96u + 2 + 7 * 2 + 8);
    Sweep(1);
    EXPECT_EQ(ptl_.reserved_zero_2bits[0], kPrefill);
    EXPECT_EQ(ptl_.sub_layer_profile_idc[0], kPrefill);
    EXPECT_EQ(ptl_.sub_layer_level_idc[1], kPrefill);
}

TEST_F(ProfileTierLevel, SubLayerOfProfile1) {
    GeneralAndPresence(1, 1, 0);
    SubLayerHead(0, {});
    syntax_.U(43, 0x7FF'FFFF'FFFE, &ptl_.u_sub_layer[0].reserved_zero_43bits,
              Unreadable("sub_layer_reserved_zero_44bits", 0));
    SubLayerInbld(0);
    Sweep(1);
    EXPECT_EQ(ptl_.sub_layer_reserved_zero_bit[0], PrefilledValue<int>());
}

TEST_F(ProfileTierLevel, SubLayerOfProfile2) {
    for (const Layer &layer : {Layer{2, -1}, Layer{0, 2}}) {
        syntax_ = {};
        GeneralAndPresence(2, 1, 1);
        for (int i = 0; i < 2; i++) {
            SubLayerHead(i, layer);
            // the first two are reported under the names of other elements
            auto &block = ptl_.u_sub_layer[i].profile_2;
            syntax_.U(7, 0x2A, &block.reserved_zero_7bits, Unreadable("sub_layer_profile_space", i))
                .Flag(1, &block.one_picture_only_constraint_flag, Unreadable("sub_layer_tier_flag", i))
                .U(35, 0x5'5555'5555, &block.reserved_zero_35bits,
                   Unreadable("sub_layer_reserved_zero_35bits", i));
            SubLayerInbld(i);
            SubLayerLevel(i);
        }
        Sweep(2);
    }
}

TEST_F(ProfileTierLevel, OnlyProfile5HasTheFourteenBitFlagInSubLayers) {
    for (int profile = 4; profile <= 10; profile++) {
        SCOPED_TRACE(profile);
        for (const Layer &layer : {Layer{profile, -1}, Layer{0, profile}}) {
            syntax_ = {};
            GeneralAndPresence(1, 1, 0);
            SubLayerHead(0, layer);
            SubLayerNineFlags(0);
            auto &block = ptl_.u_sub_layer[0].profile_4_10;
            if (profile == 5)
                syntax_
                    .Flag(1, &block.max_14bits_constraint_flag, Unreadable("max_14bits_constraint_flag", 0))
                    .U(33, 0x1'0000'0003, &block.reserved_zero_33bits, Unreadable("reserved_zero_33bits", 0));
            else
                syntax_.U(34, 0x3'0000'0001, &block.reserved_zero_34bits,
                          Unreadable("sub_layer_reserved_zero_35bits", 0));
            SubLayerInbld(0);
            Sweep(1);
            EXPECT_EQ(ptl_.sub_layer_reserved_zero_bit[0], PrefilledValue<int>());
        }
    }
}

TEST_F(ProfileTierLevel, SevenSubLayersMoreFillTheArrays) {
    GeneralAndPresence(7, 0, 1);
    for (int i = 0; i < 7; i++)
        SubLayerLevel(i);
    Sweep(7);
}

TEST_F(ProfileTierLevel, MoreSubLayersThanTheRecordHoldsFailUnread) {
    unsigned char bytes[128] = {};
    for (const unsigned char maxNumSubLayersMinus1 : std::vector<unsigned char>{8, 9, 255}) {
        bitbuffer_t bb{bytes, 0, sizeof bytes * 8};
        const TraceCapture trace;
        EXPECT_EQ(_parse_profile_tier_level(&bb, maxNumSubLayersMinus1, &ptl_), -1);
        EXPECT_EQ(bb.bit_offset, 0u);
        EXPECT_TRUE(trace.messages().empty());
    }
}

TEST_F(ProfileTierLevel, TracesEntryPositionAndExit) {
    GeneralHead({});
    General43Bits();
    GeneralInbld();
    GeneralLevel();
    std::vector<unsigned char> bytes = syntax_.bits().Bytes();
    bitbuffer_t bb{bytes.data(), 0, 96};
    const TraceCapture trace(7);
    ASSERT_EQ(_parse_profile_tier_level(&bb, 0, &ptl_), 0);
    EXPECT_EQ(bb.bit_offset, 96u);
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Called.\n", "Before general_progressive_source_flag, CurrentBitOffset:40.\n",
                            "Done.\n"));
    for (const TracedMessage &message : trace.messages()) {
        EXPECT_EQ(message.function, "_parse_profile_tier_level");
        EXPECT_EQ(message.file, "profile_tier_level.cpp");
    }
}

TEST_F(ProfileTierLevel, NullArgumentsAreReportedAndFail) {
    bitbuffer_t bb{};
    TraceCapture trace;
    EXPECT_EQ(_parse_profile_tier_level(nullptr, 0, &ptl_), -1);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("sps_nalu_bb != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre());
    trace.Clear();
    EXPECT_EQ(_parse_profile_tier_level(&bb, 0, nullptr), -1);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("ptl != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre());
}

}  // namespace
}  // namespace test
