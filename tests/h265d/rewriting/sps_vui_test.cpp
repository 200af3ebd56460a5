// Replacing the VUI of an SPS: what differs from the rewriting of the whole SPS.

#include <gmock/gmock.h>

#include "h265d/rewriting/sps.h"
#include "support/samples.h"
#include "support/sps_rewriting.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SpsVuiReplacement : public testing::Test {
 protected:
    Bytes Replaced() const { return kSpsVuiReplacement.Rewritten(input_.nal, *input_.sps); }

    ParsedSps input_{SampleNalUnits("units/sps-heavy.nal", kSpsNut).front()};
};

TEST_F(SpsVuiReplacement, TakesNothingButTheVuiFromTheRecord) {
    sps_h265_t &sps = *input_.sps;
    sps.ptl.general_progressive_source_flag ^= 1;
    sps.ptl.general_interlaced_source_flag ^= 1;
    sps.pic_width_in_luma_samples = 1;
    sps.pic_height_in_luma_samples = 2;
    sps.conformance_window_flag = 0;
    sps.conf_win_left_offset = 3;
    // positions that are not used
    sps.ptl.general_scantype_bitoffset = sps.before_pic_num_samples_offset = -1;
    EXPECT_EQ(Replaced(), input_.nal);
}

TEST_F(SpsVuiReplacement, TimingWithoutHrdAdds66Bits) {
    BitString extension;
    extension.U(1, 1).U(4, 0).U(4, 5).U(20, 0xABCDE);
    const ParsedSps input(SpsWithTail(extension));
    vui_h265_t &vui = input.sps->vui;
    vui.vui_timing_info_present_flag = 1;
    vui.vui_num_units_in_tick = 1001;
    vui.vui_time_scale = 60000;
    const ParsedSps result(kSpsVuiReplacement.Rewritten(input.nal, *input.sps));
    EXPECT_EQ(result.sps->sps_extension_present_offset, input.sps->sps_extension_present_offset + 66);
    EXPECT_EQ(result.sps->vui.vui_num_units_in_tick, 1001u);
    EXPECT_EQ(result.sps->vui.vui_time_scale, 60000u);

    // the flag, the timing, and then the input from the bit behind its flag on, and padding
    const size_t flag = static_cast<size_t>(input.sps->vui_parameters_present_offset) + 9;
    BitString expected = input.bits.Prefix(flag);
    expected.U(1, 1).U(32, 1001).U(32, 60000).U(2, 0);
    for (size_t i = flag + 1; i < input.bits.size(); i++)
        expected.U(1, input.bits[i]);
    EXPECT_EQ(result.bits.Bytes(), expected.Bytes());
}

TEST_F(SpsVuiReplacement, WithoutVuiItFailsSilently) {
    for (const int flag : {0, 2}) {
        input_.sps->vui_parameters_present_flag = flag;
        unsigned char *buffer = input_.nal.data();
        UINT length = 77;
        TraceCapture trace;
        EXPECT_EQ(H265Lib_Set_sps_vui_parameters_NAL(input_.nal.data(),
                                                     static_cast<unsigned int>(input_.nal.size()),
                                                     input_.sps.get(), &buffer, &length),
                  FALSE);
        EXPECT_EQ(buffer, nullptr);
        EXPECT_EQ(length, 0u);
        EXPECT_THAT(trace.Assertions(), IsEmpty());
        EXPECT_THAT(trace.Texts(7), ElementsAre(testing::StartsWith("Called, new_sps_nalu_bb:0x"), "Done.\n",
                                                "Done, bRetCode:\"FALSE\".\n"));
        EXPECT_THAT(trace.Errors(), ElementsAre("Failed to set vui parameters SPS NAL!\n"));
    }
}

