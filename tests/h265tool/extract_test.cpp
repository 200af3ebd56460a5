// `h265tool extract` from end to end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "run_tool.h"
#include "sample_units.h"

namespace h265tool {
namespace {

using nlohmann::json;
using test::BitString;
using test::Bytes;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Bytes kAfd8 = test::NalUnit(kPrefixSei, {4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8, 0x80});
const Bytes kAfd9 = test::NalUnit(kPrefixSei, {4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF9, 0x80});
const Bytes kAfdSuffix = test::NalUnit(kSuffixSei, {4, 8, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 1, 0x80});

Bytes Idr(unsigned int pps_id = 0) {
    return Unit(kIdrNLp, BitString().U(2, 2).Ue(pps_id).Ue(2)).head;
}
Bytes Trail(unsigned int lsb) {
    return Unit(1, BitString().U(1, 1).Ue(0).Ue(1).U(8, lsb)).head;
}

Outcome ExtractAfd(const std::vector<Bytes> &units) {
    Bytes stream;
    for (const Bytes &unit : units)
        stream.insert(stream.end(), unit.begin(), unit.end());
    const TemporaryFile file(stream);
    return Shell("TOOL extract --afd '" + file.path() + "'");
}

const Bytes kSpsUnit = Unit(kSps, Sps({})).head;  // up to 2 pictures are reordered
const Bytes kPpsUnit = Unit(kPps, Pps(0, 0)).head;

TEST(Extract, PutsCaptionsIntoDecodingAndOutputOrder) {
    const Outcome outcome = Shell("TOOL extract --captions '" + Sample("captions-a53.hevc") + "'");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, IsEmpty());
    EXPECT_THAT(outcome.Lines(), SizeIs(12));
    EXPECT_THAT(outcome.out, HasSubstr("       0        0  captions: field 1 \"{RCL}\"\n"
                                       "       1        5  captions: field 1 \"LL\"\n"));
    const Outcome sorted = Shell("TOOL extract --captions '" + Sample("captions-a53.hevc") +
                                 "' | sort -k2n | sed -n 's/.*field 1 \"\\(.*\\)\"/\\1/p' | tr -d '\\n'");
    EXPECT_EQ(sorted.out, "{RCL}{ENM}{1470}HELLO.{EOC}");
}

TEST(Extract, PrintsALineForEachPictureThatCarriesWhatIsAskedFor) {
    const std::string sample = Sample("captions-a53.hevc");
    EXPECT_THAT(Shell("TOOL extract --afd '" + sample + "'").Lines(),
                ElementsAre("       2        3  AFD: 8", "       9        7  AFD: 8",
                            "      11       15  AFD: 8", "      13       11  AFD: 8"));
    EXPECT_THAT(Shell("TOOL extract --afd --captions '" + sample + "'").Lines(), SizeIs(16));
    const Outcome none = Shell("TOOL extract --timecodes '" + sample + "'");
    EXPECT_EQ(none.status, 0);
    EXPECT_THAT(none.out, IsEmpty());
    EXPECT_EQ(Shell("TOOL extract --afd - <'" + sample + "'").out,
              Shell("TOOL extract --afd '" + sample + "'").out);
}

TEST(Extract, PrintsJsonLines) {
    const Outcome outcome = Shell("TOOL extract --json --afd '" + Sample("captions-a53.hevc") + "'");
    ASSERT_THAT(outcome.Lines(), SizeIs(4));
    EXPECT_EQ(outcome.Lines()[0],
              R"({"picture":2,"presentation":3,"PicOrderCntVal":3,"afd":[{"itu_t_t35_country_code":181,)"
              R"("itu_t_t35_provider_code":49,"user_identifier":1146373937,"afd_data":)"
              R"({"active_format_flag":1,"active_format":8}}]})");
}

TEST(Extract, PutsSeveralMessagesOfAPictureIntoOneLine) {
    Bytes stream = FileBytes(Sample("units/sei-multiple.nal"));
    const Bytes time_code = FileBytes(Sample("units/sei-time-code.nal"));
    stream.insert(stream.end(), time_code.begin(), time_code.end());
    for (const Bytes &unit : {kSpsUnit, kPpsUnit, Idr()})
        stream.insert(stream.end(), unit.begin(), unit.end());
    const TemporaryFile file(stream);
    EXPECT_EQ(Shell("TOOL extract --captions --timecodes --afd '" + file.path() + "'").out,
              "       0        0  captions: field 1 \"{RCL}\"; time code: 01:02:03:04; "
              "time code: 23:59:58;29 offset -12; AFD: 8\n");
    const json line = json::parse(Shell("TOOL extract --json --timecodes '" + file.path() + "'").out);
    EXPECT_EQ(line["time_code"].size(), 2U);
    EXPECT_FALSE(line.contains("captions"));
}

TEST(Extract, PrefixSeiBelongsToTheSliceBehindItAndSuffixSeiToTheOneInFront) {
    const Bytes second_slice = Unit(1, BitString().U(1, 0).Ue(0).U(4, 3).Ue(1).U(8, 4)).head;
    EXPECT_THAT(ExtractAfd({kSpsUnit, kPpsUnit, kAfd8, Idr(), kAfdSuffix, Trail(4), kAfd9, second_slice,
                            kAfd8, Trail(2), Trail(6), kAfd9})
                    .Lines(),
                ElementsAre("       0        0  AFD: 8; AFD: none", "       1        2  AFD: 9",
                            "       2        1  AFD: 8"));
}

TEST(Extract, CountsCodedVideoSequencesOneAfterTheOther) {
    EXPECT_THAT(
        ExtractAfd({kSpsUnit, kPpsUnit, kAfd8, Idr(), kAfd8, Trail(3), kAfd8, Trail(1), kAfd9, Idr(), kAfd9,
                    Trail(1)})
            .Lines(),
        ElementsAre("       0        0  AFD: 8", "       1        2  AFD: 8", "       2        1  AFD: 8",
                    "       3        3  AFD: 9", "       4        4  AFD: 9"));
}

TEST(Extract, SkippedPicturesHaveNoPlaceInTheOutput) {
    const Bytes cra = Unit(kCra, BitString().U(2, 2).Ue(0).Ue(2).U(8, 8)).head;
    const Bytes rasl = Unit(kRaslN, BitString().U(1, 1).Ue(0).Ue(1).U(8, 6)).head;
    EXPECT_THAT(
        ExtractAfd({kSpsUnit, kPpsUnit, kAfd8, cra, kAfd9, rasl, kAfd8, Trail(9)}).Lines(),
        ElementsAre("       0        0  AFD: 8", "       1        -  AFD: 9", "       2        1  AFD: 8"));
}

TEST(Extract, GoesOnBehindWhatCannotBeParsed) {
    const Bytes broken = test::NalUnit(kPrefixSei, {4, 9, 0xB5, 0x80});
    const Outcome outcome =
        ExtractAfd({kSpsUnit, kPpsUnit, kAfd8, Idr(), broken, kAfd9, Idr(3), kAfd8, Trail(2)});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.Lines(), ElementsAre("       0        0  AFD: 8", "       1        -  AFD: 9",
                                             "       2        1  AFD: 8"));
    EXPECT_THAT(outcome.err,
                HasSubstr(": the payload of a SEI message of type 4 has 9 bytes, but there are 1\n"));
    EXPECT_THAT(outcome.err, HasSubstr(": 2 NAL units could not be parsed; that was the first\n"));
}

