#include "h265d/rewriting/vui.h"

#include <gmock/gmock.h>

#include <memory>

#include "h265d/parsing/vui.h"
#include "support/written_syntax.h"

namespace test {
namespace {

using testing::ElementsAre;

class VuiWriting : public testing::Test {
 protected:
    VuiWriting() { sps().vui_parameters_present_flag = 1; }

    sps_h265_t &sps() { return *sps_; }

    void Fill(Random *random, unsigned char max_sub_layers_minus1) {
        sps().vui = {};
        sps().sps_max_sub_layers_minus1 = max_sub_layers_minus1;
        FillVui(&sps().vui, max_sub_layers_minus1, random);
    }

    // Everything on, with one sub-layer.
    void SwitchOn(Random *random) {
        vui_h265_t &vui = sps().vui;
        do
            Fill(random, 0);
        while (!vui.vui_hrd_parameters_present_flag || !vui.vui_poc_proportional_to_timing_flag ||
               vui.aspect_ratio_idc != 255 || !vui.overscan_info_present_flag ||
               !vui.colour_description_present_flag || !vui.chroma_loc_info_present_flag ||
               !vui.default_display_window_flag || !vui.bitstream_restriction_flag);
    }

    std::vector<unsigned char> Written() {
        std::vector<unsigned char> bytes(2000);
        bitbuffer_t bb{bytes.data(), 0, 16000};
        EXPECT_EQ(SetVui(&bb, &sps()), 0);
        bytes.resize((bb.bit_offset + 7) / 8);
        return bytes;
    }

 private:
    const std::unique_ptr<sps_h265_t> sps_ = std::make_unique<sps_h265_t>();
};

TEST_F(VuiWriting, AnEmptyVuiHasElevenBits) {
    sps().vui.aspect_ratio_idc = 255;  // what a flag of 0 leaves out is not looked at
    sps().vui.vui_hrd_parameters_present_flag = 1;
    sps().vui.colour_description_present_flag = 1;
    EXPECT_THAT(Written(), ElementsAre(0x80, 0));
    Syntax syntax;
    AddWrittenVui(&syntax, sps());
    EXPECT_EQ(syntax.bits().size(), 11u);
}

TEST_F(VuiWriting, TheSarIsWrittenWithTheExtendedAspectRatioAlone) {
    sps().vui.aspect_ratio_info_present_flag = 1;
    sps().vui.sar_width = 0x1234;
    sps().vui.sar_height = 0xABCD;
    sps().vui.aspect_ratio_idc = 254;
    EXPECT_THAT(Written(), ElementsAre(0xC0 | 254 >> 2, 0x80, 0));
    sps().vui.aspect_ratio_idc = IH265ENC_ASPECTRATIO_EXTENDED;
    EXPECT_THAT(Written(), ElementsAre(0xFF, 0xC0 | 0x1234 >> 10, 0x1234 >> 2 & 0xFF, 0xABCD >> 10,
                                       0xABCD >> 2 & 0xFF, 0xABCD << 6 & 0xFF, 0));
}

TEST_F(VuiWriting, TimingOf1001And60000Takes66BitsMore) {
    sps().vui.vui_num_units_in_tick = 0x5'0000'03E9;  // the low 32 bits of both
    sps().vui.vui_time_scale = 0x6'0000'EA60;
    sps().vui.vui_timing_info_present_flag = 1;
    EXPECT_THAT(Written(), ElementsAre(0x80, 0x40, 0, 0, 0x03E9 >> 2, 0x03E9 << 6 & 0xFF, 0, 0xEA60 >> 10,
                                       0xEA60 >> 2 & 0xFF, 0));
}

TEST_F(VuiWriting, EveryRoomGivesTheReportOfTheFirstElementThatDoesNotFit) {
    Random random(44);
    SwitchOn(&random);
    for (int round = 0; round < 20; round++) {
        SCOPED_TRACE(round);
        Syntax syntax;
        AddWrittenVui(&syntax, sps());
        SweepRoom(syntax, [&](bitbuffer_t *bb) { return SetVui(bb, &sps()) == 0; });
        if (HasFatalFailure())
            return;
        Fill(&random, static_cast<unsigned char>(Below(&random, 2)));
    }
}

TEST_F(VuiWriting, WritesWhatWasParsed) {
    Random random(45);
    const auto parsed = std::make_unique<vui_h265_t>();
    for (int round = 0; round < 2000; round++) {
        SCOPED_TRACE(round);
        Fill(&random, static_cast<unsigned char>(Below(&random, 7)));
        Syntax syntax;
        AddWrittenVui(&syntax, sps());
        std::vector<unsigned char> bytes = syntax.bits().Bytes();
        ASSERT_EQ(Written(), bytes);
        bitbuffer_t bb{bytes.data(), 1, static_cast<unsigned int>(syntax.bits().size())};
        *parsed = sps().vui;  // what is not coded stays
        ASSERT_EQ(_parse_vui_parameters(&bb, sps().sps_max_sub_layers_minus1, parsed.get()), 0);
        ASSERT_EQ(bb.bit_offset, bb.num_bits);
        sps().vui = *parsed;
        ASSERT_EQ(Written(), syntax.bits().Bytes());
    }
}

TEST_F(VuiWriting, TracesTheRestrictionFlag) {
    for (const int flag : {0, 1}) {
        sps().vui.bitstream_restriction_flag = flag;
        const TraceCapture trace;
        Written();
        EXPECT_THAT(
            trace.Texts(7),
            ElementsAre("new_sps_nal_bb has bitstream_restriction_flag=" + std::to_string(flag) + ".\n"));
    }
}

TEST_F(VuiWriting, MoreSubLayersThanTheHrdHoldsFail) {
    vui_h265_t &vui = sps().vui;
    vui.vui_timing_info_present_flag = vui.vui_hrd_parameters_present_flag = 1;
    sps().sps_max_sub_layers_minus1 = 8;
    unsigned char room[64] = {};
    bitbuffer_t bb{room, 0, sizeof room * 8};
    const TraceCapture trace(3);
    EXPECT_EQ(SetVui(&bb, &sps()), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to set fixed_pic_rate_general_flag[8].\n",
                                            "Failed to set hrd parameters!\n"));
}

}  // namespace
}  // namespace test
