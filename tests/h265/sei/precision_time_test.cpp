#include <gmock/gmock.h>

#include <climits>

#include "h265/sei/built_sei.h"
#include "support/silence.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kLength = 36;
constexpr unsigned char kStatus = 0x9F;
constexpr INT64 kTime = 0x0001020304050607;

const Bytes kHeader = {0x00, 0x00, 0x01, 0x4E, 0x01, 0x05, 0x1C, 0xA8, 0x68, 0x7D, 0xD4, 0xD7,
                       0x59, 0x37, 0x58, 0xA5, 0xCE, 0xF0, 0x33, 0x8B, 0x65, 0x45, 0xF1};

TEST(FormatPrecisionTimeSei, HasTheTimeInPairsOfBytes) {
    Output output(40);
    EXPECT_EQ(H265Lib_formatMISPMicroSecondTimeSEI(output.data(), 40, &kTime, kStatus), kLength);
    EXPECT_EQ(
        output.bytes(),
        output.Holding(Joined(
            {kHeader, {0x9F, 0x00, 0x01, 0xFF, 0x02, 0x03, 0xFF, 0x04, 0x05, 0xFF, 0x06, 0x07}, {0x80}})));
}

TEST(FormatPrecisionTimeSei, EveryTimeComesBackAndNoneNeedsEmulationPrevention) {
    for (const INT64 time : {INT64{0}, INT64{1}, INT64{-1}, INT64{2}, INT64{0x03000003},
                             INT64{0x0100'0000'0000}, INT64{1'700'000'000'000'000}, INT64_MIN, INT64_MAX,
                             INT64{0x0102030405060708}, static_cast<INT64>(0xFEDCBA9876543210)}) {
        SCOPED_TRACE(time);
        Output output(kLength);
        ASSERT_EQ(H265Lib_formatMISPMicroSecondTimeSEI(output.data(), kLength, &time, 0x1F), kLength);
        const Bytes nal = output.bytes();
        const ScannedSei sei = ScanOnly(nal);
        EXPECT_EQ(sei.suid, SUID_UNKNOWN);
        EXPECT_EQ(sei.header.payload_type, 5);
        EXPECT_EQ(sei.header.payload_size, 28u);
        EXPECT_EQ(Bytes(nal.begin(), nal.begin() + 23), kHeader);
        EXPECT_EQ(nal[23], 0x1F);
        UINT64 read = 0;
        for (const int i : {24, 25, 27, 28, 30, 31, 33, 34})
            read = read << 8 | output.data()[i];
        EXPECT_EQ(static_cast<INT64>(read), time);
        EXPECT_THAT((Bytes{nal[26], nal[29], nal[32], nal[35]}), ElementsAre(0xFF, 0xFF, 0xFF, 0x80));
    }
}

TEST(FormatPrecisionTimeSei, TheFiveLowBitsOfTheStatusHaveToBeSet) {
    for (int status = 0; status <= 0xFF; status++) {
        SCOPED_TRACE(status);
        Output output(kLength);
        const TraceCapture trace(3);
        const int length = H265Lib_formatMISPMicroSecondTimeSEI(output.data(), kLength, &kTime,
                                                                static_cast<unsigned char>(status));
        if (status % 0x20 == 0x1F) {
            EXPECT_EQ(length, kLength);
            EXPECT_EQ(output.bytes()[23], status);
            EXPECT_THAT(trace.Errors(), IsEmpty());
            continue;
        }
        EXPECT_EQ(length, -1);
        EXPECT_EQ(output.bytes(), output.Holding({}));
        char report[64];
        std::snprintf(report, sizeof report, "StatusByte:%#x, bits[4:0]:%#x should be 0x1f!\n",
                      static_cast<unsigned int>(status), static_cast<unsigned int>(status) & 0x1F);
        EXPECT_THAT(trace.Errors(), ElementsAre(report));
    }
}

TEST(FormatPrecisionTimeSei, ReportsTheStatusInHexadecimal) {
    Output output(kLength);
    const TraceCapture trace(3);
    EXPECT_EQ(H265Lib_formatMISPMicroSecondTimeSEI(output.data(), kLength, &kTime, 0x1E), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre("StatusByte:0x1e, bits[4:0]:0x1e should be 0x1f!\n"));
    InSilence(
        [&] { EXPECT_EQ(H265Lib_formatMISPMicroSecondTimeSEI(output.data(), kLength, &kTime, 0x1E), -1); });
}

TEST(FormatPrecisionTimeSei, TracesTheTimeInSixteenDigits) {
    Output output(kLength);
    TraceCapture trace;
    H265Lib_formatMISPMicroSecondTimeSEI(output.data(), kLength, &kTime, kStatus);
    EXPECT_THAT(trace.Texts(6), ElementsAre("Precision time:0283686952306183.\n"));
    EXPECT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, "H265Lib_formatMISPMicroSecondTimeSEI");
    trace.Clear();
    const INT64 before_1970 = -5;
    H265Lib_formatMISPMicroSecondTimeSEI(output.data(), kLength, &before_1970, kStatus);
    EXPECT_THAT(trace.Texts(6), ElementsAre("Precision time:-000000000000005.\n"));
}

TEST(FormatPrecisionTimeSei, NullPointersHaveTheirOwnReports) {
    Output output(kLength);
    TraceCapture trace;
    EXPECT_EQ(H265Lib_formatMISPMicroSecondTimeSEI(nullptr, kLength, nullptr, 0), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre("buffer:(nil) is NULL!\n"));
    trace.Clear();
    EXPECT_EQ(H265Lib_formatMISPMicroSecondTimeSEI(output.data(), kLength, nullptr, 0), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre("pllUsecTime:(nil) is NULL, no precise time given!\n"));
    EXPECT_THAT(trace.Assertions(), IsEmpty());
    InSilence([&] {
        EXPECT_EQ(H265Lib_formatMISPMicroSecondTimeSEI(output.data(), kLength, nullptr, kStatus), -1);
    });
    EXPECT_EQ(output.bytes(), output.Holding({}));
}

TEST(FormatPrecisionTimeSei, ABufferThatIsTooSmallIsLeftAlone) {
    for (const int len : {kLength - 1, 5, 0, -1, INT_MIN}) {
        Output output(std::max(len, 0));
        const TraceCapture trace(3);
        EXPECT_EQ(H265Lib_formatMISPMicroSecondTimeSEI(output.data(), len, &kTime, kStatus), 0);
        EXPECT_THAT(trace.Errors(),
                    ElementsAre("SEI output buffer length:" + std::to_string(len) + " is too small!\n"));
        EXPECT_EQ(output.bytes(), output.Holding({}));
    }
    Output output(kLength);
    EXPECT_EQ(H265Lib_formatMISPMicroSecondTimeSEI(output.data(), INT_MAX, &kTime, kStatus), kLength);
}

}  // namespace
}  // namespace test
