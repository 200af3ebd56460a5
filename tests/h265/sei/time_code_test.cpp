#include "h265/sei/time_code.h"

#include <gmock/gmock.h>

#include <climits>
#include <cstring>

#include "h265/sei/time_code_syntax.h"
#include "support/interposed.h"
#include "support/silence.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kCapacity = 36;
const std::string kVitcMissing = AssertionOf("pVitcData != NULL");  // reported, although it may be missing

const auto kSps = std::make_unique<sps_h265_t>();  // a large record

std::string Address(const void *address) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", address);
    return text;
}

vitc_t Vitc(int hours, int minutes, int seconds, int frames, unsigned char flag1 = 0) {
    const auto digit = [](int value) { return static_cast<unsigned char>(value); };
    vitc_t vitc{};
    vitc.FrameUnits = digit(frames % 10);
    vitc.FrameTens = digit(frames / 10);
    vitc.Flag1 = flag1;
    vitc.SecondUnits = digit(seconds % 10);
    vitc.SecondTens = digit(seconds / 10);
    vitc.MinuteUnits = digit(minutes % 10);
    vitc.MinuteTens = digit(minutes / 10);
    vitc.HourUnits = digit(hours % 10);
    vitc.HourTens = digit(hours / 10);
    return vitc;
}

std::string OutOfRange(int hours, int minutes, int seconds, int frames) {
    return "SEIData time(HH:MM:SS:FF):(" + std::to_string(hours) + ":" + std::to_string(minutes) + ":" +
           std::to_string(seconds) + ":" + std::to_string(frames) + ") is NOT in the expected boudaries\n";
}

class FormatTimeCodeSei : public testing::Test {
 protected:
    FormatTimeCodeSei() {
        info_.FrameRate = 25000;
        info_.pParsedSps = kSps.get();
    }

    void SetWallTime(int hours, int minutes, int seconds, int frames) {
        const auto byte = [](int value) { return static_cast<unsigned char>(value); };
        info_.WallTime = {byte(frames), byte(seconds), byte(minutes), byte(hours)};
    }

    // What is built, with a VITC record or without; trace_ then holds what that traced.
    Bytes Format(const vitc_t *vitc = nullptr) {
        trace_.Clear();
        Output output(kCapacity);
        const int length = H265Lib_format_sei_time_code_nal(output.data(), kCapacity, vitc, &info_);
        EXPECT_GT(length, 5);
        const Bytes nal(output.data(), output.data() + length);
        EXPECT_EQ(output.bytes(), output.Holding(nal));
        return nal;
    }

    // The time code that comes back when it is built, scanned and parsed.
    sei_h265_time_code_t ThereAndBack(const vitc_t *vitc = nullptr) {
        const Bytes nal = Format(vitc);
        const ScannedSei sei = ScanOnly(nal);
        EXPECT_EQ(sei.suid, SUID_TIME_CODE);
        sei_h265_time_code_t tc{};
        EXPECT_EQ(H265Lib_Parse_sei_timecode_nal(nal.data(), static_cast<int>(nal.size()), &sei.header, &tc),
                  TRUE);
        EXPECT_EQ(SeiNalUnit(TimeCodeMessage(tc)), nal);
        EXPECT_EQ(tc.num_clocks_ts, 1);
        EXPECT_EQ(tc.clock_timestamp_flag[0], 1);
        EXPECT_EQ(tc.full_timestamp_flag[0], 1);
        EXPECT_EQ(tc.discontinuity_flag[0], 0);
        EXPECT_EQ(tc.hours_value[0], info_.WallTime.hours);
        EXPECT_EQ(tc.minutes_value[0], info_.WallTime.minutes);
        EXPECT_EQ(tc.seconds_value[0], info_.WallTime.seconds);
        EXPECT_EQ(tc.n_frames[0], info_.WallTime.n_frames);
        return tc;
    }

    void ExpectZeroTime() const {
        EXPECT_EQ(
            info_.WallTime.hours | info_.WallTime.minutes | info_.WallTime.seconds | info_.WallTime.n_frames,
            0);
    }

    static void TraceUpTo(int level) { g_hH265LibDbg->nMaxLevel = level; }

    TraceCapture trace_{3};
    vui_h265_t &vui_ = (*kSps = {}).vui;
    SEI_time_code_info_t info_{};
};

