#include "h265d/rewriting/hrd.h"

#include <gmock/gmock.h>

#include <memory>

#include "h265d/parsing/hrd.h"
#include "support/written_syntax.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class HrdWriting : public testing::Test {
 protected:
    hrd_h265_t &hrd() { return *hrd_; }

    // The bits that are written, as a text of 0 and 1.
    std::string Written(int commonInfPresentFlag, int MaxNumSubLayersMinus1) {
        bitbuffer_t bb{room_, 0, sizeof room_ * 8};
        EXPECT_EQ(_set_hrd_parameters(&bb, commonInfPresentFlag, MaxNumSubLayersMinus1, &hrd()), 0);
        std::string bits;
        for (unsigned int i = 0; i < bb.bit_offset; i++)
            bits += room_[i / 8] >> (7 - i % 8) & 1 ? '1' : '0';
        return bits;
    }

    void ExpectFailure(int MaxNumSubLayersMinus1, const std::vector<std::string> &reports) {
        bitbuffer_t bb{room_, 0, sizeof room_ * 8};
        const TraceCapture trace(3);
        EXPECT_EQ(_set_hrd_parameters(&bb, 1, MaxNumSubLayersMinus1, &hrd()), -1);
        EXPECT_EQ(trace.Errors(), reports);
    }

    // NAL and VCL HRD with every optional element, each value different from its neighbours.
    void FillEverything(int sub_layers, UINT64 cpb_cnt_minus1) {
        Random random(4);
        hrd().nal_hrd_parameters_present_flag = hrd().vcl_hrd_parameters_present_flag = 1;
        hrd().sub_pic_hrd_params_present_flag = 1;
        hrd().tick_divisor_minus2 = 0x81;
        hrd().du_cpb_removal_delay_increment_length_minus1 = 0x11;
        hrd().sub_pic_cpb_params_in_pic_timing_sei_flag = 1;
        hrd().dpb_output_delay_du_length_minus1 = 0x12;
        hrd().bit_rate_scale = 9;
        hrd().cpb_size_scale = 10;
        hrd().cpb_size_du_scale = 11;
        hrd().initial_cpb_removal_delay_length_minus1 = 0x13;
        hrd().au_cpb_removal_delay_length_minus1 = 0x1F;
        hrd().dpb_output_delay_length_minus1 = 0x15;
        for (int i = 0; i < sub_layers; i++) {
            // fixed in general, fixed within the CVS, and neither
            hrd().fixed_pic_rate_general_flag[i] = i % 3 == 0;
            hrd().fixed_pic_rate_within_cvs_flag[i] = i % 3 != 2;
            hrd().elemental_duration_in_tc_minus1[i] = static_cast<UINT64>(1000 + i);
            hrd().cpb_cnt_minus1[i] = cpb_cnt_minus1;
            for (size_t j = 0; j <= cpb_cnt_minus1; j++) {
                for (sub_layer_hrd_parameters_t *slhp :
                     {&hrd().s_l_nal_hrd_parameters[i], &hrd().s_l_vcl_hrd_parameters[i]}) {
                    slhp->bit_rate_value_minus1[j] = Below(&random, 1000);
                    slhp->cpb_size_value_minus1[j] = Below(&random, 1000);
                    slhp->cpb_size_du_value_minus1[j] = Below(&random, 1000);
                    slhp->bit_rate_du_value_minus1[j] = Below(&random, 1000);
                    slhp->cbr_flag[j] = Chance(&random);
                }
            }
        }
    }

 private:
    const std::unique_ptr<hrd_h265_t> hrd_ = std::make_unique<hrd_h265_t>();  // cleared
    unsigned char room_[20000] = {};
};

TEST_F(HrdWriting, WithoutCommonPartOnlyTheSubLayersAreWritten) {
    hrd().sub_pic_hrd_params_present_flag = 1;
    hrd().fixed_pic_rate_within_cvs_flag[0] = 1;
    hrd().elemental_duration_in_tc_minus1[0] = 2;
    hrd().cpb_cnt_minus1[0] = 1;
    EXPECT_EQ(Written(0, 0),
              "0"
              "1"
              "011"
              "010");
    hrd().nal_hrd_parameters_present_flag = 1;  // the record says what a sub-layer has
    hrd().s_l_nal_hrd_parameters[0].cbr_flag[1] = 1;
    EXPECT_EQ(Written(0, 0),
              "0"
              "1"
              "011"
              "010"
              "1111"
              "0"
              "1111"
              "1");
}

TEST_F(HrdWriting, WithNeitherHrdTheCommonPartHasTwoBits) {
    hrd().sub_pic_hrd_params_present_flag = 1;
    hrd().bit_rate_scale = 15;
    EXPECT_EQ(Written(1, 0),
              "00"
              "0"
              "0"
              "0"
              "1");
    EXPECT_EQ(Written(1, 1),
              "00"
              "0001"
              "0001");
    EXPECT_EQ(Written(1, -1), "00");
}

