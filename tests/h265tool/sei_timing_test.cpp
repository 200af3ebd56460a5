// Which SPS picture timing is read with, through `h265tool inspect`.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "run_tool.h"
#include "sample_units.h"

namespace h265tool {
namespace {

using test::BitString;
using test::Bytes;
using ::testing::HasSubstr;

Bytes SpsBytes(unsigned int id, const BitString &vui) {
    return Unit(kSps, Sps({.id = id, .vui = vui})).head;
}
Bytes PpsBytes(unsigned int id, unsigned int sps_id) {
    return Unit(kPps, Pps(id, sps_id)).head;
}
Bytes Idr(unsigned int pps_id) {
    return Unit(kIdrNLp, BitString().U(2, 2).Ue(pps_id).Ue(2)).head;
}

// pic_timing( ) of 2 bytes: 0x2A, 0x5C.
const Bytes kTiming = test::NalUnit(kPrefixSei, {1, 2, 0x2A, 0x5C, 0x80});

// 8 + 8 bits: removal delay 43, output delay 92.
const BitString kWideHrd = VuiWithHrd(8, 8, false);
// pic_struct 2, source_scan_type 2, duplicate_flag 1; 4 + 5 bits: 2 + 1 and 28
const BitString kNarrowHrd = VuiWithHrd(4, 5, true);

constexpr char kWide[] = "pic_timing: CPB removal delay 43, DPB output delay 92\n";
constexpr char kNarrow[] =
    "pic_timing: bottom field, unknown scan, duplicate, CPB removal delay 3, DPB output delay 28\n";
constexpr char kUnknown[] = "pic_timing (2 bytes): not parsed: its SPS is not there\n";

// The lines about picture timing.
std::string Timings(std::initializer_list<Bytes> units) {
    const TemporaryFile file(Joined(units));
    const Outcome outcome = Shell("TOOL inspect '" + file.path() + "'");
    EXPECT_EQ(outcome.Lines().size(), units.size());
    std::string timings;
    for (const std::string &line : outcome.Lines()) {
        if (const size_t at = line.find("pic_timing"); at != std::string::npos)
            timings += line.substr(at) + "\n";
    }
    return timings;
}

TEST(SeiTiming, IsReadWithTheSpsOfTheSliceBehindIt) {
    EXPECT_EQ(Timings({SpsBytes(0, kWideHrd), SpsBytes(1, kNarrowHrd), PpsBytes(0, 0), PpsBytes(1, 1),
                       kTiming, Idr(0), kTiming, Idr(1), kTiming, Idr(1), kTiming, Idr(0)}),
              std::string(kWide) + kNarrow + kNarrow + kWide);
}

TEST(SeiTiming, ParameterSetsMayComeInBetween) {
    EXPECT_EQ(Timings({kTiming, SpsBytes(1, kNarrowHrd), PpsBytes(0, 1), Idr(0)}), kNarrow);
    // both the SPS and the PPS are replaced
    EXPECT_EQ(Timings({SpsBytes(1, kNarrowHrd), PpsBytes(0, 1), kTiming, Idr(0), kTiming,
                       SpsBytes(1, kWideHrd), PpsBytes(0, 1), Idr(0)}),
              std::string(kNarrow) + kWide);
    EXPECT_EQ(Timings({SpsBytes(0, kWideHrd), SpsBytes(1, kNarrowHrd), PpsBytes(0, 1), kTiming, Idr(0),
                       kTiming, PpsBytes(0, 0), Idr(0)}),
              std::string(kNarrow) + kWide);
}

TEST(SeiTiming, WithoutASliceTheSpsOfTheOneBeforeOrTheOnlyOneCounts) {
    const Bytes wide = SpsBytes(0, kWideHrd);
    const Bytes narrow = SpsBytes(1, kNarrowHrd);
    EXPECT_EQ(Timings({wide, narrow, PpsBytes(0, 0), PpsBytes(1, 1), Idr(1), kTiming}), kNarrow);
    EXPECT_EQ(Timings({wide, narrow, PpsBytes(1, 1), Idr(1), kTiming, Idr(5)}), kNarrow);
    EXPECT_EQ(Timings({wide, kTiming}), kWide);
    EXPECT_EQ(Timings({wide, narrow, kTiming}), kUnknown);
    EXPECT_EQ(Timings({kTiming}), kUnknown);
}

TEST(SeiTiming, IsNotHeldBackBeyondItsAccessUnit) {
    const Bytes delimiter = Unit(kAud, BitString().U(3, 0)).head;
    const Bytes wide = SpsBytes(0, kWideHrd);
    EXPECT_EQ(Timings({wide, kTiming, delimiter, SpsBytes(1, kNarrowHrd), PpsBytes(1, 1), Idr(1)}), kWide);
}

TEST(SeiTiming, AnSpsThatTheMessageIsTooShortForMakesAnError) {
    const TemporaryFile file(
        Joined({SpsBytes(0, VuiWithHrd(16, 16, false)), PpsBytes(0, 0), kTiming, Idr(0)}));
    const Outcome outcome = Shell("TOOL inspect '" + file.path() + "'");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, HasSubstr("pic_timing (2 bytes): error: cannot parse dpb_output_delay."));
}

TEST(SeiTiming, HasTheFieldsThatTheSpsAnnounces) {
    const TemporaryFile file(Joined({SpsBytes(0, kNarrowHrd), SpsBytes(1, {}), PpsBytes(0, 0), PpsBytes(1, 1),
                                     kTiming, Idr(0), kTiming, Idr(1)}));
    const std::vector<std::string> lines = Shell("TOOL inspect --json '" + file.path() + "'").Lines();
    ASSERT_EQ(lines.size(), 8U);
    EXPECT_THAT(lines[4], HasSubstr(R"("pic_timing":{"pic_struct":2,"source_scan_type":2,"duplicate_flag":1,)"
                                    R"("au_cpb_removal_delay_minus1":2,"pic_dpb_output_delay":28}})"));
    EXPECT_THAT(lines[6], HasSubstr(R"("pic_timing":{}})"));
}

TEST(SeiTiming, ManyUnitsWithoutASliceAreNotHeldBackForEver) {
    Bytes stream = SpsBytes(0, kWideHrd);
    for (int i = 0; i < 2500; i++)
        stream.insert(stream.end(), kTiming.begin(), kTiming.end());
    const TemporaryFile file(stream);
    const Outcome outcome =
        Shell("TOOL inspect '" + file.path() + "' | sort | uniq -c | wc -l; TOOL inspect '" + file.path() +
              "' | grep -c 'output delay 92'");
    EXPECT_EQ(outcome.out, "2501\n2500\n");
}

}  // namespace
}  // namespace h265tool