TEST_F(FormatTimeCodeSei, MidnightNeedsEmulationPrevention) {
    EXPECT_EQ(Format(), (Bytes{0x00, 0x00, 0x01, 0x4E, 0x01, 0x88, 0x06, 0x60, 0x40, 0x00, 0x00, 0x03, 0x00,
                               0x10, 0x80}));
    ThereAndBack();
}

// With the time 00:00:00:00 the first two bits of time_offset_length follow two zero bytes.
TEST_F(FormatTimeCodeSei, HasEmulationPreventionWhereverItNeedsIt) {
    info_.FrameRate = 30000;
    struct Following {
        unsigned char byte;
        int offset_length;
    };
    for (const Following &following : {Following{0, 1}, {0, 7}, {1, 8}, {1, 15}, {2, 16}, {3, 24}, {3, 31}}) {
        SCOPED_TRACE(following.offset_length);
        vui_.vui_num_units_in_tick = UINT64{1} << following.offset_length;
        const Bytes nal = Format();
        EXPECT_EQ(Bytes(nal.begin() + 7, nal.begin() + 13),
                  (Bytes{0x60, 0x40, 0x00, 0x00, 0x03, following.byte}));
        EXPECT_EQ(ThereAndBack().time_offset_length[0], following.offset_length);
    }
    // a frame puts a bit in front of the two zero bytes, an hour one behind them
    vui_.vui_num_units_in_tick = 0;
    SetWallTime(0, 0, 0, 1);
    EXPECT_EQ(Format().size(), 14u);
    SetWallTime(1, 0, 0, 0);
    EXPECT_EQ(Format().size(), 14u);
}

TEST_F(FormatTimeCodeSei, TimesComeBackOverAGrid) {
    for (const int frame_rate : {24000, 25000, 29970, 50000, 59940}) {
        info_.FrameRate = frame_rate;
        for (const UINT64 units : {UINT64{0}, UINT64{1001}}) {
            vui_.vui_num_units_in_tick = units;
            for (const int hours : {0, 1, 16, 23})
                for (const int minutes : {0, 1, 10, 32, 59})
                    for (const int seconds : {0, 1, 32, 59})
                        for (const int frames : {0, 1, 2, 4, 29, 64, 85}) {
                            const vitc_t vitc = Vitc(hours, minutes, seconds, frames, 1);
                            info_.enTimeSource = EMBEDDED_TIME_CODE;
                            ThereAndBack(&vitc);
                            if (HasFailure())
                                return;
                        }
        }
    }
}

TEST_F(FormatTimeCodeSei, TheCountingTypeFollowsFrameRateAndSource) {
    struct Case {
        int source, mode;
        unsigned char flag1;
        int counting_type;  // at 29.97 and 59.94 Hz
    };
    for (const Case &c : {Case{EMBEDDED_TIME_CODE, 0, 1, 4},
                          {EMBEDDED_TIME_CODE, 1, 0xFF, 4},
                          {EMBEDDED_TIME_CODE, 1, 0xFE, 0},
                          {EMBEDDED_TIME_CODE, 0, 0, 0},
                          {UNKNOWN_TIME_CODE, 0, 0, 4},
                          {NTP_SERVER, 0, 1, 4},
                          {MISB605_DOUBLE_TIME_CODE, 0, 0, 4},
                          {UNKNOWN_TIME_CODE, 1, 1, 6},
                          {NTP_SERVER, 1, 0, 6},
                          {MISB605_DOUBLE_TIME_CODE, -1, 0, 6},
                          {-1, 2, 0, 6}}) {
        info_.enTimeSource = c.source;
        info_.enSystemTCCountingMode = c.mode;
        const vitc_t vitc = Vitc(1, 2, 3, 4, c.flag1);
        for (const int frame_rate : {29000, 29970, 29999, 59000, 59940, 59999}) {
            SCOPED_TRACE(std::to_string(frame_rate) + " source " + std::to_string(c.source));
            info_.FrameRate = frame_rate;
            EXPECT_EQ(ThereAndBack(&vitc).counting_type[0], c.counting_type);
        }
        for (const int frame_rate : {INT_MIN, 0, 25000, 28999, 30000, 50000, 58999, 60000, INT_MAX}) {
            SCOPED_TRACE(frame_rate);
            info_.FrameRate = frame_rate;
            EXPECT_EQ(ThereAndBack(&vitc).counting_type[0], 0);
        }
    }
}

