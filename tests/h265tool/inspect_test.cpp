// `h265tool inspect` from end to end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>

#include "run_tool.h"

namespace h265tool {
namespace {

using nlohmann::json;
using test::Bytes;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::vector<json> JsonUnits(const Outcome &outcome) {
    std::vector<json> units;
    for (const std::string &line : outcome.Lines())
        units.push_back(json::parse(line));
    return units;
}

Outcome Inspect(const std::string &path) {
    return Shell("TOOL inspect '" + path + "'");
}

Outcome InspectBytes(const Bytes &bytes) {
    return Inspect(TemporaryFile(bytes).path());
}

TEST(Inspect, ReadsEverySample) {
    size_t samples = 0;
    for (const auto &entry : std::filesystem::directory_iterator(SAMPLES_DIR)) {
        if (entry.path().extension() != ".hevc")
            continue;
        samples++;
        const Outcome outcome = Shell("TOOL inspect --json '" + entry.path().string() + "'");
        EXPECT_EQ(outcome.status, 0) << entry.path();
        EXPECT_THAT(outcome.err, IsEmpty());
        uint64_t end = 0;
        for (const json &unit : JsonUnits(outcome)) {
            EXPECT_FALSE(unit.contains("error")) << unit;
            EXPECT_EQ(unit["offset"], end);  // the samples have no zero bytes between NAL units
            end = unit["offset"].get<uint64_t>() + unit["size"].get<uint64_t>();
        }
        EXPECT_EQ(end, entry.file_size());
    }
    EXPECT_GT(samples, 10U);
}

TEST(Inspect, PrintsALineForEachNalUnit) {
    const std::vector<std::string> lines = Inspect(Sample("interlaced-field-hrd.hevc")).Lines();
    ASSERT_GT(lines.size(), 5U);
    EXPECT_EQ(lines[0], "         0       28  VPS_NUT         layer 0  tid 0  VPS 0: 1 sub-layer");
    EXPECT_THAT(lines[1], HasSubstr("SPS 0: 208x120 4:2:0, 8 bits, Main profile, Main tier, level 2"));
    EXPECT_THAT(lines[1], HasSubstr(", 59.94 fields/s"));
    EXPECT_THAT(lines[3], HasSubstr("PREFIX_SEI_NUT  layer 0  tid 0"));
}

TEST(Inspect, ShowsTheCroppedSizeAndTheFormat) {
    EXPECT_THAT(Inspect(Sample("vui-extended-sar.hevc")).out, HasSubstr(": 158x90 4:2:0, 8 bits,"));
    EXPECT_THAT(Inspect(Sample("10bit-422.hevc")).out, HasSubstr(" 4:2:2, 10 bits, Main 4:2:2 10 profile"));
    EXPECT_THAT(Inspect(Sample("monochrome-400.hevc")).out, HasSubstr(" 4:0:0, 8 bits,"));
}

TEST(Inspect, ReadsAddressesOfPicturesWithAPowerOfTwoOfBlocks) {
    std::map<int, int> count;
    for (const json &unit : JsonUnits(Shell("TOOL inspect --json '" + Sample("slices-pow2.hevc") + "'"))) {
        if (unit.contains("slice"))
            count[unit["slice"].value("slice_segment_address", 0)]++;
    }
    EXPECT_THAT(count, ElementsAre(std::pair(0, 6), std::pair(32, 6), std::pair(64, 6), std::pair(96, 6)));
}

TEST(Inspect, ReadsAccessUnitDelimiters) {
    const Outcome outcome = Inspect(Sample("repeated-headers.hevc"));
    for (const char *text : {"pic_type 0: I\n", "pic_type 1: P, I\n", "pic_type 2: B, P, I\n"})
        EXPECT_THAT(outcome.out, HasSubstr(text));
}

TEST(Inspect, ReadsStandardInput) {
    const std::string sample = Sample("slices.hevc");
    const Outcome from_file = Inspect(sample);
    const Outcome from_pipe = Shell("cat '" + sample + "' | TOOL inspect -");
    EXPECT_EQ(from_pipe.status, 0);
    EXPECT_EQ(from_pipe.out, from_file.out);
    EXPECT_EQ(Shell("TOOL inspect - <'" + sample + "'").out, from_file.out);
}

TEST(Inspect, GoesOnBehindABrokenNalUnit) {
    const Bytes good = FileBytes(Sample("slices.hevc"));
    Bytes stream = good;
    const Bytes broken = {0, 0, 1, 0x42, 1, 0x55, 0, 0, 1, 0x40, 0, 0, 0, 0, 0, 1, 0xC2, 1, 7};
    stream.insert(stream.end(), broken.begin(), broken.end());
    stream.insert(stream.end(), good.begin(), good.end());
    const TemporaryFile file(stream);

    const size_t units = Inspect(Sample("slices.hevc")).Lines().size();
    const Outcome outcome = Inspect(file.path());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, IsEmpty());
    EXPECT_THAT(outcome.Lines(), SizeIs(2 * units + 3));
    EXPECT_THAT(outcome.out, HasSubstr("error: cannot parse general_profile_space."));

