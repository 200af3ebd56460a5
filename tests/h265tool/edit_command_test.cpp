// `h265tool edit` from end to end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>

#include "command_test.h"
#include "h265.h"
#include "sample_units.h"

namespace h265tool {
namespace {

using nlohmann::json;
using test::Bytes;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::vector<std::string> Samples() {
    std::vector<std::string> samples;
    for (const auto &entry : std::filesystem::directory_iterator(SAMPLES_DIR)) {
        if (entry.path().extension() == ".hevc")
            samples.push_back(entry.path().filename().string());
    }
    return samples;
}

class EditCommand : public CommandTest {
 protected:
    Outcome Edit(const std::string &in, const std::string &options) const {
        return Shell("TOOL edit '" + in + "' -o '" + Path("out.hevc") + "' " + options);
    }

    // Without a word.
    Bytes Edited(const std::string &in, const std::string &options) const {
        const Outcome outcome = Edit(in, options);
        EXPECT_EQ(outcome.status, 0) << in << " " << options;
        EXPECT_THAT(outcome.err, IsEmpty()) << in << " " << options;
        return FileBytes(Path("out.hevc"));
    }

    // What `inspect` says.
    static std::vector<json> Shown(const std::string &file) {
        std::vector<json> shown;
        for (const std::string &line : Shell("TOOL inspect --json '" + file + "'").Lines())
            shown.push_back(json::parse(line));
        return shown;
    }