TEST_F(FormatTimeCodeSei, AnEmbeddedSourceWithoutVitcDropsNothing) {
    info_.FrameRate = 29970;
    info_.enTimeSource = EMBEDDED_TIME_CODE;
    EXPECT_EQ(ThereAndBack().counting_type[0], 0);
}

TEST_F(FormatTimeCodeSei, TheFirstFrameBehindDroppedCountsIsMarked) {
    info_.enTimeSource = EMBEDDED_TIME_CODE;
    for (const bool is_5994 : {false, true}) {
        info_.FrameRate = is_5994 ? 59940 : 29970;
        for (int minutes = 0; minutes <= 59; minutes++)
            for (const int seconds : {0, 1, 59})
                for (int frames = 0; frames <= 5; frames++) {
                    SCOPED_TRACE(minutes * 10000 + seconds * 100 + frames);
                    const bool marked = seconds == 0 && minutes % 10 != 0 && frames == (is_5994 ? 4 : 2);
                    const vitc_t drop = Vitc(10, minutes, seconds, frames, 1);
                    EXPECT_EQ(ThereAndBack(&drop).cnt_drop_flag[0], marked);
                    const vitc_t no_drop = Vitc(10, minutes, seconds, frames, 0);
                    EXPECT_EQ(ThereAndBack(&no_drop).cnt_drop_flag[0], 0);
                }
    }
    const vitc_t last = Vitc(23, 59, 59, 29, 1);
    info_.FrameRate = 29970;
    EXPECT_EQ(ThereAndBack(&last).counting_type[0], 4);
    EXPECT_EQ(ThereAndBack(&last).cnt_drop_flag[0], 0);
}

TEST_F(FormatTimeCodeSei, UnspecifiedDroppingMarksNoFrame) {
    info_.enSystemTCCountingMode = SYSTEM_TC_UTC_CONVERSION_COUNT_MODE;
    for (const int frame_rate : {29970, 59940}) {
        info_.FrameRate = frame_rate;
        SetWallTime(10, 1, 0, frame_rate == 59940 ? 4 : 2);
        EXPECT_EQ(ThereAndBack().counting_type[0], 6);
        EXPECT_EQ(ThereAndBack().cnt_drop_flag[0], 0);
        info_.enSystemTCCountingMode = SYSTEM_TC_SMPTE12M_1_COUNT_MODE;
        EXPECT_EQ(ThereAndBack().cnt_drop_flag[0], 1);
        info_.enSystemTCCountingMode = SYSTEM_TC_UTC_CONVERSION_COUNT_MODE;
    }
}

TEST_F(FormatTimeCodeSei, TheOffsetIsWrittenWithOneBitLessThanItNeeds) {
    struct Case {
        int field_seq, frame_field_info, frame_rate;
        UINT64 units;
        int field_based, length, value;
    };
    for (const Case &c : {
             Case{1, 0, 25000, 1001, 1, 9, 1001 - 1024},  // 489 of 9 bits has its sign bit set
             {1, 0, 29970, 1001, 1, 9, -23},
             {0, 1, 25000, 1001, 1, 9, -23},
             {0, -1, 0, 1001, 1, 9, -23},
             {2, 0, 25000, 1001, 0, 0, 0},  // only 1 is a field sequence
             {0, 0, 29970, 1001, 0, 9, 500 - 512},
             {0, 0, 25000, 1001, 0, 0, 0},
             {0, 0, 28999, 1001, 0, 0, 0},
             {0, 0, 29000, 1001, 0, 9, -12},
             {0, 0, 60000, 1000, 0, 9, -12},
             {1, 1, 60000, 0, 1, 0, 0},
             {1, 1, 60000, 1, 1, 0, 0},
             {1, 0, 60000, 2, 1, 1, 0},
             {1, 0, 60000, 3, 1, 1, -1},
             {0, 0, 60000, 3, 0, 1, -1},
             {1, 0, 60000, 0xFFFFFFFF, 1, 31, -1},
             {1, 0, 60000, 0x80000000, 1, 31, 0},
             {0, 0, 60000, 0x80000000, 0, 31, -0x40000000},
             {1, 0, 60000, 0x1'0000'0001, 1, 0, 0},  // the low 32 bits give the length
             {0, 0, 60000, 0x1'0000'0005, 0, 2, -2},
         }) {
        SCOPED_TRACE(std::to_string(c.units) + " at " + std::to_string(c.frame_rate));
        vui_.field_seq_flag = c.field_seq;
        vui_.frame_field_info_present_flag = c.frame_field_info;
        vui_.vui_num_units_in_tick = c.units;
        info_.FrameRate = c.frame_rate;
        const sei_h265_time_code_t tc = ThereAndBack();
        EXPECT_EQ(tc.units_field_based_flag[0], c.field_based);
        EXPECT_EQ(tc.time_offset_length[0], c.length);
        EXPECT_EQ(tc.time_offset_value[0], c.value);
    }
}