TEST_F(SpsVuiReplacement, TracesItsStepsAndNoSuccess) {
    const ParsedSps input(SpsWithTail(BitString().U(1, 0)));
    const TraceCapture trace(7);
    ASSERT_EQ(kSpsVuiReplacement.Rewritten(input.nal, *input.sps), input.nal);
    const std::vector<std::string> texts = trace.Texts(7);
    ASSERT_EQ(texts.size(), 6u);
    EXPECT_THAT(texts[0],
                testing::MatchesRegex("Called, new_sps_nalu_bb:0x[0-9a-f]+, NewSpsSodbLength:1768.\n"));
    EXPECT_THAT(texts[1], testing::StartsWith("SpsSodbLength bytes:"));
    EXPECT_THAT(texts[2], testing::StartsWith("num_bits:"));
    EXPECT_EQ(texts[3], "new_sps_nal_bb has bitstream_restriction_flag=0.\n");
    EXPECT_THAT(texts[4], testing::StartsWith("Before Trailing bits, "));
    EXPECT_THAT(texts[5], testing::StartsWith("Final new SPS num_bits:"));
    EXPECT_EQ(trace.messages().front().function, "_set_sps_vui_parameters");
    EXPECT_EQ(trace.messages().front().file, "sps_vui.cpp");
}

TEST_F(SpsVuiReplacement, AFailureOfTheRewritingTracesItsExit) {
    input_.sps->vui_parameters_present_offset = -1;
    const TraceCapture trace(7);
    EXPECT_THAT(Replaced(), IsEmpty());
    EXPECT_THAT(trace.Errors(),
                ElementsAre("Failed to get -1 bits as string.\n", "Failed to set vui parameters SPS NAL!\n"));
    EXPECT_EQ(trace.messages()[1].function, "_set_sps_vui_parameters");
    EXPECT_EQ(trace.messages()[2].text, "Done.\n");
    EXPECT_EQ(trace.messages()[2].function, "_set_sps_vui_parameters");
}

TEST_F(SpsVuiReplacement, NullArgumentsAreReportedAndFail) {
    unsigned char *buffer = input_.nal.data();
    UINT length = 77;
    const unsigned int size = static_cast<unsigned int>(input_.nal.size());
    bitbuffer_t bb{};
    TraceCapture trace(3);
    EXPECT_EQ(H265Lib_Set_sps_vui_parameters_NAL(input_.nal.data(), size, input_.sps.get(), nullptr, &length),
              FALSE);
    EXPECT_EQ(H265Lib_Set_sps_vui_parameters_NAL(input_.nal.data(), size, input_.sps.get(), &buffer, nullptr),
              FALSE);
    EXPECT_EQ(buffer, input_.nal.data());
    EXPECT_EQ(length, 77u);
    EXPECT_EQ(H265Lib_Set_sps_vui_parameters_NAL(nullptr, size, input_.sps.get(), &buffer, &length), FALSE);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(_set_sps_vui_parameters(nullptr, 1, input_.sps.get(), &bb, 257), -1);
    EXPECT_EQ(_set_sps_vui_parameters(&bb, 1, nullptr, &bb, 257), -1);
    EXPECT_EQ(_set_sps_vui_parameters(&bb, 1, input_.sps.get(), nullptr, 257), -1);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("ppNewSpsBuffer != NULL"), AssertionOf("pNewSPSLength != NULL"),
                            AssertionOf("pBuffer != NULL"), AssertionOf("pBuffer != NULL"),
                            AssertionOf("sps_nalu_bb != NULL"), AssertionOf("sps != NULL"),
                            AssertionOf("new_sps_nalu_bb != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to get NAL type offset from pBuffer:(nil).\n"));
}

TEST_F(SpsVuiReplacement, AMissingRecordIsReportedWhereItIsUsed) {
    unsigned char *buffer = input_.nal.data();
    UINT length = 77;
    const TraceCapture trace(3);
    EXPECT_EQ(H265Lib_Set_sps_vui_parameters_NAL(
                  input_.nal.data(), static_cast<unsigned int>(input_.nal.size()), nullptr, &buffer, &length),
              FALSE);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("sps != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to set vui parameters SPS NAL!\n"));
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(length, 0u);
}

}  // namespace
}  // namespace test
