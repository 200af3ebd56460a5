// The JSON of units made by hand, for what the sample streams do not have.

#include "json/json.h"

#include <gtest/gtest.h>

#include "sample_units.h"

namespace h265tool {
namespace {

using test::BitString;

Json Inspected(UnitReader *reader, const NalUnit &unit) {
    return ToJson(unit, reader->Read(unit));
}

Json Inspected(const NalUnit &unit) {
    UnitReader reader;
    return Inspected(&reader, unit);
}

TEST(Json, HasThePlaceAndHeaderOfAUnit) {
    NalUnit unit = Unit(kAud, BitString().U(3, 2));
    unit.offset = 1234;
    EXPECT_EQ(Inspected(unit).dump(),
              R"({"offset":1234,"size":7,"start_code":4,"nal_unit_type":35,"nal_unit_name":"AUD_NUT",)"
              R"("nuh_layer_id":0,"temporal_id":0,"aud":{"nal_type":35,"pic_type":2}})");
}

TEST(Json, ShowsEveryPicType) {
    for (unsigned int pic_type = 0; pic_type < 8; pic_type++)
        EXPECT_EQ(Inspected(Unit(kAud, BitString().U(3, pic_type)))["aud"]["pic_type"], pic_type);
}

TEST(Json, HasNullWhereTheHeaderDoesNotSay) {
    EXPECT_EQ(Inspected(UnitOf({0, 0, 1, 0x40})).dump(),
              R"({"offset":0,"size":4,"start_code":3,"nal_unit_type":null,"nal_unit_name":null,)"
              R"("nuh_layer_id":null,"temporal_id":null,"error":"the NAL unit header is truncated"})");
    const Json without_temporal_id = Inspected(UnitOf({0, 0, 1, 0x40, 0x00}));
    EXPECT_TRUE(without_temporal_id["temporal_id"].is_null());
    EXPECT_EQ(without_temporal_id["nal_unit_name"], "VPS_NUT");
    EXPECT_EQ(without_temporal_id["error"], "nuh_temporal_id_plus1 is 0");
}

// sub_layer_hrd_parameters( ) of one CPB.
BitString Cpb(uint64_t bit_rate_value_minus1, uint64_t cpb_size_value_minus1, unsigned int cbr_flag) {
    return BitString().Ue(bit_rate_value_minus1).Ue(cpb_size_value_minus1).U(1, cbr_flag);
}

TEST(Json, ShowsEveryHrdOfAVps) {
    BitString vps = VpsWithTiming();
    vps.U(1, 1).Ue(8).Ue(3);  // vps_num_ticks_poc_diff_one_minus1, vps_num_hrd_parameters
    // the first: its common part is there although no flag says so
    vps.Ue(0).U(1, 1).U(1, 0).U(1, 0).U(4, 3).U(4, 5).U(5, 23).U(5, 15).U(5, 7);
    vps.U(1, 1).Ue(6).Ue(0).Append(Cpb(1000, 2000, 1));
    // the second takes the common part of the first, and so has a NAL HRD
    vps.Ue(1).U(1, 0);
    vps.U(1, 0).U(1, 0).U(1, 1).Append(Cpb(3000, 4000, 0));
    // the third has a common part of its own, which says that there is neither
    vps.Ue(2).U(1, 1).U(1, 0).U(1, 0);
    vps.U(1, 0).U(1, 1).Ue(9).Ue(0);
    vps.U(1, 0);

    const Json json = Inspected(Unit(kVps, vps))["vps"];
    EXPECT_EQ(json["vps_video_parameter_set_id"], 2);
    EXPECT_EQ(json["vps_time_scale"], 30000);
    EXPECT_EQ(json["vps_num_ticks_poc_diff_one_minus1"], 8);
    EXPECT_EQ(json["hrd_layer_set_idx"].dump(), "[0,1,2]");
    EXPECT_EQ(json["cprms_present_flag"].dump(), "[null,0,1]");
    const Json &hrds = json["vps_hrd_parameters"];
    ASSERT_EQ(hrds.size(), 3U);
    EXPECT_EQ(hrds[0].dump(),
              R"({"nal_hrd_parameters_present_flag":1,"vcl_hrd_parameters_present_flag":0,)"
              R"("sub_pic_hrd_params_present_flag":0,"bit_rate_scale":3,"cpb_size_scale":5,)"
              R"("initial_cpb_removal_delay_length_minus1":23,"au_cpb_removal_delay_length_minus1":15,)"
              R"("dpb_output_delay_length_minus1":7,"fixed_pic_rate_general_flag":[1],)"
              R"("elemental_duration_in_tc_minus1":[6],"cpb_cnt_minus1":[0],"s_l_nal_hrd_parameters":)"
              R"([{"bit_rate_value_minus1":[1000],"cpb_size_value_minus1":[2000],"cbr_flag":[1]}]})");
    EXPECT_EQ(hrds[1].dump(),
              R"({"fixed_pic_rate_general_flag":[0],"fixed_pic_rate_within_cvs_flag":[0],)"
              R"("low_delay_hrd_flag":[1],"s_l_nal_hrd_parameters":)"
              R"([{"bit_rate_value_minus1":[3000],"cpb_size_value_minus1":[4000],"cbr_flag":[0]}]})");
    EXPECT_EQ(hrds[2].dump(), R"({"nal_hrd_parameters_present_flag":0,"vcl_hrd_parameters_present_flag":0,)"
                              R"("fixed_pic_rate_general_flag":[0],"fixed_pic_rate_within_cvs_flag":[1],)"
                              R"("elemental_duration_in_tc_minus1":[9],"cpb_cnt_minus1":[0]})");
    EXPECT_EQ(json["vps_extenstion_flag"], 0);
    EXPECT_FALSE(json.contains("vps_extenstion_data_flag"));
}

TEST(Json, LeavesEntriesOutThatTheSyntaxSkips) {
    SpsChoices choices;
    choices.max_sub_layers_minus1 = 2;
    const Json json = Inspected(Unit(kSps, Sps(choices)))["sps"];
    // without sps_sub_layer_ordering_info_present_flag only the highest sub-layer is described
    EXPECT_EQ(json["sps_max_dec_pic_buffering_minus1"].dump(), "[null,null,4]");
    EXPECT_EQ(json["ptl"]["sub_layer_level_present_flag"].dump(), "[0,0]");
    EXPECT_EQ(json["ptl"]["reserved_zero_2bits"].dump(), "[null,null,0,0,0,0,0,0]");
    for (const char *absent : {"conf_win_left_offset", "separate_colour_plane_flag", "scaling_list", "strps",
                               "pcm_sample_bit_depth_luma_minus1", "vui", "sps_range_extension_flag",
                               "vui_parameters_present_offset", "num_long_term_ref_pics_sps"})
        EXPECT_FALSE(json.contains(absent)) << absent;
    EXPECT_EQ(json["strong_intra_smoothing_enabled_flag"], 0);
}

TEST(Json, CountsTheFlagsOfPredictedReferencePictureSets) {
    SpsChoices choices;
    BitString &strps = choices.strps;
    strps = BitString().Ue(3);
    // POC -1, -3, +2
    strps.Ue(2).Ue(1).Ue(0).U(1, 1).Ue(1).U(1, 1).Ue(1).U(1, 0);
    // moved by -2: -3, -5, the current picture itself (which is no reference), -2
    strps.U(1, 1).U(1, 1).Ue(1).U(1, 1).U(1, 0).U(1, 1).U(1, 1).U(1, 1);
    // three pictures and the set's own
    strps.U(1, 1).U(1, 0).Ue(0).U(1, 0).U(1, 0).U(1, 1).U(1, 1).U(1, 0).U(1, 1);

    const Json sets = Inspected(Unit(kSps, Sps(choices)))["sps"]["strps"];
    ASSERT_EQ(sets.size(), 3U);
    EXPECT_EQ(sets[0].dump(), R"({"num_negative_pics":2,"num_positive_pics":1,"delta_poc_s0_minus1":[0,1],)"
                              R"("used_by_current_pic_s0_flag":[1,1],"delta_poc_s1_minus1":[1],)"
                              R"("used_by_current_pic_s1_flag":[0]})");
    EXPECT_EQ(sets[1].dump(),
              R"({"inter_ref_pic_set_prediction_flag":1,"delta_rps_sign":1,"abs_delta_rps_minus1":1,)"
              R"("used_by_current_pic_flag":[1,0,1,1],"used_delta_flag":[null,1]})");
    EXPECT_EQ(sets[2].dump(),
              R"({"inter_ref_pic_set_prediction_flag":1,"delta_rps_sign":0,"abs_delta_rps_minus1":0,)"
              R"("used_by_current_pic_flag":[0,1,1,0],"used_delta_flag":[0,null,null,1]})");
}

TEST(Json, ShowsTilesAndExtensionsOfAPps) {
    BitString pps;
    pps.Ue(5).Ue(0).U(1, 0).U(1, 0).U(3, 0).U(1, 0).U(1, 0).Ue(0).Ue(0).Se(-3);
    pps.U(1, 0).U(1, 0).U(1, 1).Ue(2).Se(4).Se(-4).U(1, 0).U(1, 0).U(1, 0).U(1, 0);
    pps.U(1, 1).U(1, 0).Ue(2).Ue(1).U(1, 0).Ue(7).Ue(8).Ue(9).U(1, 1);  // 3 x 2 tiles
    pps.U(1, 0).U(1, 1).U(1, 0).U(1, 1).U(1, 0).U(1, 0).Ue(1).U(1, 0).U(1, 1).U(8, 0);

    const Json json = Inspected(Unit(kPps, pps))["pps"];
    EXPECT_EQ(json["init_qp_minus26"], -3);
    EXPECT_EQ(json["diff_cu_qp_delta_depth"], 2);
    EXPECT_EQ(json["num_tile_columns_minus1"], 2);
    EXPECT_EQ(json["column_width_minus1"].dump(), "[7,8]");
    EXPECT_EQ(json["row_height_minus1"].dump(), "[9]");
    EXPECT_EQ(json["loop_filter_across_tiles_enabled_flag"], 1);
    EXPECT_EQ(json["pps_deblocking_filter_disabled_flag"], 1);
    EXPECT_FALSE(json.contains("pps_beta_offset_div2"));
    EXPECT_EQ(json["pps_extension_4bits"], 0);
    EXPECT_FALSE(json.contains("pps_extension_data_flag"));
}

TEST(Json, ShowsWhatASliceCarries) {
    UnitReader reader;
    Inspected(&reader, Unit(kSps, Sps({.width = 128, .height = 64})));  // 32 blocks: 5 bits
    Inspected(&reader, Unit(kPps, Pps(3, 0, true)));
    EXPECT_EQ(Inspected(&reader, Unit(kIdrNLp, BitString().U(2, 3).Ue(3).Ue(2)))["slice"].dump(),
              R"({"first_slice_segment_in_pic_flag":1,"no_output_of_prior_pics_flag":1,)"
              R"("slice_pic_parameter_set_id":3,"slice_type":2})");
    EXPECT_EQ(Inspected(&reader, Unit(1, BitString().U(1, 0).Ue(3).U(1, 0).U(5, 31).Ue(0).U(8, 77)))["slice"]
                  .dump(),
              R"({"first_slice_segment_in_pic_flag":0,"slice_pic_parameter_set_id":3,)"
              R"("dependent_slice_segment_flag":0,"slice_segment_address":31,"slice_type":0,)"
              R"("slice_pic_order_cnt_lsb":77})");
    EXPECT_EQ(Inspected(&reader, Unit(1, BitString().U(1, 0).Ue(3).U(1, 1).U(5, 9)))["slice"].dump(),
              R"({"first_slice_segment_in_pic_flag":0,"slice_pic_parameter_set_id":3,)"
              R"("dependent_slice_segment_flag":1,"slice_segment_address":9})");
}

}  // namespace
}  // namespace h265tool
