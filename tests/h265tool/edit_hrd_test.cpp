// `h265tool edit --hrd`: HRD parameters from JSON.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>

#include "command_test.h"
#include "edit/hrd_fields.h"
#include "usage_error.h"

namespace h265tool {
namespace {

using nlohmann::json;
using test::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Two sub-layers with everything: the first with a fixed picture rate and two CPBs, the second with low
// delay.
json FullHrd() {
    return json::parse(R"({
        "nal_hrd_parameters_present_flag": 1, "vcl_hrd_parameters_present_flag": 1,
        "sub_pic_hrd_params_present_flag": 1, "tick_divisor_minus2": 255,
        "du_cpb_removal_delay_increment_length_minus1": 31, "sub_pic_cpb_params_in_pic_timing_sei_flag": 1,
        "dpb_output_delay_du_length_minus1": 30, "bit_rate_scale": 15, "cpb_size_scale": 14,
        "cpb_size_du_scale": 13, "initial_cpb_removal_delay_length_minus1": 29,
        "au_cpb_removal_delay_length_minus1": 28, "dpb_output_delay_length_minus1": 27,
        "fixed_pic_rate_general_flag": [1, 0], "fixed_pic_rate_within_cvs_flag": [null, 0],
        "elemental_duration_in_tc_minus1": [2047], "low_delay_hrd_flag": [null, 1], "cpb_cnt_minus1": [1],
        "s_l_nal_hrd_parameters": [
            {"bit_rate_value_minus1": [4294967294, 1], "cpb_size_value_minus1": [2, 3],
             "cpb_size_du_value_minus1": [4, 5], "bit_rate_du_value_minus1": [6, 7], "cbr_flag": [0, 1]},
            {"bit_rate_value_minus1": [0], "cpb_size_value_minus1": [0], "cpb_size_du_value_minus1": [0],
             "bit_rate_du_value_minus1": [0], "cbr_flag": [0]}],
        "s_l_vcl_hrd_parameters": [
            {"bit_rate_value_minus1": [8, 9], "cpb_size_value_minus1": [10, 11],
             "cpb_size_du_value_minus1": [12, 13], "bit_rate_du_value_minus1": [14, 15], "cbr_flag": [1, 0]},
            {"bit_rate_value_minus1": [16], "cpb_size_value_minus1": [17], "cpb_size_du_value_minus1": [18],
             "bit_rate_du_value_minus1": [19], "cbr_flag": [1]}]})");
}

class EditHrd : public CommandTest {
 protected:
    Outcome Edit(const std::string &sample, const std::string &hrd, const std::string &options = "") const {
        Written("hrd.json", hrd);
        return Shell("TOOL edit '" + Sample(sample) + "' -o '" + Path("out.hevc") + "' --hrd '" +
                     Path("hrd.json") + "' " + options);
    }

    // sps.vui of the first SPS.
    static json Vui(const std::string &file) {
        for (const std::string &line : Shell("TOOL inspect --json '" + file + "'").Lines()) {
            const json unit = json::parse(line);
            if (unit.contains("sps"))
                return unit["sps"]["vui"];
        }
        return {};
    }
};

TEST_F(EditHrd, WhatInspectPrintsCanBeFedBack) {
    for (const char *sample : {"progressive-hrd-vui.hevc", "interlaced-field-hrd.hevc"}) {
        const Outcome outcome = Edit(sample, Vui(Sample(sample))["nal_hrd"].dump(2));
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.err, IsEmpty());
        EXPECT_EQ(FileBytes(Path("out.hevc")), FileBytes(Sample(sample)));
    }
}

TEST_F(EditHrd, MembersThatAreLeftOutStay) {
    json expected = Vui(Sample("progressive-hrd-vui.hevc"));
    expected["nal_hrd"]["bit_rate_scale"] = 7;
    expected["nal_hrd"]["s_l_nal_hrd_parameters"][0]["cbr_flag"][0] = 1;
    const json edit = {{"bit_rate_scale", 7},
                       {"s_l_nal_hrd_parameters", expected["nal_hrd"]["s_l_nal_hrd_parameters"]}};
    EXPECT_EQ(Edit("progressive-hrd-vui.hevc", edit.dump()).status, 0);
    EXPECT_EQ(Vui(Path("out.hevc")), expected);
}

TEST_F(EditHrd, AddsWhatWasNotThere) {
    json expected = Vui(Sample("temporal-layers.hevc"));
    expected["vui_hrd_parameters_present_flag"] = 1;
    expected["nal_hrd"] = FullHrd();
    const Outcome outcome = Edit("temporal-layers.hevc", FullHrd().dump());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, IsEmpty());
    EXPECT_EQ(Vui(Path("out.hevc")), expected);
}

