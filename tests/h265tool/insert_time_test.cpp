// How time codes count, at which rates, and points in time.

#include <gtest/gtest.h>

#include "insert/time_code.h"
#include "insert/utc.h"
#include "rate.h"

namespace h265tool {
namespace {

constexpr Rate kNtsc{30000, 1001};
const TimeCodeCount kCount30(30, 2);

TimeCode Parsed(const char *text) {
    return ParseTimeCode(text).value_or(TimeCode{99, 99, 99, 99, false});
}

TEST(TimeCode, IsParsed) {
    EXPECT_EQ(Parsed("01:02:03:04"), (TimeCode{1, 2, 3, 4, false}));
    EXPECT_EQ(Parsed("23:59:59;99"), (TimeCode{23, 59, 59, 99, true}));
    for (const char *text : {"", "1:02:03:04", "24:00:00:00", "00:60:00:00", "00:00:60:00", "00;00:00:00",
                             "00:00:00:0x", "00:00:00.00", "00:00:00:000", "-1:00:00:00"})
        EXPECT_FALSE(ParseTimeCode(text).has_value()) << text;
}

TEST(TimeCode, LeavesOutCountsAtMinutesThatAreNoMultipleOfTen) {
    EXPECT_EQ(kCount30.At(1799, true), Parsed("00:00:59;29"));
    EXPECT_EQ(kCount30.At(1800, true), Parsed("00:01:00;02"));
    EXPECT_EQ(kCount30.At(17981, true), Parsed("00:09:59;29"));
    EXPECT_EQ(kCount30.At(17982, true), Parsed("00:10:00;00"));
    EXPECT_EQ(kCount30.At(107892, true), Parsed("01:00:00;00"));
    EXPECT_EQ(kCount30.At(1800, false), Parsed("00:01:00:00"));
    const TimeCodeCount count60(60, 4);
    EXPECT_EQ(count60.At(3599, true), Parsed("00:00:59;59"));
    EXPECT_EQ(count60.At(3600, true), Parsed("00:01:00;04"));
}

TEST(TimeCode, BeginsAgainAfterADay) {
    EXPECT_EQ(kCount30.At(2589408, true), Parsed("00:00:00;00"));
    EXPECT_EQ(kCount30.At(2589407, true), Parsed("23:59:59;29"));
    EXPECT_EQ(kCount30.At(2592000, false), Parsed("00:00:00:00"));
}

TEST(TimeCode, NumbersEachFrameOfADay) {
    for (const bool drop_frame : {false, true}) {
        for (uint64_t number = 0; number < (drop_frame ? 2589408 : 2592000); number++) {
            const TimeCode time_code = kCount30.At(number, drop_frame);
            ASSERT_TRUE(kCount30.Has(time_code)) << number;
            ASSERT_EQ(kCount30.FrameNumber(time_code), number);
        }
    }
}

TEST(TimeCode, HasNoFrameOfALeftOutCount) {
    EXPECT_FALSE(kCount30.Has(Parsed("00:01:00;01")));
    EXPECT_TRUE(kCount30.Has(Parsed("00:01:00:01")));
    EXPECT_TRUE(kCount30.Has(Parsed("00:10:00;01")));
    EXPECT_TRUE(kCount30.Has(Parsed("00:01:01;01")));
    EXPECT_FALSE(kCount30.Has(Parsed("00:00:00:30")));
}

TEST(Rate, IsParsedAndReduced) {
    EXPECT_EQ(ParseRate("25"), (Rate{25, 1}));
    EXPECT_EQ(ParseRate("60000/2002"), kNtsc);
    EXPECT_EQ(kNtsc.Text(), "30000/1001");
    EXPECT_EQ((Rate{25, 1}).Text(), "25");
    for (const char *text : {"", "x", "25x", "0", "25/0", "25/", "/1", "29.97", "-25", "10000001", "25/1/1",
                             "99999999999999999999"})
        EXPECT_FALSE(ParseRate(text).has_value()) << text;
}

TEST(Rate, IsThatOfTheVui) {
    vui_h265_t vui{};
    vui.vui_time_scale = 60000;
    vui.vui_num_units_in_tick = 2002;
    EXPECT_FALSE(RateOf(vui).has_value());
    vui.vui_timing_info_present_flag = 1;
    EXPECT_EQ(RateOf(vui), kNtsc);
    vui.vui_num_units_in_tick = 0;
    EXPECT_FALSE(RateOf(vui).has_value());
}

TEST(Rate, TellsHowTimeCodesCount) {
    const auto frames = [](const char *text) { return TimeCodeFrames(*ParseRate(text)).value_or(0); };
    EXPECT_EQ(frames("30000/1001"), 30U);
    EXPECT_EQ(frames("2997/100"), 30U);
    EXPECT_EQ(frames("24000/1001"), 24U);
    EXPECT_EQ(frames("60"), 60U);
    EXPECT_EQ(frames("25/2"), 0U);
    EXPECT_EQ(frames("30003/1000"), 0U);
    const auto dropped = [](const char *text) { return DroppedCounts(*ParseRate(text)); };
    EXPECT_EQ(dropped("30000/1001"), 2U);
    EXPECT_EQ(dropped("60000/1001"), 4U);
    EXPECT_EQ(dropped("30"), 0U);
    EXPECT_EQ(dropped("24000/1001"), 0U);
    EXPECT_EQ(dropped("25/2"), 0U);
}

TEST(Utc, IsParsed) {
    EXPECT_EQ(ParseUtc("1970-01-01T00:00:00Z"), 0);
    EXPECT_EQ(ParseUtc("2026-01-31T12:00:00Z"), 1769860800000000);
    EXPECT_EQ(ParseUtc("2024-02-29T23:59:59.123456Z"), 1709251199123456);
    EXPECT_EQ(ParseUtc("1970-01-01T00:00:01.5Z"), 1500000);
    for (const char *text : {"", "2026-01-31", "2026-01-31T12:00:00", "2026-02-29T00:00:00Z",
                             "2026-01-31T24:00:00Z", "2026-01-31T00:60:00Z", "2026-01-31T00:00:60Z",
                             "1969-12-31T23:59:59Z", "2026-01-31T12:00:00.Z", "2026-01-31T12:00:00.1234567Z"})
        EXPECT_FALSE(ParseUtc(text).has_value()) << text;
}

}  // namespace
}  // namespace h265tool
