// `h265tool show` from end to end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "run_tool.h"
#include "sample_units.h"

namespace h265tool {
namespace {

using test::Bytes;
using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

using Lines = std::vector<std::string>;

Outcome Show(const std::string &path, const std::string &options = "") {
    return Shell("TOOL show " + options + " '" + path + "'");
}

Outcome ShowSample(const std::string &name, const std::string &options = "") {
    return Show(Sample(name), options);
}

// The titles of the displays, in order.
Lines Titles(const Outcome &outcome) {
    Lines lines = outcome.Lines();
    std::erase_if(lines, [](const std::string &line) { return !line.ends_with(" structure:"); });
    return lines;
}

std::ptrdiff_t Count(const Lines &lines, const std::string &line) {
    return std::count(lines.begin(), lines.end(), line);
}

constexpr char kVps[] = "VPS structure:";
constexpr char kSps[] = "SPS structure:";
constexpr char kPps[] = "PPS structure:";
constexpr char kTiming[] = "SEI pictiming structure:";

TEST(Show, ShowsEverySample) {
    size_t samples = 0;
    for (const auto &entry : std::filesystem::directory_iterator(SAMPLES_DIR)) {
        if (entry.path().extension() != ".hevc")
            continue;
        samples++;
        const Outcome outcome = Show(entry.path().string());
        EXPECT_EQ(outcome.status, 0) << entry.path();
        EXPECT_THAT(outcome.err, IsEmpty());
        EXPECT_THAT(Titles(outcome), IsSupersetOf({kVps, kSps, kPps}));
    }
    EXPECT_GT(samples, 10U);
}

TEST(Show, ShowsAPictureParameterSetAsTheLibraryDoes) {
    const Bytes pps = test::NalUnit(34, Pps(3, 2, true).TrailingBits().Bytes());
    const Outcome outcome = Show(TemporaryFile(pps).path());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, StartsWith("PPS structure:\n"
                                        "++++++++++++++++++\n"
                                        "pps_pic_parameter_set_id=3.\n"
                                        "pps_seq_parameter_set_id=2.\n"
                                        "dependent_slice_segments_enabled_flag=1.\n"));
    EXPECT_TRUE(outcome.out.ends_with("pps_extension_present_flag=0.\n+++++++++++++++++++++++++++++\n"));
}

TEST(Show, ShowsEachSetOnce) {
    const Outcome once = ShowSample("repeated-headers.hevc");
    const Outcome all = ShowSample("repeated-headers.hevc", "--all");
    EXPECT_EQ(Count(Titles(once), kSps), 2);  // the stream changes in the middle
    EXPECT_EQ(Count(Titles(all), kSps), 5);
    EXPECT_EQ(Count(Titles(once), kTiming), Count(Titles(all), kTiming));
}

TEST(Show, ComparesSetsWithoutTheirStartCodes) {
    Bytes stream = test::NalUnit(34, Pps(0, 0, true).TrailingBits().Bytes(), 3);
    for (const bool dependent_slice_segments : {true, false, true}) {
        const Bytes pps = test::NalUnit(34, Pps(0, 0, dependent_slice_segments).TrailingBits().Bytes());
        stream.insert(stream.end(), pps.begin(), pps.end());
    }
    EXPECT_THAT(Titles(Show(TemporaryFile(stream).path())), ElementsAre(kPps, kPps));
}

TEST(Show, ShowsWhatIsAskedFor) {
    const std::string sample = "interlaced-field-hrd.hevc";
    EXPECT_THAT(Titles(ShowSample(sample, "--vps")), ElementsAre(kVps));
    EXPECT_THAT(Titles(ShowSample(sample, "--sps")), ElementsAre(kSps));
    EXPECT_THAT(Titles(ShowSample(sample, "--pps")), ElementsAre(kPps));
    EXPECT_THAT(Titles(ShowSample(sample, "--sei")), AllOf(Not(IsEmpty()), Each(kTiming)));
    EXPECT_THAT(Titles(ShowSample(sample, "--pps --vps")), ElementsAre(kVps, kPps));
    const Lines all = Titles(ShowSample(sample));
    EXPECT_EQ(Lines(all.begin(), all.begin() + 4), (Lines{kVps, kSps, kPps, kTiming}));
    EXPECT_EQ(ShowSample(sample, "--vps --sps --pps --sei").out, ShowSample(sample).out);
}

TEST(Show, ReadsPictureTimingWithTheSpsOfItsPicture) {
    const Lines fields = ShowSample("interlaced-field-hrd.hevc", "--sei").Lines();
    ASSERT_GT(fields.size(), 8U);
    EXPECT_EQ(Lines(fields.begin(), fields.begin() + 3),
              (Lines{kTiming, "++++++++++++++++++++++++", "pic_struct=1."}));
    EXPECT_EQ(fields[5], "au_cpb_removal_delay_minus1=0.");
    EXPECT_THAT(fields[6], StartsWith("pic_dpb_output_delay="));
}

TEST(Show, TakesPictureTimingInFrontOfItsSps) {
    Bytes stream = FileBytes(Sample("interlaced-field-hrd.hevc"));
    const Bytes timing(stream.begin() + 117, stream.begin() + 128);  // the message of the first picture
    stream.insert(stream.begin(), timing.begin(), timing.end());
    const Outcome outcome = Show(TemporaryFile(stream).path(), "--sei");
    EXPECT_EQ(outcome.status, 0);
    const Lines lines = outcome.Lines();
    ASSERT_GT(lines.size(), 16U);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 8), Lines(lines.begin() + 8, lines.begin() + 16));
    EXPECT_EQ(Titles(outcome).size(), Titles(ShowSample("interlaced-field-hrd.hevc", "--sei")).size() + 1);
}