TEST_F(EditHrd, HasASyntaxElementWhereTheOthersSaySo) {
    const json sub_layer = {
        {"bit_rate_value_minus1", {5}}, {"cpb_size_value_minus1", {6}}, {"cbr_flag", {1}}};
    const json lengths = {{"bit_rate_scale", 0},
                          {"cpb_size_scale", 0},
                          {"initial_cpb_removal_delay_length_minus1", 0},
                          {"au_cpb_removal_delay_length_minus1", 0},
                          {"dpb_output_delay_length_minus1", 0}};
    json none = {{"nal_hrd_parameters_present_flag", 0},      {"vcl_hrd_parameters_present_flag", 0},
                 {"fixed_pic_rate_general_flag", {0, 1}},     {"fixed_pic_rate_within_cvs_flag", {1}},
                 {"elemental_duration_in_tc_minus1", {3, 4}}, {"cpb_cnt_minus1", {0, 0}}};
    json vcl = none;
    vcl.update(lengths);
    vcl["vcl_hrd_parameters_present_flag"] = 1;
    vcl["sub_pic_hrd_params_present_flag"] = 0;
    vcl["s_l_vcl_hrd_parameters"] = {sub_layer, sub_layer};
    for (const json &hrd : {none, vcl}) {
        EXPECT_EQ(Edit("temporal-layers.hevc", hrd.dump()).status, 0) << hrd;
        EXPECT_EQ(Vui(Path("out.hevc"))["nal_hrd"], hrd);
    }
}

TEST_F(EditHrd, MessagesOfTheStreamHaveToStayReadable) {
    const std::string sample = "progressive-hrd-vui.hevc";
    const struct {
        const char *hrd;
        const char *error;
    } kCases[] = {
        {R"({"initial_cpb_removal_delay_length_minus1": 5})",
         "NAL unit at offset 107: buffering_period would not be understood any more, since "
         "initial_cpb_removal_delay_length_minus1 changes"},
        {R"({"au_cpb_removal_delay_length_minus1": 5})",
         "NAL unit at offset 107: buffering_period would not be understood any more, since "
         "au_cpb_removal_delay_length_minus1 changes"},
        {R"({"nal_hrd_parameters_present_flag": 0})",
         "NAL unit at offset 107: buffering_period would not be understood any more, since "
         "nal_hrd_parameters_present_flag changes"},
    };
    for (const auto &[hrd, error] : kCases) {
        const Outcome outcome = Edit(sample, hrd);
        EXPECT_EQ(outcome.status, 1) << hrd;
        EXPECT_EQ(outcome.err, "h265tool: " + Sample(sample) + ": " + error + "\n");
    }
    EXPECT_THAT(Files(), ElementsAre("hrd.json"));
}

TEST_F(EditHrd, WhatDoesNotFitIsRefused) {
    // 32 CPBs with values of 63 bits: more than the library has room for behind an SPS, or in it
    const std::vector<uint64_t> values(32, 4294967294);
    const std::vector<uint64_t> flags(32, 1);
    json hrd = FullHrd();
    hrd["fixed_pic_rate_general_flag"] = {1, 1};
    hrd.erase("fixed_pic_rate_within_cvs_flag");
    hrd.erase("low_delay_hrd_flag");
    hrd["elemental_duration_in_tc_minus1"] = {0, 0};
    hrd["cpb_cnt_minus1"] = {31, 31};
    json sub_layer = {
        {"bit_rate_value_minus1", values}, {"cpb_size_value_minus1", values}, {"cbr_flag", flags}};
    sub_layer["cpb_size_du_value_minus1"] = values;
    sub_layer["bit_rate_du_value_minus1"] = values;
    hrd["s_l_nal_hrd_parameters"] = {sub_layer, sub_layer};
    hrd["s_l_vcl_hrd_parameters"] = {sub_layer, sub_layer};
    const std::string start = "h265tool: " + Sample("temporal-layers.hevc") + ": NAL unit at offset 33: ";
    Outcome outcome = Edit("temporal-layers.hevc", hrd.dump());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, start + "Failed to set cpb_size_value_minus1[22].\n");

    hrd["vcl_hrd_parameters_present_flag"] = 0;
    hrd.erase("s_l_vcl_hrd_parameters");
    hrd["cpb_cnt_minus1"] = {31, 0};
    outcome = Edit("temporal-layers.hevc", hrd.dump());
    EXPECT_EQ(outcome.status, 2);
    hrd["s_l_nal_hrd_parameters"][1] = FullHrd()["s_l_nal_hrd_parameters"][1];
    outcome = Edit("temporal-layers.hevc", hrd.dump());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, start + "it is too long when rewritten\n");
    EXPECT_THAT(Files(), ElementsAre("hrd.json"));
}

