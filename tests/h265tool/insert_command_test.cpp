// `h265tool insert` from end to end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "command_test.h"
#include "insert/sei_messages.h"
#include "nal_unit.h"
#include "sample_units.h"

namespace h265tool {
namespace {

using test::Bytes;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class InsertCommand : public CommandTest {
 protected:
    Outcome Insert(const std::string &in, const std::string &options) const {
        return Shell("TOOL insert '" + in + "' -o '" + Path("out.hevc") + "' " + options);
    }

    // Into a sample, without a word.
    Bytes Inserted(const std::string &sample, const std::string &options) const {
        const Outcome outcome = Insert(Sample(sample), options);
        EXPECT_EQ(outcome.status, 0) << options;
        EXPECT_THAT(outcome.err, IsEmpty()) << options;
        EXPECT_THAT(Shell("TOOL inspect '" + Path("out.hevc") + "' >/dev/null").status, 0) << options;
        return FileBytes(Path("out.hevc"));
    }
};

SeiKind KindOf(const NalUnit &unit) {
    if (!IsBaseLayerSei(unit))
        return SeiKind::kOther;
    const std::optional<std::vector<SeiPart>> parts = SplitSei(unit);
    return parts.has_value() && parts->size() == 1 ? parts->front().kind : SeiKind::kOther;
}

Bytes WithoutKind(const Bytes &stream, SeiKind kind) {
    Bytes rest;
    for (const NalUnit &unit : Units(stream)) {
        if (KindOf(unit) != kind)
            rest.insert(rest.end(), unit.head.begin(), unit.head.end());
    }
    return rest;
}

// The messages of this kind that have NAL units of their own, in decoding order.
std::vector<SeiPart> Parts(const Bytes &stream, SeiKind kind) {
    std::vector<SeiPart> parts;
    for (const NalUnit &unit : Units(stream)) {
        if (KindOf(unit) == kind)
            parts.push_back(SplitSei(unit)->front());
    }
    return parts;
}

size_t Count(const Bytes &stream, unsigned int nal_unit_type) {
    size_t count = 0;
    for (const NalUnit &unit : Units(stream))
        count += unit.Header()->nal_unit_type == nal_unit_type;
    return count;
}

// "HH:MM:SS:FF" of each time code message, in decoding order.
std::vector<std::string> TimeCodes(const Bytes &stream) {
    std::vector<std::string> texts;
    for (const NalUnit &unit : Units(stream)) {
        if (KindOf(unit) != SeiKind::kTimeCode)
            continue;
        sei_h265_time_code_t record{};
        const SEI_message_t header = SplitSei(unit)->front().header;
        EXPECT_TRUE(H265Lib_Parse_sei_timecode_nal(unit.head.data(), static_cast<int>(unit.head.size()),
                                                   &header, &record));
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%02d:%02d:%02d:%02d", record.hours_value[0],
                      record.minutes_value[0], record.seconds_value[0], record.n_frames[0]);
        texts.emplace_back(text.data());
    }
    return texts;
}

constexpr char kScc[] = "Scenarist_SCC V1.0\n\n00:00:00:01\t9420 c8e9\n";

TEST_F(InsertCommand, KeepsEverythingElseByteForByte) {
    const std::string scc = Written("captions.scc", kScc);
    const struct {
        const char *options;
        SeiKind kind;
    } kCases[] = {{"--afd 10", SeiKind::kAfd},
                  {"--timecode 10:00:00:00", SeiKind::kTimeCode},
                  {"--precision-time 2026-01-31T12:00:00Z", SeiKind::kPrecisionTime},
                  {"--captions", SeiKind::kCaptions}};
    for (const char *sample :
         {"progressive-hrd-vui.hevc", "temporal-layers.hevc", "interlaced-field-hrd.hevc"}) {
        for (const auto &[options, kind] : kCases) {
            const std::string file = kind == SeiKind::kCaptions ? " '" + scc + "'" : "";
            EXPECT_EQ(WithoutKind(Inserted(sample, options + file), kind), FileBytes(Sample(sample)))
                << sample << " " << options;
        }
    }
}

TEST_F(InsertCommand, CountsTimeCodesInTheOrderOfOutput) {
    const std::vector<std::string> codes =
        TimeCodes(Inserted("temporal-layers.hevc", "--timecode '00:00:59;25'"));
    ASSERT_EQ(codes.size(), 40U);
    // picture order counts 0, 8, 4, 1
    EXPECT_EQ(codes[0], "00:00:59:25");
    EXPECT_EQ(codes[1], "00:01:00:05");
    EXPECT_EQ(codes[2], "00:00:59:29");
    EXPECT_EQ(codes[3], "00:00:59:26");
    EXPECT_THAT(TimeCodes(Inserted("progressive-hrd-vui.hevc", "--timecode 23:59:59:24")),
                ElementsAre("23:59:59:24", "00:00:00:04", "00:00:00:02", "00:00:00:00", "00:00:00:01",
                            "00:00:00:03", "00:00:00:05", "00:00:00:10", "00:00:00:08", "00:00:00:06",
                            "00:00:00:07", "00:00:00:09"));
    EXPECT_EQ(TimeCodes(Inserted("temporal-layers.hevc", "--rate 4 --timecode 00:00:00:00"))[1],
              "00:00:02:00");
}

TEST_F(InsertCommand, SpreadsCaptionsOverThePictures) {
    const std::string scc = Written("captions.scc", kScc);
    const auto first_triplet = [](const SeiPart &part) {
        return Bytes(part.bytes.begin() + 12, part.bytes.begin() + 15);
    };
    const std::vector<SeiPart> frames =
        Parts(Inserted("temporal-layers.hevc", "--captions '" + scc + "'"), SeiKind::kCaptions);
    ASSERT_EQ(frames.size(), 40U);
    EXPECT_EQ(frames[0].bytes.size(), 2U + 11 + 3 * 20);
    EXPECT_EQ(first_triplet(frames[0]), (Bytes{0xFC, 0x80, 0x80}));
    EXPECT_EQ(first_triplet(frames[3]), (Bytes{0xFC, 0x94, 0x20}));
    EXPECT_EQ(first_triplet(frames[4]), (Bytes{0xFC, 0xC8, 0xE9}));

    // 59.94 fields/s: a pair for every second one
    const std::vector<SeiPart> fields =
        Parts(Inserted("interlaced-field-hrd.hevc", "--captions '" + scc + "'"), SeiKind::kCaptions);
    ASSERT_EQ(fields.size(), 16U);
    EXPECT_EQ(fields[0].bytes.size(), 2U + 11 + 3 * 10);
    EXPECT_EQ(first_triplet(fields[3]), (Bytes{0xF9, 0x80, 0x80}));  // the second picture
    EXPECT_EQ(first_triplet(fields[4]), (Bytes{0xFC, 0x94, 0x20}));  // the third

    // 600 triplets per second, however many pictures
    EXPECT_EQ(
        Parts(Inserted("temporal-layers.hevc", "--rate 20 --captions '" + scc + "'"), SeiKind::kCaptions)[3]
            .bytes.size(),
        2U + 11 + 3 * 30);
}

TEST_F(InsertCommand, CountsPrecisionTimeOn) {
    const std::vector<SeiPart> parts =
        Parts(Inserted("progressive-hrd-vui.hevc", "--precision-time 1970-01-01T00:00:01Z"),
              SeiKind::kPrecisionTime);
    ASSERT_EQ(parts.size(), 12U);
    const auto time = [](const SeiPart &part) { return Bytes(part.bytes.end() - 12, part.bytes.end()); };
    EXPECT_EQ(time(parts[0]), (Bytes{0x9F, 0, 0, 0xFF, 0, 0, 0xFF, 0x00, 0x0F, 0xFF, 0x42, 0x40}));
    EXPECT_EQ(time(parts[3]),
              (Bytes{0x9F, 0, 0, 0xFF, 0, 0, 0xFF, 0x00, 0x0F, 0xFF, 0xDE, 0x80}));  // + 40000
}

TEST_F(InsertCommand, ReplacesWhatIsThere) {
    const std::string scc = Written("captions.scc", kScc);
    const Bytes sample = FileBytes(Sample("captions-a53.hevc"));
    const Outcome kept = Insert(Sample("captions-a53.hevc"), "--captions '" + scc + "'");
    EXPECT_EQ(kept.status, 0);
    EXPECT_EQ(kept.err,
              "h265tool: --captions: 12 of 16 access units have one already, which stays (--replace would "
              "replace it)\n");
    EXPECT_EQ(Parts(FileBytes(Path("out.hevc")), SeiKind::kCaptions).size(), 16U);

    const Bytes replaced = Inserted("captions-a53.hevc", "--replace --captions '" + scc + "'");
    EXPECT_EQ(Parts(replaced, SeiKind::kCaptions).size(), 16U);
    EXPECT_EQ(WithoutKind(replaced, SeiKind::kCaptions), WithoutKind(sample, SeiKind::kCaptions));
    EXPECT_EQ(Parts(replaced, SeiKind::kAfd).size(), 4U);
}

TEST_F(InsertCommand, PutsDelimitersAndAnEnd) {
    const Bytes sample = FileBytes(Sample("temporal-layers.hevc"));
    const Bytes out = Inserted("temporal-layers.hevc", "--aud --eos");
    EXPECT_EQ(Count(out, kAud), 40U);
    EXPECT_EQ(out.size(), sample.size() + 40 * 7 + 5);
    EXPECT_EQ(Bytes(out.end() - 5, out.end()), (Bytes{0, 0, 1, 0x48, 1}));
    EXPECT_EQ(Units(out)[0].head, (Bytes{0, 0, 0, 1, 0x46, 1, 0x10}));
    EXPECT_EQ(Units(out)[5].head, (Bytes{0, 0, 0, 1, 0x46, 1, 0x30}));
    EXPECT_EQ(Units(out)[9].head, (Bytes{0, 0, 0, 1, 0x46, 2, 0x50}));  // of temporal sub-layer 1
}

TEST_F(InsertCommand, WritesPicStructsWithTheDelaysThatWereThere) {
    const Bytes sample = FileBytes(Sample("interlaced-field-hrd.hevc"));
    EXPECT_EQ(Inserted("interlaced-field-hrd.hevc", "--replace --pic-timing 1,2"), sample);
    const Bytes out = Inserted("interlaced-field-hrd.hevc", "--replace --pic-timing 2,1");
    const std::vector<SeiPart> before = Parts(sample, SeiKind::kPicTiming);
    const std::vector<SeiPart> after = Parts(out, SeiKind::kPicTiming);
    ASSERT_EQ(after.size(), before.size());
    for (size_t i = 0; i < after.size(); i++) {
        Bytes expected = before[i].bytes;
        expected[2] ^= 0x30;  // pic_struct 1 and 2
        EXPECT_EQ(after[i].bytes, expected) << i;
    }
    EXPECT_EQ(WithoutKind(out, SeiKind::kPicTiming), WithoutKind(sample, SeiKind::kPicTiming));
}

TEST_F(InsertCommand, ReadsStandardInput) {
    const Bytes expected = Inserted("temporal-layers.hevc", "--afd 8 --eos");
    const Outcome outcome = Shell("cat '" + Sample("temporal-layers.hevc") + "' | TOOL insert - -o '" +
                                  Path("piped.hevc") + "' --afd 8 --eos");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(FileBytes(Path("piped.hevc")), expected);
}

TEST_F(InsertCommand, RefusesToOverwriteItsInput) {
    const std::string in = Path("in.hevc");
    std::filesystem::copy_file(Sample("slices.hevc"), in);
    std::filesystem::create_hard_link(in, Path("hard.hevc"));
    std::filesystem::create_symlink(in, Path("soft.hevc"));
    for (const char *name : {"in.hevc", "hard.hevc", "soft.hevc"}) {
        for (const std::string &source : {"TOOL insert '" + in + "'", "TOOL insert - <'" + in + "'"}) {
            const Outcome outcome = Shell(source + " --aud -o '" + Path(name) + "'");
            EXPECT_EQ(outcome.status, 2) << name;
            EXPECT_THAT(outcome.err, HasSubstr(Path(name) + ": it is the same file as "));
        }
    }
    EXPECT_EQ(FileBytes(in), FileBytes(Sample("slices.hevc")));
}

TEST_F(InsertCommand, ReplacesTheFileBehindALink) {
    std::filesystem::create_symlink(Written("target.hevc", "old"), Path("out.hevc"));
    std::filesystem::permissions(Path("target.hevc"), std::filesystem::perms(0640));
    Inserted("slices.hevc", "--eos");
    EXPECT_TRUE(std::filesystem::is_symlink(Path("out.hevc")));
    EXPECT_GT(std::filesystem::file_size(Path("target.hevc")), 5000U);
    EXPECT_EQ(std::filesystem::status(Path("target.hevc")).permissions(), std::filesystem::perms(0640));
}

TEST_F(InsertCommand, RefusesWrongValues) {
    const std::string bad_scc = Written("bad.scc", "Scenarist_SCC V1.0\n\n00:00:00:01\tzzzz\n");
    const std::string scc = Written("good.scc", kScc);
    const std::string temporal = Sample("temporal-layers.hevc");  // 29.97 frames/s
    const struct {
        std::string options;
        std::string error;
    } kCases[] = {
        {"--captions '" + bad_scc + "'", bad_scc + ": line 3: \"zzzz\" is no byte pair"},
        {"--captions /nowhere.scc", "/nowhere.scc: No such file or directory"},
        {"--captions '" + scc + "' --captions-start 1:00", "--captions-start: \"1:00\" is no time code"},
        {"--captions '" + scc + "' --rate 15", "--rate: captions do not fit 15 pictures/s"},
        {"--afd 16", "--afd"},
        {"--timecode 10:00", "--timecode: \"10:00\" is no time code"},
        {"--timecode 10:00:00:30", "--timecode: 30000/1001 pictures/s have no such time code"},
        {"--timecode '10:01:00;00'", "--timecode: 30000/1001 pictures/s have no such time code"},
        {"--timecode '10:00:00;00' --rate 25",
         "--timecode: there is no drop-frame time code of 25 pictures/s"},
        {"--timecode 10:00:00:00 --rate 25/2", "--rate: time codes do not count 25/2 pictures/s"},
        {"--timecode 10:00:00:00 --rate 120", "--rate: time codes do not count 120 pictures/s"},
        {"--rate 0 --aud", "--rate: \"0\" is no rate"},
        {"--precision-time yesterday", "--precision-time: \"yesterday\" is no time"},
        {"--pic-timing 13", "--pic-timing: \"13\" is no pic_struct (0 to 12)"},
        {"--pic-timing 1,,2", "--pic-timing: \"\" is no pic_struct"},
    };
    for (const auto &[options, error] : kCases) {
        const Outcome outcome = Insert(temporal, options);
        EXPECT_EQ(outcome.status, 2) << options;
        EXPECT_THAT(outcome.err, HasSubstr(error)) << options;
    }
    EXPECT_THAT(Files(), testing::UnorderedElementsAre("bad.scc", "good.scc"));
}

TEST_F(InsertCommand, RefusesStreamsThatCannotHaveIt) {
    const struct {
        const char *sample;
        const char *options;
        const char *error;
    } kCases[] = {
        {"temporal-layers.hevc", "--pic-timing 0", "frame_field_info_present_flag of the SPS is 0"},
        {"interlaced-field-hrd.hevc", "--replace --pic-timing 0",
         "pic_struct 0 does not fit field_seq_flag 1"},
        {"units/sps-heavy.nal", "--aud", "it holds no picture"},
        {"README.md", "--aud", "no H.265 byte stream"},
    };
    for (const auto &[sample, options, error] : kCases) {
        const Outcome outcome = Insert(Sample(sample), options);
        EXPECT_EQ(outcome.status, 1) << options;
        EXPECT_THAT(outcome.err, HasSubstr(error));
    }
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(InsertCommand, LeavesNothingBehindWhenItFails) {
    Bytes bytes = FileBytes(Sample("slices.hevc"));
    bytes.insert(bytes.end(), {0, 0, 1, 2, 1, 0x00, 0x01});
    const std::string broken = Written("broken.hevc", bytes);
    const Outcome outcome = Insert(broken, "--aud");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr(broken + ": NAL unit at offset "));
    EXPECT_THAT(Files(), ElementsAre("broken.hevc"));
}

TEST_F(InsertCommand, ReportsFilesThatCannotBeReadOrWritten) {
    EXPECT_EQ(Insert("/nowhere.hevc", "--aud").err, "h265tool: /nowhere.hevc: No such file or directory\n");
    EXPECT_EQ(Insert("/nowhere.hevc", "--aud").status, 2);
    const std::string insert = "TOOL insert '" + Sample("slices.hevc") + "' --aud -o ";
    const Outcome full = Shell(insert + "/dev/full");
    EXPECT_EQ(full.status, 2);
    EXPECT_EQ(full.err, "h265tool: /dev/full: No space left on device\n");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
    const Outcome missing = Shell(insert + "/nowhere/out.hevc");
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "h265tool: /nowhere/out.hevc: No such file or directory\n");
    // a file size limit cuts the temporary file short
    const Outcome limited = Shell("(trap '' XFSZ; ulimit -f 1; " + insert + "'" + Path("out.hevc") + "')");
    EXPECT_EQ(limited.status, 2);
    EXPECT_THAT(limited.err, HasSubstr("File too large"));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(InsertCommand, RefusesWrongUsage) {
    for (const std::string arguments : {"insert", "insert x", "insert x -o", "insert x -o y z"}) {
        const Outcome outcome = Shell("TOOL " + arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr("--help")) << arguments;
    }
    EXPECT_THAT(Shell("TOOL insert --help").out, HasSubstr("--captions-start"));
}

}  // namespace
}  // namespace h265tool
