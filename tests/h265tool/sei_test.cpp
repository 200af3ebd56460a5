// SEI NAL units made by hand, for what the sample streams do not have.

#include "reading/sei.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "json/json.h"
#include "run_tool.h"
#include "sample_units.h"
#include "sei_names.h"
#include "sei_summary.h"

namespace h265tool {
namespace {

using test::BitString;
using test::Bytes;
using ::testing::EndsWith;
using ::testing::StartsWith;

struct Message {
    unsigned int payload_type;
    Bytes payload;
};

NalUnit SeiUnit(const std::vector<Message> &messages, unsigned int nal_unit_type = kPrefixSei) {
    Bytes rbsp;
    const auto append_sum = [&rbsp](size_t sum) {
        rbsp.insert(rbsp.end(), sum / 255, 0xFF);
        rbsp.push_back(static_cast<unsigned char>(sum % 255));
    };
    for (const Message &message : messages) {
        append_sum(message.payload_type);
        append_sum(message.payload.size());
        rbsp.insert(rbsp.end(), message.payload.begin(), message.payload.end());
    }
    rbsp.push_back(0x80);
    return UnitOf(test::NalUnit(static_cast<int>(nal_unit_type), rbsp));
}

// Captions with one construct.
Message Captions(unsigned char data1, unsigned char data2) {
    return {4, {0xB5, 0, 0x31, 'G', 'A', '9', '4', 3, 0xC1, 0xFF, 0xFC, data1, data2, 0xFF}};
}

Message ActiveFormat(unsigned char active_format) {
    return {4, {0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, static_cast<unsigned char>(0xF0 | active_format)}};
}

std::string Summarized(const NalUnit &unit) {
    UnitReader reader;
    return SeiSummary(std::get<Sei>(reader.Read(unit)));
}

Json Inspected(const NalUnit &unit) {
    UnitReader reader;
    return ToJson(unit, reader.Read(unit))["sei"];
}

TEST(Sei, ReadsEachOfSeveralMessagesOfAKind) {
    EXPECT_EQ(
        Summarized(SeiUnit({Captions('A', 'B'), ActiveFormat(8), Captions('C', 'D'), ActiveFormat(10)})),
        "captions: 1, field 1 \"AB\"; AFD: 8; captions: 1, field 1 \"CD\"; AFD: 10");
}

TEST(Sei, ShowsMessagesThatItDoesNotReadByNameAndSize) {
    EXPECT_EQ(Summarized(SeiUnit({{6, {0x80}}, {147, {18}}, {300, Bytes(2, 0)}})),
              "recovery_point (1 byte); alternative_transfer_characteristics (1 byte); "
              "reserved_sei_message 300 (2 bytes)");
    EXPECT_EQ(Summarized(SeiUnit({{132, Bytes(17, 1)}})), "reserved_sei_message 132 (17 bytes)");
    EXPECT_EQ(Summarized(SeiUnit({{132, Bytes(17, 1)}, {1, {0}}}, kSuffixSei)),
              "decoded_picture_hash (17 bytes); reserved_sei_message 1 (1 byte)");
    // registered user data of others, and bar data of ATSC
    EXPECT_EQ(Summarized(SeiUnit({{4, {0xB5, 0, 0x3C}}, {4, {0xB5, 0, 0x31, 'G', 'A', '9', '4', 6}}})),
              "user_data_registered_itu_t_t35 (3 bytes); user_data_registered_itu_t_t35 (8 bytes)");
}

TEST(Sei, ReadsMessagesBehindLargeOnes) {
    Bytes user_data = {0x2C, 0xA2, 0xDE, 0x09, 0xB5, 0x17, 0x47, 0xDB,
                       0xBB, 0x55, 0xA4, 0xFE, 0x7F, 0xC2, 0xFC, 0x4E};
    user_data.insert(user_data.end(), 600, 0);
    EXPECT_EQ(Summarized(SeiUnit({{5, user_data}, ActiveFormat(9)})),
              "user_data_unregistered (616 bytes) of 2ca2de09-b517-47db-bb55-a4fe7fc2fc4e; AFD: 9");
    EXPECT_EQ(Inspected(SeiUnit({{5, user_data}}))[0].dump(),
              R"({"payload_type":5,"payload_name":"user_data_unregistered","payload_size":616,)"
              R"("payload_index":4,"user_data_unregistered":)"
              R"({"uuid_iso_iec_11578":"2ca2de09-b517-47db-bb55-a4fe7fc2fc4e"}})");
}

TEST(Sei, ReadsCaptionsOfMoreThan255Bytes) {
    Message captions = Captions('A', 'B');
    captions.payload.insert(captions.payload.end(), 400, 0x80);  // ATSC_reserved_user_data
    EXPECT_EQ(Summarized(SeiUnit({captions, Captions('C', 'D')})),
              "captions: 1, field 1 \"AB\"; captions: 1, field 1 \"CD\"");
}

TEST(Sei, ShowsBrokenMessagesAndGoesOn) {
    Message cut = Captions('A', 'B');
    cut.payload.resize(11);
    const NalUnit unit =
        SeiUnit({cut, {5, Bytes(15, 0)}, {129, {}}, {136, {0x60}}, {1000, {}}, ActiveFormat(9)});
    const std::string summary = Summarized(unit);
    EXPECT_THAT(summary,
                StartsWith("user_data_registered_itu_t_t35 (11 bytes): error: cannot parse cc_data_pkt.; "
                           "user_data_unregistered (15 bytes): error: cannot parse uuid_iso_iec_11578.; "
                           "active_parameter_sets (0 bytes): error: cannot parse num_sps_ids_minus1.; "
                           "time_code (1 byte): error: Failed to parse sei time_code on line "));
    EXPECT_THAT(summary, EndsWith("; reserved_sei_message 1000 (0 bytes); AFD: 9"));
    UnitReader reader;
    EXPECT_TRUE(std::get<Sei>(reader.Read(unit)).HasError());
    const Json json = Inspected(unit);
    EXPECT_EQ(json[0]["error"], "cannot parse cc_data_pkt.");
    EXPECT_EQ(json[4]["payload_type"], 1000);
}

TEST(Sei, NoPrefixOfAUnitIsReadBeyondItsEnd) {
    const Bytes whole = FileBytes(Sample("units/sei-multiple.nal"));
    for (size_t length = 5; length < whole.size(); length++) {
        const NalUnit unit =
            UnitOf(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        UnitReader reader;
        const Sei sei = std::get<Sei>(reader.Read(unit));
        EXPECT_LE(sei.messages.size(), 5U) << length;
        EXPECT_EQ(sei.messages.empty(), length < 8) << length;
    }
}

TEST(Sei, ShowsActiveParameterSets) {
    const Bytes payload = BitString().U(4, 3).U(1, 1).U(1, 0).Ue(1).Ue(2).Ue(9).TrailingBits().Bytes();
    EXPECT_EQ(Summarized(SeiUnit({{129, payload}})), "active_parameter_sets: VPS 3, SPS 2 9");
    EXPECT_EQ(
        Inspected(SeiUnit({{129, payload}}))[0]["active_parameter_sets"].dump(),
        R"({"active_video_parameter_set_id":3,"self_contained_cvs_flag":1,)"
        R"("no_parameter_set_update_flag":0,"num_sps_ids_minus1":1,"active_seq_parameter_set_id":[2,9]})");
    EXPECT_EQ(Summarized(SeiUnit({{129, BitString().U(6, 0).Ue(16).TrailingBits().Bytes()}})),
              "active_parameter_sets (2 bytes): error: num_sps_ids_minus1 is 16, above 15");
}

TEST(Sei, ShowsClockTimestamps) {
    BitString time_code;
    time_code.U(2, 3);
    time_code.U(1, 1).U(1, 0).U(5, 4).U(1, 1).U(2, 0).U(9, 7).U(6, 59).U(6, 8).U(5, 10).U(5, 0);
    time_code.U(1, 0);
    time_code.U(1, 1).U(1, 1).U(5, 0).U(1, 0).U(2, 0).U(9, 24).U(1, 1).U(6, 5).U(1, 0).U(5, 5).U(5, 0x1F);
    const NalUnit unit = SeiUnit({{136, time_code.TrailingBits().Bytes()}});
    EXPECT_EQ(Summarized(unit), "time_code: 10:08:59;07, --:--:05:24 offset -1");
    EXPECT_EQ(
        Inspected(unit)[0]["time_code"].dump(),
        R"({"num_clocks_ts":3,"clock_timestamp_flag":[1,0,1],"units_field_based_flag":[0,null,1],)"
        R"("counting_type":[4,null,0],"full_timestamp_flag":[1,null,0],"discontinuity_flag":[0,null,0],)"
        R"("cnt_drop_flag":[0,null,0],"n_frames":[7,null,24],"seconds_value":[59,null,5],)"
        R"("minutes_value":[8],"hours_value":[10],"time_offset_length":[0,null,5],)"
        R"("seconds_flag":[null,null,1],"minutes_flag":[null,null,0],"time_offset_value":[null,null,-1]})");
    EXPECT_EQ(Summarized(SeiUnit({{136, BitString().U(2, 0).TrailingBits().Bytes()}})), "time_code: none");
}

TEST(Sei, ShowsThatThereIsNoActiveFormat) {
    EXPECT_EQ(Summarized(SeiUnit({{4, {0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x01}}})), "AFD: none");
}

TEST(Sei, SaysWhenANalUnitIsTooLongToBeKept) {
    NalUnit unit = SeiUnit({ActiveFormat(9)});
    unit.size += 1000;
    EXPECT_EQ(Summarized(unit), "AFD: 9; error: only the first 18 of its bytes are read");
}

}  // namespace
}  // namespace h265tool