    const std::vector<json> parsed = JsonUnits(Shell("TOOL inspect --json '" + file.path() + "'"));
    EXPECT_EQ(
        std::count_if(parsed.begin(), parsed.end(), [](const json &unit) { return unit.contains("error"); }),
        3);
    EXPECT_EQ(parsed[units + 1]["error"], "the NAL unit header is truncated");
    EXPECT_EQ(parsed[units + 1]["size"], 4);
    EXPECT_EQ(parsed[units + 2]["error"], "forbidden_zero_bit is 1");
    EXPECT_EQ(parsed[units + 2]["start_code"], 4);
    EXPECT_EQ(parsed[units + 2]["offset"], good.size() + 12);
}

TEST(Inspect, SurvivesStreamsCutAnywhere) {
    const Bytes whole = FileBytes(Sample("progressive-hrd-vui.hevc"));
    for (size_t length = 1; length < 140; length += 3) {
        const Outcome outcome =
            InspectBytes(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << length;
        EXPECT_EQ(outcome.err.empty(), length > 3) << length;
    }
}

TEST(Inspect, SaysWhatIsWrongWithAFile) {
    const Outcome missing = Inspect("/nowhere/stream.hevc");
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "h265tool: /nowhere/stream.hevc: No such file or directory\n");
    const Outcome directory = Inspect(SAMPLES_DIR);
    EXPECT_EQ(directory.status, 2);
    EXPECT_EQ(directory.err, std::string("h265tool: ") + SAMPLES_DIR + ": Is a directory\n");
}

TEST(Inspect, SaysWhatIsWrongWithAStream) {
    const TemporaryFile empty;
    const Outcome of_empty = Inspect(empty.path());
    EXPECT_EQ(of_empty.status, 1);
    EXPECT_EQ(of_empty.err, "h265tool: " + empty.path() + ": it is empty\n");

    const TemporaryFile other({0x89, 'P', 'N', 'G', 0, 0, 0, 1, 0x40, 1});
    const Outcome of_other = Inspect(other.path());
    EXPECT_EQ(of_other.status, 1);
    EXPECT_EQ(of_other.err,
              "h265tool: " + other.path() +
                  ": no H.265 byte stream: it starts with 89 50 4e 47, not with a start code\n");
    EXPECT_THAT(of_other.out, IsEmpty());

    const Outcome of_zeros = Shell("head -c 5000 /dev/zero | TOOL inspect -");
    EXPECT_EQ(of_zeros.status, 1);
    EXPECT_EQ(of_zeros.err, "h265tool: standard input: no H.265 byte stream: it holds no start code\n");
}

TEST(Inspect, RefusesWrongUsage) {
    for (const char *arguments : {"", "inspect", "inspect --wrong x", "inspect x y", "inspekt x"}) {
        const Outcome outcome = Shell(std::string("TOOL ") + arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr("--help")) << arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
    }
    const Outcome help = Shell("TOOL inspect --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("trailing_zero_8bits"));
    EXPECT_EQ(Shell("TOOL --version").status, 0);
}

TEST(Inspect, ReportsUnwritableOutput) {
    const Outcome full = Shell("TOOL inspect '" + Sample("slices.hevc") + "' >/dev/full");
    EXPECT_EQ(full.status, 2);
    EXPECT_EQ(full.err, "h265tool: standard output: No space left on device\n");
}

TEST(Inspect, StopsQuietlyWhenItsReaderHasGone) {
    for (const char *disposition : {"trap '' PIPE", ":"}) {
        const Outcome outcome = Shell(std::string(disposition) + "; TOOL inspect --json '" +
                                      Sample("long-references.hevc") + "' | :");
        EXPECT_THAT(outcome.err, IsEmpty());
    }
}

}  // namespace
}  // namespace h265tool