TEST_F(FormatTimeCodeSei, TheBitsOfAnIntegerAreOneLessThanItNeeds) {
    EXPECT_EQ(_FindNumberOfBitsToHoldInteger(0), 0u);
    EXPECT_EQ(_FindNumberOfBitsToHoldInteger(1001), 9u);
    for (unsigned int n = 0; n <= 31; n++) {
        const unsigned int first = 1U << n;
        EXPECT_EQ(_FindNumberOfBitsToHoldInteger(first), n);
        EXPECT_EQ(_FindNumberOfBitsToHoldInteger(first + (first - 1)), n);
    }
}

TEST_F(FormatTimeCodeSei, ThereIsOneClockTimestamp) {
    for (const int field_seq : {0, 1}) {
        vui_.field_seq_flag = field_seq;
        unsigned char count = 0;
        EXPECT_EQ(_DeriveNumClockTs(kSps.get(), &count), TRUE);
        EXPECT_EQ(count, 1);
    }
    unsigned char count = 7;
    TraceUpTo(8);
    EXPECT_EQ(_DeriveNumClockTs(nullptr, &count), FALSE);
    EXPECT_EQ(_DeriveNumClockTs(kSps.get(), nullptr), FALSE);
    EXPECT_THAT(trace_.Assertions(),
                ElementsAre(AssertionOf("pSps != NULL"), AssertionOf("pNumClockTS != NULL")));
}

TEST_F(FormatTimeCodeSei, ScanTypeAndFieldAreTracedOnly) {
    const Bytes nal = Format();
    info_.scan_type = 1;
    info_.BottomFieldFlag = 1;
    EXPECT_EQ(Format(), nal);
}

TEST_F(FormatTimeCodeSei, VitcTimesWithinTheirBoundsAreAccepted) {
    const auto result = [this](const vitc_t &vitc) { return _SMPTEVitcToSEIPictiming(&vitc, &info_); };
    EXPECT_EQ(result(Vitc(23, 59, 59, 85)), 0);
    EXPECT_EQ(result(Vitc(0, 0, 0, 0)), 0);
    ExpectZeroTime();
    EXPECT_THAT(trace_.Errors(), IsEmpty());

    for (const auto &[hours, minutes, seconds, frames] :
         {std::tuple{24, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 60, 0}, {0, 0, 0, 86}, {99, 98, 97, 96}}) {
        trace_.Clear();
        EXPECT_EQ(result(Vitc(hours, minutes, seconds, frames)), -1);
        EXPECT_THAT(trace_.Errors(), ElementsAre(OutOfRange(hours, minutes, seconds, frames)));
        EXPECT_EQ(trace_.messages()[0].function, "_SMPTEVitcToSEIPictiming");
        EXPECT_EQ(info_.WallTime.hours, hours);  // they stay there
        EXPECT_EQ(info_.WallTime.n_frames, frames);
    }
    vitc_t wrapping = Vitc(1, 2, 3, 0);
    wrapping.FrameTens = 25;
    wrapping.FrameUnits = 9;  // 259 in 8 bits
    EXPECT_EQ(result(wrapping), 0);
    EXPECT_EQ(info_.WallTime.n_frames, 3);
}

TEST_F(FormatTimeCodeSei, TheConversionReportsNullPointers) {
    const vitc_t vitc{};
    TraceUpTo(8);
    EXPECT_EQ(_SMPTEVitcToSEIPictiming(nullptr, nullptr), -1);
    EXPECT_EQ(_SMPTEVitcToSEIPictiming(&vitc, nullptr), -1);
    EXPECT_THAT(trace_.Errors(), ElementsAre("pVitcData:(nil) is NULL!\n", "SEIData:(nil) is NULL!\n"));
    EXPECT_EQ(trace_.messages().size(), 2u);
}

