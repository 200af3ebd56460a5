#include "picture_order.h"

#include <gtest/gtest.h>

#include "nal_unit.h"

namespace h265tool {
namespace {

constexpr unsigned int kTrailN = 0;
constexpr unsigned int kTrailR = 1;
constexpr unsigned int kTsaN = 2;
constexpr unsigned int kTsaR = 3;

class PictureOrderTest : public testing::Test {
 protected:
    // The next picture's count, with least significant bits of 4 bits.
    int64_t Next(unsigned int nal_unit_type, uint64_t lsb, unsigned int temporal_id = 0) {
        last_ = counter_.Next({nal_unit_type, temporal_id, lsb, 4});
        return last_.PicOrderCntVal;
    }

    PictureOrderCounter counter_;
    PictureOrder last_;
};

TEST_F(PictureOrderTest, CountsOnWhereTheLeastSignificantBitsWrap) {
    EXPECT_EQ(Next(kIdrWRadl, 0), 0);
    EXPECT_TRUE(last_.starts_cvs);
    EXPECT_EQ(Next(kTrailR, 7), 7);
    EXPECT_FALSE(last_.starts_cvs);
    EXPECT_EQ(Next(kTrailR, 14), 14);
    EXPECT_EQ(Next(kTrailR, 5), 21);
    EXPECT_EQ(Next(kTrailR, 13), 29);  // 8 ahead is ahead
    EXPECT_EQ(Next(kTrailR, 4), 36);   // 9 back is 7 ahead
    EXPECT_EQ(Next(kTrailR, 13), 29);  // 9 ahead is 7 back
    EXPECT_EQ(Next(kTrailR, 5), 37);   // 8 back is 8 ahead
}

TEST_F(PictureOrderTest, FollowsPicturesOfTheLowestSubLayerThatAreReferredTo) {
    Next(kIdrWRadl, 0);
    EXPECT_EQ(Next(kTrailR, 7), 7);
    // none of these becomes the picture that the next one is counted from: 2 would be 18 behind 14
    for (const auto &[type, temporal_id] : {std::pair(kTrailN, 0U),
                                            {kTsaN, 0U},
                                            {kTsaR, 1U},
                                            {kTrailR, 1U},
                                            {kRadlN, 0U},
                                            {kRadlR, 0U},
                                            {kRaslN, 0U},
                                            {kRaslR, 0U}}) {
        EXPECT_EQ(Next(type, 14, temporal_id), 14) << type;
        EXPECT_EQ(Next(kTrailN, 2), 2) << type;
    }
    EXPECT_EQ(Next(kTrailR, 14), 14);
    EXPECT_EQ(Next(kTrailN, 2), 18);
}

TEST_F(PictureOrderTest, StartsCodedVideoSequences) {
    Next(kIdrNLp, 0);
    Next(kTrailR, 9);
    EXPECT_EQ(Next(kIdrWRadl, 5), 0);  // an IDR picture has no such element
    EXPECT_TRUE(last_.starts_cvs);
    Next(kTrailR, 9);
    EXPECT_EQ(Next(kBlaWLp, 3), 3);
    EXPECT_TRUE(last_.starts_cvs);
    EXPECT_EQ(Next(kRaslN, 1), 1);
    EXPECT_TRUE(last_.is_skipped);
    EXPECT_EQ(Next(kRadlN, 2), 2);
    EXPECT_FALSE(last_.is_skipped);
}

TEST_F(PictureOrderTest, ACraPictureGoesOnUnlessItIsFirst) {
    EXPECT_EQ(Next(kCra, 6), 6);
    EXPECT_TRUE(last_.starts_cvs);
    EXPECT_EQ(Next(kRaslR, 4), 4);
    EXPECT_TRUE(last_.is_skipped);
    Next(kTrailR, 13);
    EXPECT_EQ(Next(kCra, 3), 19);
    EXPECT_FALSE(last_.starts_cvs);
    EXPECT_EQ(Next(kRaslR, 1), 17);
    EXPECT_FALSE(last_.is_skipped);
    counter_.EndOfSequence();
    EXPECT_EQ(Next(kCra, 3), 3);
    EXPECT_TRUE(last_.starts_cvs);
    Next(kRaslN, 2);
    EXPECT_TRUE(last_.is_skipped);
}

TEST_F(PictureOrderTest, AStreamMayBeginAnywhere) {
    EXPECT_EQ(Next(kTrailN, 9), 9);
    EXPECT_TRUE(last_.starts_cvs);
    EXPECT_EQ(Next(kTrailR, 1), 17);
    EXPECT_FALSE(last_.starts_cvs);
}

TEST_F(PictureOrderTest, TakesAnyWidth) {
    EXPECT_EQ(counter_.Next({kIdrNLp, 0, 0, ~uint64_t{0}}).PicOrderCntVal, 0);
    EXPECT_EQ(counter_.Next({kTrailR, 0, ~uint64_t{0}, 16}).PicOrderCntVal, -1);
}

}  // namespace
}  // namespace h265tool