    // Of the NAL units of a kind: "vps", "sps" or "sei".
    static std::vector<json> Shown(const std::string &file, const char *kind) {
        return OfKind(Shown(file), kind);
    }
    static std::vector<json> OfKind(const std::vector<json> &shown, const char *kind) {
        std::vector<json> of_kind;
        for (const json &unit : shown) {
            if (unit.contains(kind))
                of_kind.push_back(unit[kind]);
        }
        EXPECT_FALSE(of_kind.empty()) << kind;
        return of_kind;
    }
};

// All but the NAL units of these types are the same, and so are the start codes and the bytes in between.
void ExpectSameBut(const std::vector<unsigned int> &types, const Bytes &before, const Bytes &after) {
    const std::vector<NalUnit> old_units = Units(before);
    const std::vector<NalUnit> new_units = Units(after);
    ASSERT_EQ(old_units.size(), new_units.size());
    uint64_t old_end = 0;
    uint64_t new_end = 0;
    for (size_t i = 0; i < old_units.size(); i++) {
        const unsigned int type = old_units[i].Header()->nal_unit_type;
        const bool may_change = std::find(types.begin(), types.end(), type) != types.end();
        EXPECT_EQ(old_units[i].start_code_length, new_units[i].start_code_length) << i;
        EXPECT_EQ(old_units[i].offset - old_end, new_units[i].offset - new_end) << i;
        EXPECT_TRUE(may_change || old_units[i].head == new_units[i].head) << i;
        old_end = old_units[i].offset + old_units[i].size;
        new_end = new_units[i].offset + new_units[i].size;
    }
    EXPECT_EQ(before.size() - old_end, after.size() - new_end);
}

void SetSignalType(json *sps) {
    json &vui = (*sps)["vui"];
    if (vui["video_signal_type_present_flag"] == 1)
        return;
    vui["video_signal_type_present_flag"] = 1;
    vui["video_format"] = 5;
    vui["video_full_range_flag"] = 0;
    vui["colour_description_present_flag"] = 0;
}

void ClearConstraintFlags(json *sps) {
    (*sps)["ptl"]["general_non_packed_constraint_flag"] = 0;
    (*sps)["ptl"]["general_frame_only_constraint_flag"] = 0;
}

void SetInterlaced(json *set) {
    (*set)["ptl"]["general_progressive_source_flag"] = 0;
    (*set)["ptl"]["general_interlaced_source_flag"] = 1;
    (*set)["ptl"]["general_frame_only_constraint_flag"] = 0;
}

struct SpsEdit {
    const char *options;
    std::function<void(json *)> expected;
};

const std::vector<SpsEdit> kSpsEdits = {
    {"--sar 4:3",
     [](json *sps) {
         (*sps)["vui"].merge_patch({{"aspect_ratio_info_present_flag", 1},
                                    {"aspect_ratio_idc", 14},
                                    {"sar_width", nullptr},
                                    {"sar_height", nullptr}});
     }},
    {"--sar 246:14",
     [](json *sps) {
         (*sps)["vui"].merge_patch({{"aspect_ratio_info_present_flag", 1},
                                    {"aspect_ratio_idc", 255},
                                    {"sar_width", 123},
                                    {"sar_height", 7}});
     }},
    {"--colour bt2020/SMPTE2084/9",
     [](json *sps) {
         SetSignalType(sps);
         (*sps)["vui"].merge_patch({{"colour_description_present_flag", 1},
                                    {"colour_primaries", 9},
                                    {"transfer_characteristics", 16},
                                    {"matrix_coeffs", 9}});
     }},
    {"--range full",
     [](json *sps) {
         SetSignalType(sps);
         (*sps)["vui"]["video_full_range_flag"] = 1;
     }},
    {"--range limited",
     [](json *sps) {
         SetSignalType(sps);
         (*sps)["vui"]["video_full_range_flag"] = 0;
     }},
    {"--timing 4294967295/4294967294",
     [](json *sps) {
         (*sps)["vui"]["vui_num_units_in_tick"] = 4294967295;
         (*sps)["vui"]["vui_time_scale"] = 4294967294;
     }},
    {"--fps 60000/1001",
     [](json *sps) {
         (*sps)["vui"]["vui_num_units_in_tick"] = 1001;
         (*sps)["vui"]["vui_time_scale"] = 60000;
     }},
    {"--interlaced",
     [](json *sps) {
         SetInterlaced(sps);
         ClearConstraintFlags(sps);
     }},
    {"--size 4096x2304",
     [](json *sps) {
         ClearConstraintFlags(sps);
         (*sps)["pic_width_in_luma_samples"] = 4096;
         (*sps)["pic_height_in_luma_samples"] = 2304;
     }},
    {"--sar 1:1 --range full --fps 3 --interlaced --size 96x64",
     [](json *sps) {
         SetInterlaced(sps);
         ClearConstraintFlags(sps);
         SetSignalType(sps);
         (*sps)["pic_width_in_luma_samples"] = 96;
         (*sps)["pic_height_in_luma_samples"] = 64;
         (*sps)["vui"].merge_patch({{"aspect_ratio_info_present_flag", 1},
                                    {"aspect_ratio_idc", 1},
                                    {"sar_width", nullptr},
                                    {"sar_height", nullptr},
                                    {"video_full_range_flag", 1},
                                    {"vui_num_units_in_tick", 1},
                                    {"vui_time_scale", 3}});
     }},
};

TEST_F(EditCommand, ChangesWhatItIsToldAndNothingElse) {
    for (const std::string &sample : Samples()) {
        const Bytes before = FileBytes(Sample(sample));
        const std::vector<json> shown_before = Shown(Sample(sample));
        for (const auto &[options, edit] : kSpsEdits) {
            SCOPED_TRACE(sample + " " + options);
            const Bytes after = Edited(Sample(sample), options);
            ExpectSameBut({kVps, kSps}, before, after);
            const std::vector<json> shown_after = Shown(Path("out.hevc"));
            std::vector<json> sps = OfKind(shown_before, "sps");
            std::for_each(sps.begin(), sps.end(), [&edit = edit](json &set) { edit(&set); });
            EXPECT_EQ(OfKind(shown_after, "sps"), sps);
            std::vector<json> vps = OfKind(shown_before, "vps");
            if (std::string(options).find("--interlaced") != std::string::npos)
                std::for_each(vps.begin(), vps.end(), [](json &set) { SetInterlaced(&set); });
            EXPECT_EQ(OfKind(shown_after, "vps"), vps);
        }
    }
}

TEST_F(EditCommand, ChangesTheWindowThatIsThere) {
    // 160x96 of 4:2:0
    std::vector<json> expected = Shown(Sample("vui-extended-sar.hevc"), "sps");
    expected[0]["conf_win_left_offset"] = 1;
    expected[0]["conf_win_right_offset"] = 2;
    expected[0]["conf_win_top_offset"] = 0;
    expected[0]["conf_win_bottom_offset"] = 30;
    ClearConstraintFlags(expected.data());
    Edited(Sample("vui-extended-sar.hevc"), "--crop 2,4,0,60");
    EXPECT_EQ(Shown(Path("out.hevc"), "sps"), expected);
}

TEST_F(EditCommand, WhatIsThereAlreadyStaysByteForByte) {
    const struct {
        const char *sample;
        const char *options;
    } kCases[] = {
        {"interlaced-field-hrd.hevc",
         "--interlaced --size 208x120 --crop 0,0,0,0 --sar 1:1 --fps 60000/1001 --field-seq"},
        {"vui-extended-sar.hevc",
         "--size 160x96 --crop 0,2,0,6 --sar 123:457 --colour bt470bg/bt470bg/bt470bg --range full "
         "--timing 1/25"},
        {"temporal-layers.hevc", "--crop 0,0,0,0"},
    };
    for (const auto &[sample, options] : kCases)
        EXPECT_EQ(Edited(Sample(sample), options), FileBytes(Sample(sample))) << sample;
}

TEST_F(EditCommand, EditsThatAreTakenBackLeaveTheStreamAsItWas) {
    for (const std::string &sample : Samples()) {
        const json vui = Shown(Sample(sample), "sps")[0]["vui"];
        const std::string timing = std::to_string(vui["vui_num_units_in_tick"].get<uint32_t>()) + "/" +
                                   std::to_string(vui["vui_time_scale"].get<uint32_t>());
        // the many zero bytes need emulation prevention
        const std::string there = Written("there.hevc", Edited(Sample(sample), "--timing 256/1"));
        EXPECT_EQ(Edited(there, "--timing " + timing), FileBytes(Sample(sample))) << sample;
    }
}

TEST_F(EditCommand, ChangesPicStructInPlace) {
    const Bytes before = FileBytes(Sample("interlaced-field-hrd.hevc"));
    const Bytes after = Edited(Sample("interlaced-field-hrd.hevc"), "--pic-struct 12");
    ExpectSameBut({kPrefixSei}, before, after);
    const std::vector<json> old_sei = Shown(Sample("interlaced-field-hrd.hevc"), "sei");
    const std::vector<json> new_sei = Shown(Path("out.hevc"), "sei");
    ASSERT_EQ(new_sei.size(), old_sei.size());
    size_t timings = 0;
    for (size_t i = 0; i < old_sei.size(); i++) {
        json expected = old_sei[i];
        if (expected[0]["payload_name"] == "pic_timing") {
            expected[0]["pic_timing"]["pic_struct"] = 12;
            timings++;
        }
        EXPECT_EQ(new_sei[i], expected) << i;
    }
    EXPECT_EQ(timings, 16U);
}

TEST_F(EditCommand, MakesAStreamOfFieldsTogetherWithInsert) {
    Written("fields.hevc", Edited(Sample("temporal-layers.hevc"), "--interlaced --field-seq"));
    EXPECT_EQ(
        Shell("TOOL insert '" + Path("fields.hevc") + "' -o '" + Path("timed.hevc") + "' --pic-timing 1,2")
            .status,
        0);
    EXPECT_EQ(Shown(Path("timed.hevc"), "sei").size(), 40U);
    Edited(Path("timed.hevc"), "--field-seq --pic-struct 2");
    for (const json &sei : Shown(Path("out.hevc"), "sei"))
        EXPECT_EQ(sei[0]["pic_timing"]["pic_struct"], 2);
}

TEST_F(EditCommand, ReadsStandardInput) {
    const Bytes expected = Edited(Sample("slices.hevc"), "--sar 16:11");
    const Outcome outcome = Shell("cat '" + Sample("slices.hevc") + "' | TOOL edit - -o '" +
                                  Path("piped.hevc") + "' --sar 16:11");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(FileBytes(Path("piped.hevc")), expected);
}

TEST_F(EditCommand, RefusesWrongValues) {
    const struct {
        const char *options;
        const char *error;
    } kCases[] = {
        {"--size 208", "--size: \"208\" is not WxH\n"},
        {"--size 208x", "--size: \"208x\" is not WxH\n"},
        {"--size 208x120x3", "--size: \"208x120x3\" is not WxH\n"},
        {"--size 208x-120", "--size: \"208x-120\" is not WxH\n"},
        {"--size 0x120", "--size: sides of pictures are 1 to 65535\n"},
        {"--size 65536x120", "--size: sides of pictures are 1 to 65535\n"},
        {"--crop 1,2,3", "--crop: \"1,2,3\" is not L,R,T,B\n"},
        {"--crop 1,2,3,4,5", "--crop: \"1,2,3,4,5\" is not L,R,T,B\n"},
        {"--crop 4294967296,0,0,0", "--crop: \"4294967296,0,0,0\" is not L,R,T,B\n"},
        {"--sar 4/3", "--sar: \"4/3\" is not W:H\n"},
        {"--sar 0:1", "--sar: the parts of a ratio are 1 to 65535\n"},
        {"--sar 65536:65535", "--sar: the parts of a ratio are 1 to 65535\n"},
        {"--colour bt709", "--colour: \"bt709\" is not PRIMARIES/TRANSFER/MATRIX\n"},
        {"--colour 1/1/1/1", "--colour: \"1/1/1/1\" is not PRIMARIES/TRANSFER/MATRIX\n"},
        {"--colour bt7/1/1", "--colour: \"bt7\" names no colour primaries\n"},
        {"--colour 1/256/1", "--colour: \"256\" names no transfer characteristics\n"},
        {"--colour 1/1/", "--colour: \"\" names no matrix coefficients\n"},
        {"--timing 1001", "--timing: \"1001\" is not UNITS/SCALE\n"},
        {"--timing 0/25", "--timing: neither part may be 0\n"},
        {"--timing 1/0", "--timing: neither part may be 0\n"},
        {"--fps 0", "--fps: \"0\" is no rate (N or N/D)\n"},
        {"--fps 25fps", "--fps: \"25fps\" is no rate (N or N/D)\n"},
    };
    for (const auto &[options, error] : kCases) {
        const Outcome outcome = Edit(Sample("slices.hevc"), options);
        EXPECT_EQ(outcome.status, 2) << options;
        EXPECT_EQ(outcome.err, std::string("h265tool: ") + error);
    }
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(EditCommand, RefusesWrongUsage) {
    const struct {
        const char *arguments;
        const char *error;
    } kCases[] = {
        {"x -o y", "At least 1 option from [--interlaced,"},
        {"-o y --interlaced", "IN is required"},
        {"x --interlaced", "--output is required"},
        {"x -o y --fps 25 --timing 1/25", "--timing excludes --fps"},
        {"x -o y --range tv", "--range: tv not in {full,limited}"},
        {"x -o y --pic-struct 13", "--pic-struct: Value 13 not in range 0 to 12"},
        {"x -o y --pic-struct", "--pic-struct: 1 required N"},
    };
    for (const auto &[arguments, error] : kCases) {
        const Outcome outcome = Shell(std::string("TOOL edit ") + arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr(error)) << arguments;
    }
    EXPECT_THAT(Shell("TOOL edit --help").out, HasSubstr("--size changes the headers alone"));
}

TEST_F(EditCommand, RefusesStreamsThatDoNotAllowIt) {
    const struct {
        const char *sample;
        const char *options;
        const char *error;
    } kCases[] = {
        {"slices.hevc", "--size 209x112",
         "NAL unit at offset 28: --size: the sides of the pictures have to be multiples of MinCbSizeY, 8"},
        {"vui-extended-sar.hevc", "--crop 1,0,0,0",
         "NAL unit at offset 28: --crop: 1 is no multiple of SubWidthC, 2"},
        {"vui-extended-sar.hevc", "--crop 80,80,0,0",
         "NAL unit at offset 28: the conformance window leaves nothing of pictures of 160x96"},
        {"slices.hevc", "--crop 2,0,0,0",
         "NAL unit at offset 28: --crop: it has no conformance window (conformance_window_flag is 0), and "
         "rewriting changes a window but cannot add one"},
        {"slices.hevc", "--colour bt709/bt709/gbr",
         "NAL unit at offset 28: --colour: matrix_coeffs 0 (GBR) needs 4:4:4 with equal bit depths"},
        {"slices.hevc", "--field-seq",
         "NAL unit at offset 28: --field-seq: general_frame_only_constraint_flag is 1, which fields are not "
         "(--interlaced clears it)"},
        {"progressive-hrd-vui.hevc", "--interlaced --field-seq",
         "NAL unit at offset 122: pic_timing would not be understood any more, since "
         "frame_field_info_present_flag changes"},
        {"progressive-hrd-vui.hevc", "--pic-struct 0",
         "NAL unit at offset 122: pic_timing has no pic_struct: frame_field_info_present_flag of the SPS is "
         "0"},
        {"interlaced-field-hrd.hevc", "--pic-struct 0",
         "NAL unit at offset 117: pic_struct 0 does not fit field_seq_flag 1"},
        {"slices.hevc", "--pic-struct 0",
         "it holds no picture timing, and --pic-struct changes what is there"},
        {"units/sei-afd.nal", "--sar 1:1", "it holds no SPS"},
        {"README.md", "--interlaced",
         "no H.265 byte stream: it starts with 23 20 53 61, not with a start code"},
    };
    Written("out.hevc", std::string("old"));
    for (const auto &[sample, options, error] : kCases) {
        const Outcome outcome = Edit(Sample(sample), options);
        EXPECT_EQ(outcome.status, 1) << options;
        EXPECT_EQ(outcome.err, "h265tool: " + Sample(sample) + ": " + error + "\n");
    }
    EXPECT_THAT(Files(), ElementsAre("out.hevc"));
    EXPECT_EQ(FileBytes(Path("out.hevc")), (Bytes{'o', 'l', 'd'}));
}

TEST_F(EditCommand, RefusesToOverwriteItsInputs) {
    const std::string in = Written("in.hevc", FileBytes(Sample("slices.hevc")));
    const std::string hrd = Written("hrd.json", std::string("{}"));
    std::filesystem::create_symlink(in, Path("link.hevc"));
    for (const std::string &source : {"TOOL edit '" + in + "'", "TOOL edit - <'" + in + "'"}) {
        for (const std::string &out : {in, Path("link.hevc")}) {
            const Outcome outcome = Shell(source + " --sar 4:3 -o '" + out + "'");
            EXPECT_EQ(outcome.status, 2);
            EXPECT_THAT(outcome.err, StartsWith("h265tool: " + out + ": it is the same file as "));
        }
    }
    const Outcome outcome = Shell("TOOL edit '" + in + "' --hrd '" + hrd + "' -o '" + hrd + "'");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "h265tool: " + hrd + ": it is the same file as " + hrd + "\n");
    EXPECT_EQ(FileBytes(in), FileBytes(Sample("slices.hevc")));
    EXPECT_EQ(FileBytes(hrd), (Bytes{'{', '}'}));
}

TEST_F(EditCommand, ReportsFilesThatCannotBeReadOrWritten) {
    const Outcome unreadable = Edit("/nowhere.hevc", "--sar 1:1");
    EXPECT_EQ(unreadable.status, 2);
    EXPECT_EQ(unreadable.err, "h265tool: /nowhere.hevc: No such file or directory\n");
    const Outcome no_hrd = Edit(Sample("slices.hevc"), "--hrd /nowhere.json");
    EXPECT_EQ(no_hrd.status, 2);
    EXPECT_EQ(no_hrd.err, "h265tool: /nowhere.json: No such file or directory\n");
    const Outcome full = Shell("TOOL edit '" + Sample("slices.hevc") + "' --sar 4:3 -o /dev/full");
    EXPECT_EQ(full.status, 2);
    EXPECT_EQ(full.err, "h265tool: /dev/full: No space left on device\n");
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(EditCommand, CopiesWhatLiesBetweenNalUnits) {
    Bytes stream = {0, 0, 0};
    for (const NalUnit &unit : Units(FileBytes(Sample("slices.hevc")))) {
        const std::span bytes = unit.HeadBehindStartCode();
        stream.insert(stream.end(), {0, 0, 1});
        stream.insert(stream.end(), bytes.begin(), bytes.end());
        stream.resize(stream.size() + stream.size() % 7);  // trailing zero bytes
    }
    const std::string in = Written("in.hevc", stream);
    const Bytes after = Edited(in, "--sar 10:11 --interlaced");
    EXPECT_NE(after, stream);
    ExpectSameBut({kVps, kSps}, stream, after);
}

}  // namespace
}  // namespace h265tool