TEST_F(FormatTimeCodeSei, ABadVitcTimeGivesMidnight) {
    const Bytes midnight = Format();
    for (const vitc_t &vitc : {Vitc(24, 1, 2, 3), Vitc(1, 2, 3, 86)}) {
        SetWallTime(1, 2, 3, 4);
        EXPECT_EQ(Format(&vitc), midnight);
        ExpectZeroTime();
        ASSERT_EQ(trace_.Errors().size(), 2u);
        EXPECT_EQ(trace_.Errors()[1], "Failed to convert pVitcData:" + Address(&vitc) +
                                          " into timecode_data:" + Address(&info_) + "\n");
        EXPECT_THAT(trace_.Assertions(), IsEmpty());
        InSilence([&] {
            Output output(kCapacity);
            EXPECT_EQ(H265Lib_format_sei_time_code_nal(output.data(), kCapacity, &vitc, &info_),
                      static_cast<int>(midnight.size()));
            EXPECT_EQ(output.bytes(), output.Holding(midnight));
        });
    }
}

TEST_F(FormatTimeCodeSei, NeedsABufferOf36Bytes) {
    const vitc_t vitc = Vitc(1, 2, 3, 4);
    for (const int len : {35, 5, 1, 0, -1, INT_MIN}) {
        SCOPED_TRACE(len);
        Output output(std::max(len, 0));
        trace_.Clear();
        EXPECT_EQ(H265Lib_format_sei_time_code_nal(output.data(), len, &vitc, &info_), -1);
        EXPECT_EQ(output.bytes(), output.Holding({}));
        EXPECT_THAT(trace_.Errors(), ElementsAre("Received buffer len:" + std::to_string(len) +
                                                 " is smaller than actual size of SEI:36.\n"));
        EXPECT_EQ(trace_.Assertions(),
                  len > 0 ? std::vector<std::string>{} : std::vector{AssertionOf("len > 0")});
        EXPECT_EQ(info_.WallTime.seconds, 3);
        InSilence(
            [&] { EXPECT_EQ(H265Lib_format_sei_time_code_nal(output.data(), len, &vitc, &info_), -1); });
    }
    Output output(36);
    EXPECT_EQ(H265Lib_format_sei_time_code_nal(output.data(), INT_MAX, &vitc, &info_), 14);
}

TEST_F(FormatTimeCodeSei, NullPointersAreReportedAndFail) {
    const vitc_t vitc = Vitc(1, 2, 3, 4);
    Output output(kCapacity);
    EXPECT_EQ(H265Lib_format_sei_time_code_nal(nullptr, kCapacity, &vitc, &info_), -1);
    EXPECT_EQ(H265Lib_format_sei_time_code_nal(output.data(), kCapacity, &vitc, nullptr), -1);
    EXPECT_THAT(trace_.Assertions(),
                ElementsAre(AssertionOf("buffer != NULL"), AssertionOf("buffer != NULL"),
                            AssertionOf("pTimecodeData != NULL"), AssertionOf("pTimecode_data != NULL")));
    EXPECT_THAT(trace_.Errors(), ElementsAre("SEIData:(nil) is NULL!\n",
                                             testing::StartsWith("Failed to convert pVitcData:0x")));

    trace_.Clear();
    EXPECT_EQ(_AssembleTimecodeSEI(nullptr, kCapacity, &vitc, &info_), -1);
    EXPECT_EQ(_AssembleTimecodeSEI(output.data(), kCapacity, &vitc, nullptr), -1);
    EXPECT_THAT(trace_.Assertions(),
                ElementsAre(AssertionOf("buffer != NULL"), AssertionOf("pTimecode_data != NULL")));
    EXPECT_THAT(trace_.Errors(), IsEmpty());

    trace_.Clear();
    info_.pParsedSps = nullptr;
    EXPECT_EQ(H265Lib_format_sei_time_code_nal(output.data(), kCapacity, &vitc, &info_), -1);
    EXPECT_THAT(trace_.Assertions(), ElementsAre(AssertionOf("pSps != NULL")));
    EXPECT_THAT(trace_.Errors(), ElementsAre("Failed to derive num_clock_ts.\n"));
    InSilence(
        [&] { EXPECT_EQ(H265Lib_format_sei_time_code_nal(output.data(), kCapacity, &vitc, &info_), -1); });
    EXPECT_EQ(output.bytes(), output.Holding({}));
}

