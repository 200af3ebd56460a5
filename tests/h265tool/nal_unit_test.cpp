#include "nal_unit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace h265tool {
namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<unsigned char>;

// The NAL unit that a collector makes of the pieces.
NalUnit Collected(const std::vector<Bytes> &pieces) {
    NalUnit collected;
    NalUnitCollector collector([](unsigned int nal_unit_type) { return IsVcl(nal_unit_type) ? 4U : 8U; },
                               [&](const NalUnit &unit) { collected = unit; });
    collector.Begin(100, 4);
    for (const Bytes &piece : pieces)
        collector.Bytes(piece);
    collector.End();
    return collected;
}

TEST(NalUnitCollector, KeepsTheHeadThatTheTypeAsksFor) {
    const NalUnit slice = Collected({{0x02, 1, 2, 3, 4, 5, 6, 7, 8, 9}});
    EXPECT_EQ(slice.offset, 100U);
    EXPECT_EQ(slice.size, 14U);
    EXPECT_FALSE(slice.IsWhole());
    EXPECT_THAT(slice.head, ElementsAre(0, 0, 0, 1, 0x02, 1, 2, 3));
    EXPECT_THAT(Collected({{0x40, 1, 2, 3, 4, 5, 6, 7, 8, 9}}).HeadBehindStartCode(),
                ElementsAre(0x40, 1, 2, 3, 4, 5, 6, 7));
}

TEST(NalUnitCollector, PutsPiecesTogether) {
    EXPECT_THAT(Collected({{0x02}, {1}, {2}, {3}, {4}}).HeadBehindStartCode(), ElementsAre(0x02, 1, 2, 3));
    const NalUnit whole = Collected({{0x40}, {1, 2}, {3, 4}});
    EXPECT_THAT(whole.HeadBehindStartCode(), ElementsAre(0x40, 1, 2, 3, 4));
    EXPECT_TRUE(whole.IsWhole());
}

TEST(NalUnit, ReadsItsHeader) {
    const std::optional<NalUnitHeader> header = Collected({{0x43, 0x0A}}).Header();
    ASSERT_TRUE(header.has_value());
    EXPECT_EQ(header->forbidden_zero_bit, 0U);
    EXPECT_EQ(header->nal_unit_type, 33U);
    EXPECT_EQ(header->nuh_layer_id, 33U);
    EXPECT_EQ(header->nuh_temporal_id_plus1, 2U);
    EXPECT_FALSE(Collected({{0x40}}).Header().has_value());
    EXPECT_FALSE(Collected({}).Header().has_value());
}

TEST(NalUnitTypeName, NamesEveryType) {
    EXPECT_EQ(NalUnitTypeName(1), "TRAIL_R");
    EXPECT_EQ(NalUnitTypeName(48), "UNSPEC48");
    EXPECT_EQ(NalUnitTypeName(49), "UNSPEC49");
    EXPECT_EQ(NalUnitTypeName(63), "UNSPEC63");
}

}  // namespace
}  // namespace h265tool