TEST_F(HrdWriting, WithTheGeneralFlagTheRecordDecidesOnTheDuration) {
    hrd().fixed_pic_rate_general_flag[0] = 1;
    EXPECT_EQ(Written(0, 0),
              "1"
              "0"
              "1");  // general flag, low delay, CPB count
    hrd().fixed_pic_rate_within_cvs_flag[0] = 1;
    EXPECT_EQ(Written(0, 0),
              "1"
              "1"
              "1");  // general flag, duration, CPB count
}

TEST_F(HrdWriting, LowDelayOfTheRecordLeavesTheCpbCountOut) {
    hrd().low_delay_hrd_flag[0] = 1;
    hrd().cpb_cnt_minus1[0] = 1;
    EXPECT_EQ(Written(0, 0),
              "0"
              "0"
              "1");
    hrd().fixed_pic_rate_within_cvs_flag[0] = 1;  // not written then, and looked at all the same
    EXPECT_EQ(Written(0, 0),
              "0"
              "1"
              "1");
    hrd().vcl_hrd_parameters_present_flag = 1;  // as many CPBs as the record says
    EXPECT_EQ(Written(0, 0),
              "0"
              "1"
              "1"
              "110"
              "110");
}

TEST_F(HrdWriting, WideValuesAreWrittenWithTheirLow32Bits) {
    hrd().fixed_pic_rate_general_flag[0] = hrd().fixed_pic_rate_within_cvs_flag[0] = 1;
    hrd().nal_hrd_parameters_present_flag = 1;
    hrd().elemental_duration_in_tc_minus1[0] = 0x7'0000'0001;
    hrd().cpb_cnt_minus1[0] = 0x1'0000'0000;
    hrd().s_l_nal_hrd_parameters[0].bit_rate_value_minus1[0] = 0x1'0000'0002;
    EXPECT_EQ(Written(0, 0),
              "1"
              "010"
              "1"
              "011"
              "1"
              "0");
}

TEST_F(HrdWriting, EveryRoomGivesTheReportOfTheFirstElementThatDoesNotFit) {
    FillEverything(3, 1);
    for (const int common : {0, 1}) {
        Syntax syntax;
        AddWrittenHrd(&syntax, hrd(), common, 2);
        SweepRoom(syntax, [&](bitbuffer_t *bb) { return _set_hrd_parameters(bb, common, 2, &hrd()) == 0; });
    }
}

TEST_F(HrdWriting, FillsTheRecord) {
    FillEverything(8, 31);
    Syntax syntax;
    AddWrittenHrd(&syntax, hrd(), true, 7);
    std::vector<unsigned char> bytes(syntax.bits().Bytes().size());
    bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(syntax.bits().size())};
    ASSERT_EQ(_set_hrd_parameters(&bb, 1, 7, &hrd()), 0);
    EXPECT_EQ(bb.bit_offset, bb.num_bits);
    EXPECT_EQ(bytes, syntax.bits().Bytes());
}

TEST_F(HrdWriting, WritesWhatWasParsed) {
    Random random(43);
    const auto filled = std::make_unique<hrd_h265_t>();
    for (int round = 0; round < 1000; round++) {
        SCOPED_TRACE(round);
        const int max_sub_layers_minus1 = static_cast<int>(Below(&random, 8));
        *filled = {};
        FillHrd(filled.get(), max_sub_layers_minus1, &random);
        Syntax syntax;
        AddWrittenHrd(&syntax, *filled, true, max_sub_layers_minus1);
        const std::vector<unsigned char> input = syntax.bits().Bytes();
        std::vector<unsigned char> bytes = input;
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(syntax.bits().size())};
        int present = 0;
        hrd() = {};
        ASSERT_EQ(_parse_hrd(&bb, 1, max_sub_layers_minus1, &present, &hrd()), 0);
        ASSERT_EQ(std::memcmp(&hrd(), filled.get(), sizeof hrd()), 0);
        std::fill(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
        bb.bit_offset = 0;
        ASSERT_EQ(_set_hrd_parameters(&bb, 1, max_sub_layers_minus1, &hrd()), 0);
        ASSERT_EQ(bb.bit_offset, bb.num_bits);
        ASSERT_EQ(bytes, input);
    }
}

// ---- records that cannot be ----------------------------------------------------------------------------

TEST_F(HrdWriting, MoreSubLayersThanTheRecordHoldsFail) {
    for (const int max_sub_layers_minus1 : {8, 255, INT32_MAX})
        ExpectFailure(max_sub_layers_minus1, {Unwritable("fixed_pic_rate_general_flag", 8)});
}

