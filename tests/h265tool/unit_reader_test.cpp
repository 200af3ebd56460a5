#include "reading/unit_reader.h"

#include <gtest/gtest.h>

#include "sample_units.h"
#include "summary.h"

namespace h265tool {
namespace {

using test::BitString;

// A P slice that begins a picture.
NalUnit FirstSlice(unsigned int pps_id) {
    return Unit(1, BitString().U(1, 1).Ue(pps_id).Ue(1).U(8, 6));
}

NalUnit WithLayer(NalUnit unit, unsigned char nuh_layer_id) {
    unit.head[unit.start_code_length + 1] |= static_cast<unsigned char>(nuh_layer_id << 3);
    return unit;
}

class UnitReaderTest : public testing::Test {
 protected:
    std::string Read(const NalUnit &unit) { return Summary(reader_.Read(unit)); }

    UnitReader reader_;
};

TEST_F(UnitReaderTest, FollowsParameterSets) {
    EXPECT_EQ(Read(Unit(kSps, Sps({.id = 2, .width = 320, .height = 240}))),
              "SPS 2: 320x240 4:2:0, 8 bits, Main profile, Main tier, level 3.1");
    EXPECT_EQ(Read(Unit(kPps, Pps(7, 2))), "PPS 7: of SPS 2");
    EXPECT_EQ(Read(FirstSlice(7)), "first slice segment, address 0, P, POC LSBs 6");
}

TEST_F(UnitReaderTest, AReplacedSpsCounts) {
    Read(Unit(kSps, Sps({})));
    Read(Unit(kPps, Pps(0, 0)));
    const NalUnit slice = Unit(1, BitString().U(1, 1).Ue(0).Ue(1).U(4, 9).U(8, 0));
    EXPECT_EQ(Read(slice), "first slice segment, address 0, P, POC LSBs 144");
    Read(Unit(kSps, Sps({.log2_max_pic_order_cnt_lsb_minus4 = 0})));
    EXPECT_EQ(Read(slice), "first slice segment, address 0, P, POC LSBs 9");
}

TEST_F(UnitReaderTest, ReportsMissingParameterSets) {
    EXPECT_EQ(Read(FirstSlice(3)), "error: refers to PPS 3, which the stream has not carried");
    Read(Unit(kPps, Pps(3, 1)));
    EXPECT_EQ(Read(FirstSlice(3)), "error: refers to PPS 3 and SPS 1, which the stream has not carried");
}

TEST_F(UnitReaderTest, ReportsTheLibrarysReason) {
    EXPECT_EQ(Read(Unit(kVps, BitString().U(4, 0))), "error: cannot parse vps_max_layers_minus1.");
    EXPECT_EQ(Read(Unit(kSps, BitString().U(4, 0))), "error: cannot parse general_profile_space.");
    EXPECT_EQ(Read(Unit(kPps, BitString().Ue(0))), "error: cannot parse cabac_init_present_flag.");
    EXPECT_EQ(Read(UnitOf({0, 0, 1, 0x02, 1, 0x80})), "error: failed to get slice_pic_parameter_set_id.");
    EXPECT_EQ(Read(UnitOf({0, 0, 1, 0x46, 1})), "error: cannot parse pic_type.");
    Read(Unit(kSps, Sps({})));
    Read(Unit(kPps, Pps(0, 0)));
    EXPECT_EQ(Read(Unit(1, BitString().U(1, 1).Ue(0).Ue(1))),
              "error: failed to get slice_pic_order_cnt_lsb.");
}

TEST_F(UnitReaderTest, ABrokenSetMakesItsSlicesUnreadable) {
    Read(Unit(kSps, Sps({})));
    Read(Unit(kPps, Pps(0, 0)));
    Read(Unit(kPps, Pps(4, 0)));
    Read(Unit(kPps, BitString().Ue(4)));
    EXPECT_EQ(Read(FirstSlice(4)), "error: refers to PPS 4, which could not be parsed");
    EXPECT_EQ(Read(FirstSlice(0)), "first slice segment, address 0, P, POC LSBs 6");
}

TEST_F(UnitReaderTest, OtherLayersAreNotParsedAndReplaceNothing) {
    const std::string not_parsed =
        "not parsed: layers above the base layer (multilayer extensions) are not read";
    Read(Unit(kSps, Sps({.width = 320, .height = 240})));
    Read(Unit(kPps, Pps(0, 0)));
    EXPECT_EQ(Read(WithLayer(Unit(kVps, VpsWithTiming()), 1)), not_parsed);
    EXPECT_EQ(Read(WithLayer(Unit(kSps, Sps({})), 1)), not_parsed);
    EXPECT_EQ(Read(WithLayer(Unit(kPps, BitString().Ue(0)), 1)), not_parsed);
    EXPECT_EQ(Read(WithLayer(FirstSlice(0), 1)), not_parsed);
    EXPECT_EQ(Read(FirstSlice(0)), "first slice segment, address 0, P, POC LSBs 6");
}

TEST_F(UnitReaderTest, RefusesBrokenHeaders) {
    EXPECT_EQ(Read(UnitOf({0, 0, 1})), "error: the NAL unit header is truncated");
    EXPECT_EQ(Read(UnitOf({0, 0, 1, 0x40})), "error: the NAL unit header is truncated");
    EXPECT_EQ(Read(UnitOf({0, 0, 1, 0xC0, 1, 0})), "error: forbidden_zero_bit is 1");
    EXPECT_EQ(Read(UnitOf({0, 0, 1, 0x40, 8, 0})), "error: nuh_temporal_id_plus1 is 0");
}

TEST_F(UnitReaderTest, OtherTypesAreShownByNameAlone) {
    for (const unsigned int type : {10U, 22U, 31U, 36U, 37U, 38U, 41U, 63U})
        EXPECT_EQ(Read(Unit(type, BitString().U(8, 0x55))), "") << type;
}

TEST_F(UnitReaderTest, SummarizesPictures) {
    EXPECT_EQ(Read(Unit(kAud, BitString().U(3, 1))), "pic_type 1: P, I");
    EXPECT_EQ(Read(Unit(kAud, BitString().U(3, 5))), "pic_type 5");
    EXPECT_EQ(Read(Unit(kVps, VpsWithTiming().U(1, 0).Ue(0).U(1, 0))), "VPS 2: 1 sub-layer");
}

}  // namespace
}  // namespace h265tool