TEST(Extract, SurvivesStreamsCutAnywhere) {
    const Bytes whole = FileBytes(Sample("units/sei-multiple.nal"));
    for (size_t length = 1; length < whole.size(); length += 7) {
        const TemporaryFile file(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        const Outcome outcome = Shell("TOOL extract --captions --timecodes --afd '" + file.path() + "'");
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << length;
        EXPECT_EQ(outcome.err.empty(), outcome.status == 0) << length;
    }
}

TEST(Extract, RefusesWrongUsageAndMissingFiles) {
    for (const char *arguments : {"extract", "extract x", "extract --captions", "extract --json x"}) {
        const Outcome outcome = Shell(std::string("TOOL ") + arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr("--help")) << arguments;
    }
    const Outcome missing = Shell("TOOL extract --afd /nowhere/x");
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "h265tool: /nowhere/x: No such file or directory\n");
    const Outcome other = Shell("printf abc | TOOL extract --afd -");
    EXPECT_EQ(other.status, 1);
    EXPECT_THAT(other.err, HasSubstr("no H.265 byte stream"));
    EXPECT_EQ(Shell("TOOL extract --captions '" + Sample("captions-a53.hevc") + "' >/dev/full").status, 2);
    EXPECT_EQ(Shell("TOOL extract --help").status, 0);
}

}  // namespace
}  // namespace h265tool