TEST_F(HrdWriting, MoreCpbsThanTheRecordHoldsFail) {
    hrd().nal_hrd_parameters_present_flag = 1;
    for (const UINT64 count : {UINT64{32}, UINT64{1000}, UINT64{INT32_MAX}, UINT64{0x3'0000'0020}}) {
        hrd().cpb_cnt_minus1[0] = count;
        ExpectFailure(0,
                      {Unwritable("bit_rate_value_minus1", 32), Unwritable("sub_layer_hrd_parameters", 0)});
    }
}

// Counts that are negative in 32 bits are no smaller.
TEST_F(HrdWriting, CpbCountsBeyondIntFail) {
    hrd().vcl_hrd_parameters_present_flag = 1;
    for (const UINT64 count : {UINT64{0x80000000}, UINT64{0xFFFFFFFE}}) {
        hrd().cpb_cnt_minus1[0] = count;
        unsigned char room[64] = {};
        bitbuffer_t bb{room, 0, sizeof room * 8};
        const TraceCapture trace(3);
        EXPECT_EQ(_set_hrd_parameters(&bb, 1, 0, &hrd()), -1);
        EXPECT_THAT(trace.Errors(), testing::Not(IsEmpty()));
    }
}

// ---- traces and arguments ------------------------------------------------------------------------------

TEST_F(HrdWriting, TracesEntryAndExit) {
    FillEverything(2, 3);
    const TraceCapture trace;
    Written(1, 1);
    EXPECT_THAT(
        trace.Texts(7),
        ElementsAre("Called. commonInfPresentFlag:1, MaxNumSubLayersMinus1=1\n", "Called. cpb_cnt_minus1=3\n",
                    "Done.\n", "Called. cpb_cnt_minus1=3\n", "Done.\n", "Called. cpb_cnt_minus1=3\n",
                    "Done.\n", "Called. cpb_cnt_minus1=3\n", "Done.\n", "Done.\n"));
    EXPECT_THAT(trace.messages(), SizeIs(10));
    EXPECT_EQ(trace.messages().front().function, "_set_hrd_parameters");
    EXPECT_EQ(trace.messages()[1].function, "_set_sub_layer_hrd_parameters");
    EXPECT_EQ(trace.messages()[2].function, "_set_sub_layer_hrd_parameters");
    EXPECT_EQ(trace.messages().back().function, "_set_hrd_parameters");
    EXPECT_EQ(trace.messages().back().file, "hrd.cpp");
}

TEST_F(HrdWriting, FailuresAreReportedInTheNamesOfBothWriters) {
    FillEverything(1, 0);
    unsigned char room[7] = {};
    bitbuffer_t bb{room, 0, 56};
    const TraceCapture trace;
    EXPECT_EQ(_set_hrd_parameters(&bb, 1, 0, &hrd()), -1);
    ASSERT_THAT(trace.Errors(), SizeIs(1));  // in front of the CPBs
    EXPECT_EQ(trace.messages().back().function, "_set_hrd_parameters");

    Syntax syntax;
    AddWrittenHrd(&syntax, hrd(), true, 0);
    std::vector<unsigned char> bytes = syntax.bits().Bytes();
    bitbuffer_t all_but_one{bytes.data(), 0, static_cast<unsigned int>(syntax.bits().size()) - 1};
    EXPECT_EQ(_set_hrd_parameters(&all_but_one, 1, 0, &hrd()), -1);
    const size_t count = trace.messages().size();
    EXPECT_EQ(trace.messages()[count - 2].function, "_set_sub_layer_hrd_parameters");
    EXPECT_EQ(trace.messages()[count - 2].text, "Failed to set cbr_flag[0].\n");
    EXPECT_EQ(trace.messages()[count - 1].function, "_set_hrd_parameters");
}

TEST_F(HrdWriting, NullArgumentsAreReportedAndFail) {
    unsigned char room[8] = {};
    bitbuffer_t bb{room, 0, 64};
    const TraceCapture trace;
    EXPECT_EQ(_set_hrd_parameters(nullptr, 1, 0, &hrd()), -1);
    EXPECT_EQ(_set_hrd_parameters(&bb, 1, 0, nullptr), -1);
    EXPECT_EQ(_set_sub_layer_hrd_parameters(nullptr, 1, 0, hrd().s_l_nal_hrd_parameters), -1);
    EXPECT_EQ(_set_sub_layer_hrd_parameters(&bb, 1, 0, nullptr), -1);
    const std::string no_cursor = AssertionOf("sps_nalu_bb != NULL");
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(no_cursor, AssertionOf("pHrd != NULL"), no_cursor, AssertionOf("slhp != NULL")));
    EXPECT_THAT(trace.messages(), SizeIs(4));
}

}  // namespace
}  // namespace test