TEST(Show, LevelsSelectTheDetail) {
    const std::string sample = "progressive-hrd-vui.hevc";
    const auto text_at = [&](int level) {
        return ShowSample(sample, "--sps --level " + std::to_string(level)).out;
    };
    EXPECT_THAT(text_at(4), IsEmpty());
    EXPECT_THAT(text_at(5), AllOf(HasSubstr("\nvui_parameters_present_flag=1.\n"),
                                  Not(HasSubstr("general_profile_idc")), Not(HasSubstr("cpb_cnt_minus1"))));
    EXPECT_THAT(text_at(6), AllOf(HasSubstr("\ngeneral_profile_idc=1.\n"), HasSubstr("\ncpb_cnt_minus1[0]="),
                                  Not(HasSubstr("Called.")), Not(HasSubstr("Done."))));
    EXPECT_THAT(text_at(7), AllOf(HasSubstr("\nCalled.\n"), HasSubstr("\nDone.\n")));
    EXPECT_EQ(ShowSample(sample, "--sps").out, text_at(6));
}

TEST(Show, TagsSayWhereALineComesFrom) {
    const Outcome outcome = ShowSample("progressive-hrd-vui.hevc", "--tags");
    EXPECT_THAT(outcome.Lines(),
                Each(AnyOf(StartsWith("H265LIB 5 H265Lib_Display_"), StartsWith("H265LIB 6 _display_"))));
    EXPECT_THAT(outcome.out, HasSubstr("): VPS structure:\n"));
    // the middle of a line has none
    EXPECT_THAT(outcome.out, HasSubstr("): vps_reserved_0xffff_16bits=65535general_profile_space=0.\n"));
}

TEST(Show, ReadsStandardInput) {
    const std::string sample = Sample("slices.hevc");
    const Outcome from_pipe = Shell("cat '" + sample + "' | TOOL show -");
    EXPECT_EQ(from_pipe.status, 0);
    EXPECT_EQ(from_pipe.out, Show(sample).out);
}

TEST(Show, GoesOnBehindABrokenNalUnit) {
    Bytes stream = {0, 0, 1, 0x42, 1, 0x55, 0, 0, 1, 0x40, 0, 0, 1, 0xC2, 1, 7};
    const Bytes good = FileBytes(Sample("slices.hevc"));
    stream.insert(stream.end(), good.begin(), good.end());
    const TemporaryFile file(stream);
    const Outcome outcome = Show(file.path());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, ShowSample("slices.hevc").out);
    const std::string place = "h265tool: " + file.path() + ": NAL unit at ";
    EXPECT_EQ(outcome.err, place + "0: cannot parse general_profile_space.\n" + place +
                               "6: the NAL unit header is truncated\n" + place +
                               "10: the NAL unit header is malformed\n");
    EXPECT_EQ(Show(file.path(), "--vps").out, ShowSample("slices.hevc", "--vps").out);
}

TEST(Show, LeavesOtherLayersOut) {
    Bytes pps = test::NalUnit(34, Pps(0, 0, true).TrailingBits().Bytes());
    pps[5] = 1 << 3 | 1;
    const Outcome outcome = Show(TemporaryFile(pps).path());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, IsEmpty());
}

TEST(Show, SaysWhatIsWrongWithAFile) {
    const Outcome missing = Show("/nowhere/stream.hevc");
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "h265tool: /nowhere/stream.hevc: No such file or directory\n");
    const TemporaryFile empty;
    const Outcome of_empty = Show(empty.path());
    EXPECT_EQ(of_empty.status, 1);
    EXPECT_EQ(of_empty.err, "h265tool: " + empty.path() + ": it is empty\n");
}

TEST(Show, RefusesWrongUsage) {
    for (const char *arguments : {"", "--wrong x", "x y", "--level x y", "--level 9 x", "--level -1 x"}) {
        const Outcome outcome = Shell(std::string("TOOL show ") + arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr("--help")) << arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
    }
}

TEST(Show, ReportsUnwritableOutput) {
    const Outcome full = Shell("TOOL show '" + Sample("slices.hevc") + "' >/dev/full");
    EXPECT_EQ(full.status, 2);
    EXPECT_EQ(full.err, "h265tool: standard output: No space left on device\n");
}

}  // namespace
}  // namespace h265tool