TEST_F(EditHrd, FilesThatAreNoObjectsAreRefused) {
    for (const auto &[text, error] : std::vector<std::pair<std::string, std::string>>{
             {"{\"a\": }", "it is no JSON: byte 7 cannot stand there"},
             {"", "it is no JSON: byte 1 cannot stand there"},
             {"[1]", "it is no JSON object"},
             {"null", "it is no JSON object"}}) {
        const Outcome outcome = Edit("slices.hevc", text);
        EXPECT_EQ(outcome.status, 2) << text;
        EXPECT_EQ(outcome.err, "h265tool: " + Path("hrd.json") + ": " + error + "\n");
    }
}

// What is wrong with an HRD of two sub-layers.
std::string Complaint(const json &hrd) {
    const auto vui = std::make_unique<vui_h265_t>();
    try {
        ApplyHrdFields({"FILE", Json::parse(hrd.dump())}, 1, vui.get());
    } catch (const UsageError &error) {
        EXPECT_EQ(error.subject(), "FILE");
        EXPECT_EQ(vui->vui_hrd_parameters_present_flag, 0);
        return error.what();
    }
    return {};
}

TEST(HrdFieldsTest, EveryMemberIsNeeded) {
    EXPECT_EQ(Complaint(FullHrd()), "");
    const json full = FullHrd();
    for (const auto &[name, value] : full.items()) {
        json hrd = full;
        hrd.erase(name);
        const std::string complaint = Complaint(hrd);
        EXPECT_THAT(complaint, testing::StartsWith(name)) << name;
        EXPECT_THAT(complaint, testing::EndsWith(" is missing")) << name;
    }
}

TEST(HrdFieldsTest, ValuesHaveTheRangeOfTheirElement) {
    const std::vector<std::pair<std::string, uint64_t>> kMaxima = {
        {"nal_hrd_parameters_present_flag", 1},
        {"vcl_hrd_parameters_present_flag", 1},
        {"sub_pic_hrd_params_present_flag", 1},
        {"tick_divisor_minus2", 255},
        {"du_cpb_removal_delay_increment_length_minus1", 31},
        {"sub_pic_cpb_params_in_pic_timing_sei_flag", 1},
        {"dpb_output_delay_du_length_minus1", 31},
        {"bit_rate_scale", 15},
        {"cpb_size_scale", 15},
        {"cpb_size_du_scale", 15},
        {"initial_cpb_removal_delay_length_minus1", 31},
        {"au_cpb_removal_delay_length_minus1", 31},
        {"dpb_output_delay_length_minus1", 31},
    };
    for (const auto &[name, max] : kMaxima) {
        for (const json &value : {json(max + 1), json(-1), json(0.5), json("1"), json(true), json::array()}) {
            json hrd = FullHrd();
            hrd[name] = value;
            EXPECT_EQ(Complaint(hrd), name + " is no number from 0 to " + std::to_string(max)) << value;
        }
    }
    json hrd = FullHrd();
    hrd["cpb_cnt_minus1"][0] = 32;
    EXPECT_EQ(Complaint(hrd), "cpb_cnt_minus1[0] is no number from 0 to 31");
    hrd = FullHrd();
    hrd["s_l_vcl_hrd_parameters"][1]["cpb_size_value_minus1"][0] = 4294967295;
    EXPECT_EQ(Complaint(hrd),
              "s_l_vcl_hrd_parameters[1].cpb_size_value_minus1[0] is no number from 0 to 4294967294");
}

TEST(HrdFieldsTest, NothingThatIsNotReadIsAccepted) {
    json hrd = FullHrd();
    hrd["cpb_count"] = 1;
    EXPECT_EQ(Complaint(hrd), "cpb_count has no place beside the others");
    hrd = FullHrd();
    hrd["sub_pic_hrd_params_present_flag"] = 0;
    EXPECT_EQ(Complaint(hrd), "cpb_size_du_scale has no place beside the others");
    hrd = FullHrd();
    hrd["fixed_pic_rate_general_flag"][2] = 1;  // a third sub-layer
    EXPECT_EQ(Complaint(hrd), "fixed_pic_rate_general_flag[2] has no place beside the others");
    hrd = FullHrd();
    hrd["fixed_pic_rate_within_cvs_flag"][0] = 1;  // follows from fixed_pic_rate_general_flag
    EXPECT_EQ(Complaint(hrd), "fixed_pic_rate_within_cvs_flag[0] has no place beside the others");
    hrd = FullHrd();
    hrd["s_l_nal_hrd_parameters"][1]["cbr_flag"][1] = 1;  // a second CPB
    EXPECT_EQ(Complaint(hrd), "s_l_nal_hrd_parameters[1].cbr_flag[1] has no place beside the others");
}

}  // namespace
}  // namespace h265tool