TEST_F(FormatTimeCodeSei, WithoutVitcTheWallTimeServes) {
    SetWallTime(21, 43, 56, 17);
    ThereAndBack();
    EXPECT_EQ(info_.WallTime.hours, 21);
    EXPECT_EQ(info_.WallTime.n_frames, 17);
    EXPECT_THAT(trace_.Assertions(), ElementsAre(kVitcMissing));
    EXPECT_THAT(trace_.Errors(), IsEmpty());
    SetWallTime(255, 255, 255, 255);  // written through the low bits of each
    EXPECT_EQ(Format(), Joined({kSeiPrefix, {0x88, 0x06, 0x60, 0x47, 0xFF, 0xFF, 0xFC, 0x10, 0x80}}));
}

TEST_F(FormatTimeCodeSei, TracesItsSteps) {
    const ControlledClock clock(FreshTime());
    vui_.field_seq_flag = 1;
    vui_.vui_num_units_in_tick = 1001;
    const vitc_t vitc = Vitc(1, 2, 3, 4);
    Output output(40);
    TraceUpTo(8);
    ASSERT_EQ(H265Lib_format_sei_time_code_nal(output.data(), 40, &vitc, &info_), 15);
    EXPECT_THAT(
        trace_.Texts(7),
        ElementsAre("Called. Buffer:0x" + Address(output.data()) + ", len:40, pVitc_data:" + Address(&vitc) +
                        ", timecode_data:" + Address(&info_) + "\n",
                    "num_bits:9 for time_offset_value.\n",
                    "last_payload_size_byte:7, bitoffset before/after:8/72.\n",
                    "Final sei time_code num_bits:80, Bytes:10.\n", "About to encapsulate SODB in RBSP.",
                    "Max RBSPSize=30, Encapsulated NAL size=10\n"));
    EXPECT_EQ(trace_.messages().size(), 6u + 2);
    EXPECT_EQ(trace_.messages().front().function, "H265Lib_format_sei_time_code_nal");
    EXPECT_EQ(trace_.messages().back().function, "_AssembleTimecodeSEI");
}

TEST_F(FormatTimeCodeSei, TheStatusSaysWhereTheTimeComesFrom) {
    ControlledClock clock(FreshTime());
    vitc_t vitc = Vitc(21, 43, 56, 17);
    vitc.VitcCrc = 0x12;
    vitc.VitcCrcErr = 0x34;
    info_.enTimeSource = EMBEDDED_TIME_CODE;
    info_.FrameRate = 29970;
    info_.scan_type = 2;
    info_.BottomFieldFlag = 1;
    TraceUpTo(6);
    Format(&vitc);
    EXPECT_THAT(trace_.Texts(6),
                ElementsAre("enTimeSource:VITC, time H:M:S:F(21:43:56:17), anc_line:4660, .\n",
                            "FrameRate:29970, BottomFieldFlag:1, ScanType:2, enSystemTCCountingMode:0.\n"));
    for (const int source : {0, 1, 3, -1}) {
        clock.Set(FreshTime());
        info_.enTimeSource = source;
        info_.enSystemTCCountingMode = 1;
        Format();
        EXPECT_THAT(
            trace_.Texts(6),
            ElementsAre("enTimeSource:SYSTEM, time H:M:S:F(21:43:56:17), anc_line:-1, .\n",
                        "FrameRate:29970, BottomFieldFlag:1, ScanType:2, enSystemTCCountingMode:1.\n"));
    }
}

TEST_F(FormatTimeCodeSei, TheStatusIsTracedEveryFifthSecond) {
    const std::time_t start = FreshTime();
    ControlledClock clock(start);
    const auto lines = [&](std::time_t now, int level) {
        clock.Set(now);
        TraceUpTo(level);
        Format();
        return trace_.Texts(6).size();
    };
    EXPECT_EQ(lines(start, 6), 2u);
    EXPECT_EQ(lines(start + 4, 6), 0u);
    EXPECT_EQ(lines(start + 5, 6), 2u);
    EXPECT_EQ(lines(start + 10, 5), 0u);
    EXPECT_EQ(lines(start + 14, 6), 0u);  // counted although the level held it back
    EXPECT_EQ(lines(start + 15, 6), 2u);

    // a call that fails does not count
    info_.pParsedSps = nullptr;
    Output output(kCapacity);
    clock.Set(start + 20);
    EXPECT_EQ(H265Lib_format_sei_time_code_nal(output.data(), kCapacity, nullptr, &info_), -1);
    info_.pParsedSps = kSps.get();
    EXPECT_EQ(lines(start + 20, 6), 2u);
}

}  // namespace
}  // namespace test
