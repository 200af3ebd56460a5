#include "parameter_sets.h"

#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <string>

#include "unit_error.h"

namespace h265tool {
namespace {

sps_h265_t SpsOfId(uint64_t id, uint64_t width = 64) {
    sps_h265_t sps{};
    sps.seq_parameter_set_id = id;
    sps.pic_width_in_luma_samples = width;
    return sps;
}

pps_h265_t PpsOfIds(uint64_t id, uint64_t sps_id) {
    pps_h265_t pps{};
    pps.pps_pic_parameter_set_id = id;
    pps.pps_seq_parameter_set_id = sps_id;
    return pps;
}

std::string ErrorOf(const std::function<void()> &call) {
    try {
        call();
    } catch (const UnitError &error) {
        return error.what();
    }
    return "none";
}

std::string ActivationError(const ParameterSets &sets, uint64_t pps_id) {
    return ErrorOf([&] { sets.Activated(pps_id); });
}

TEST(ParameterSets, FollowsTheIds) {
    ParameterSets sets;
    sets.Keep(SpsOfId(15, 320));
    sets.Keep(SpsOfId(0, 640));
    sets.Keep(PpsOfIds(63, 15));
    sets.Keep(PpsOfIds(0, 0));
    EXPECT_EQ(sets.Activated(63).sps.pic_width_in_luma_samples, 320U);
    EXPECT_EQ(sets.Activated(63).pps.pps_pic_parameter_set_id, 63U);
    EXPECT_EQ(sets.Activated(0).sps.pic_width_in_luma_samples, 640U);
}

TEST(ParameterSets, ALaterSetReplacesTheEarlier) {
    ParameterSets sets;
    sets.Keep(SpsOfId(1, 320));
    sets.Keep(SpsOfId(2, 640));
    sets.Keep(PpsOfIds(0, 1));
    sets.Keep(SpsOfId(1, 160));
    EXPECT_EQ(sets.Activated(0).sps.pic_width_in_luma_samples, 160U);
    sets.Keep(PpsOfIds(0, 2));
    EXPECT_EQ(sets.Activated(0).sps.pic_width_in_luma_samples, 640U);
}

TEST(ParameterSets, SaysWhatIsMissing) {
    ParameterSets sets;
    EXPECT_EQ(ActivationError(sets, 3), "refers to PPS 3, which the stream has not carried");
    EXPECT_EQ(ActivationError(sets, 64), "refers to PPS 64, which the stream has not carried");
    sets.Keep(PpsOfIds(3, 7));
    EXPECT_EQ(ActivationError(sets, 3), "refers to PPS 3 and SPS 7, which the stream has not carried");
    sets.Keep(PpsOfIds(3, 16));
    EXPECT_EQ(ActivationError(sets, 3), "refers to PPS 3 and SPS 16, which the stream has not carried");
}

TEST(ParameterSets, AnUnreadableSetReplacesTheEarlierToo) {
    ParameterSets sets;
    sets.Keep(SpsOfId(1));
    sets.Keep(PpsOfIds(2, 1));
    sets.MarkUnreadableSps(1);
    EXPECT_EQ(ActivationError(sets, 2), "refers to PPS 2 and SPS 1, which could not be parsed");
    sets.MarkUnreadablePps(2);
    EXPECT_EQ(ActivationError(sets, 2), "refers to PPS 2, which could not be parsed");
    sets.Keep(SpsOfId(1));
    sets.Keep(PpsOfIds(2, 1));
    EXPECT_EQ(ActivationError(sets, 2), "none");
    sets.MarkUnreadableSps(~uint64_t{0});
    sets.MarkUnreadablePps(64);
    EXPECT_EQ(ActivationError(sets, 2), "none");
}

TEST(ParameterSets, RefusesIdsThatNoSetCanHave) {
    ParameterSets sets;
    EXPECT_EQ(ErrorOf([&] { sets.Keep(SpsOfId(16)); }), "sps_seq_parameter_set_id is 16, above 15");
    EXPECT_EQ(ErrorOf([&] { sets.Keep(PpsOfIds(64, 0)); }), "pps_pic_parameter_set_id is 64, above 63");
}

// What the library makes of the copy: floor(Log2(PicSizeInCtbsY)) + 1 bits.
unsigned int AddressLengthOfCopy(uint64_t width, uint64_t height, uint64_t log2_diff) {
    sps_h265_t sps{};
    sps.pic_width_in_luma_samples = width;
    sps.pic_height_in_luma_samples = height;
    sps.log2_min_luma_coding_block_size_minus3 = 1;
    sps.log2_diff_max_min_luma_coding_block_size = log2_diff;
    const sps_h265_t copy = SpsForSlices(sps);
    const uint64_t size = uint64_t{16} << log2_diff;
    EXPECT_EQ(copy.pic_width_in_luma_samples % size, 0U);
    return static_cast<unsigned int>(
        std::bit_width(copy.pic_width_in_luma_samples / size * (copy.pic_height_in_luma_samples / size)));
}

TEST(SpsForSlices, HasTheAddressLengthOfTheStandard) {
    EXPECT_EQ(AddressLengthOfCopy(256, 128, 0), 7U);    // 128 blocks
    EXPECT_EQ(AddressLengthOfCopy(1024, 512, 1), 9U);   // 512 blocks
    EXPECT_EQ(AddressLengthOfCopy(1920, 1080, 2), 9U);  // 510 blocks
    for (uint64_t blocks = 2; blocks <= 600; blocks++) {
        unsigned int ceil_log2 = 0;
        while ((uint64_t{1} << ceil_log2) < blocks)
            ceil_log2++;
        EXPECT_EQ(AddressLengthOfCopy(16 * blocks, 16, 0), ceil_log2) << blocks;
        EXPECT_EQ(AddressLengthOfCopy(8, 16 * blocks - 8, 0), ceil_log2) << blocks;
    }
}

TEST(SpsForSlices, LeavesImpossibleBlockSizesAlone) {
    sps_h265_t sps{};
    sps.pic_width_in_luma_samples = sps.pic_height_in_luma_samples = 1000;
    sps.log2_diff_max_min_luma_coding_block_size = ~UINT64{0};
    EXPECT_EQ(SpsForSlices(sps).pic_width_in_luma_samples, 1000U);
}

}  // namespace
}  // namespace h265tool
