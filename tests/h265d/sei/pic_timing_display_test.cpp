#include <gmock/gmock.h>

#include "h265.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

class PicTimingDisplay : public testing::Test {
 protected:
    PicTimingDisplay() {
        pt_.pic_struct = 9;
        pt_.source_scan_type = 2;
        pt_.duplicate_flag = 1;
        pt_.au_cpb_removal_delay_minus1 = 0xFFFF'FFFF;
        pt_.pic_dpb_output_delay = 101;
        pt_.pic_dpb_output_du_delay = 102;
        pt_.num_decoding_units_minus1 = 2;
        pt_.du_common_cpb_removal_delay_increment_minus1 = 103;
        for (unsigned int i = 0; i < 510; i++) {
            pt_.num_nalus_in_du_minus1[i] = 1000 + i;
            pt_.du_cpb_removal_delay_increment_minus1[i] = 2000 + i;
        }
    }

    void Show(int delays, int sub_pic, int in_pic_timing) {
        vui_.CpbDpbDelaysPresentFlag = delays;
        vui_.nal_hrd.sub_pic_hrd_params_present_flag = sub_pic;
        vui_.nal_hrd.sub_pic_cpb_params_in_pic_timing_sei_flag = in_pic_timing;
    }

    Lines Displayed() const {
        const TraceCapture trace;
        H265Lib_Display_sei_pictiming(&pt_, &vui_);
        EXPECT_THAT(trace.messages(),
                    Each(AllOf(Field(&TracedMessage::level, 5),
                               Field(&TracedMessage::function, "H265Lib_Display_sei_pictiming"),
                               Field(&TracedMessage::file, "pic_timing_display.cpp"))));
        return trace.Texts(5);
    }

    // The whole output: what is always there, with these lines between.
    static Lines Framed(const Lines &inner) {
        Lines lines = {"SEI pictiming structure:\n", "++++++++++++++++++++++++\n", "pic_struct=9.\n",
                       "source_scan_type=2.\n", "duplicate_flag=1.\n"};
        lines.insert(lines.end(), inner.begin(), inner.end());
        lines.push_back("+++++++++++++++++++++++++++++\n");
        return lines;
    }

    sei_h265_pic_timing_t pt_{};
    vui_h265_t vui_{};
};

TEST_F(PicTimingDisplay, FrameFieldInformationIsAlwaysShown) {
    for (const int present : {0, 1}) {
        vui_.frame_field_info_present_flag = present;
        EXPECT_EQ(Displayed(), Framed({}));
    }
}

TEST_F(PicTimingDisplay, DelaysAndSubPictureDelay) {
    Lines lines = {"au_cpb_removal_delay_minus1=4294967295.\n", "pic_dpb_output_delay=101.\n"};
    Show(1, 0, 0);
    EXPECT_EQ(Displayed(), Framed(lines));
    Show(1, 0, 1);
    EXPECT_EQ(Displayed(), Framed(lines));
    lines.push_back("pic_dpb_output_du_delay=102.\n");
    Show(1, 1, 0);
    EXPECT_EQ(Displayed(), Framed(lines));
    Show(0, 1, 0);
    EXPECT_EQ(Displayed(), Framed({}));
}

TEST_F(PicTimingDisplay, DecodingUnitsWithIncrementsOfTheirOwn) {
    Show(1, 1, 1);
    EXPECT_EQ(
        Displayed(),
        Framed({"au_cpb_removal_delay_minus1=4294967295.\n", "pic_dpb_output_delay=101.\n",
                "pic_dpb_output_du_delay=102.\n", "num_decoding_units_minus1=2.\n",
                "du_common_cpb_removal_delay_flag=0.\n", "num_nalus_in_du_minus1[0]=1000.\n",
                "du_cpb_removal_delay_increment_minus1[0]=2000.\n", "num_nalus_in_du_minus1[1]=1001.\n",
                "du_cpb_removal_delay_increment_minus1[1]=2001.\n", "num_nalus_in_du_minus1[2]=1002.\n"}));
}

TEST_F(PicTimingDisplay, DecodingUnitsWithACommonIncrement) {
    Show(1, 1, 1);
    pt_.du_common_cpb_removal_delay_flag = 1;
    EXPECT_EQ(Displayed(), Framed({"au_cpb_removal_delay_minus1=4294967295.\n", "pic_dpb_output_delay=101.\n",
                                   "pic_dpb_output_du_delay=102.\n", "num_decoding_units_minus1=2.\n",
                                   "du_common_cpb_removal_delay_flag=1.\n",
                                   "du_common_cpb_removal_delay_increment_minus1=103.\n",
                                   "num_nalus_in_du_minus1[0]=1000.\n", "num_nalus_in_du_minus1[1]=1001.\n",
                                   "num_nalus_in_du_minus1[2]=1002.\n"}));
}

TEST_F(PicTimingDisplay, CountsBeyondTheRecordStopAtItsEnd) {
    Show(1, 1, 1);
    const struct {
        UINT64 count_minus1;
        size_t units;
        size_t increments;
    } cases[] = {{508, 509, 508}, {509, 510, 509}, {510, 510, 510}, {599, 510, 510}, {UINT64_MAX, 510, 510}};
    for (const auto &[count_minus1, units, increments] : cases) {
        pt_.num_decoding_units_minus1 = count_minus1;
        const Lines lines = Displayed();
        ASSERT_EQ(lines.size(), Framed({}).size() + 5 + units + increments) << count_minus1;
        const bool last_has_increment = units == increments;
        EXPECT_EQ(
            lines[lines.size() - 2],
            (last_has_increment ? "du_cpb_removal_delay_increment_minus1[" : "num_nalus_in_du_minus1[") +
                std::to_string(units - 1) +
                "]=" + std::to_string((last_has_increment ? 2000 : 1000) + units - 1) + ".\n");
    }
}

TEST_F(PicTimingDisplay, Level4PrintsNothing) {
    Show(1, 1, 1);
    for (const int common : {0, 1}) {
        pt_.du_common_cpb_removal_delay_flag = common;
        const TraceCapture trace(4);
        H265Lib_Display_sei_pictiming(&pt_, &vui_);
        EXPECT_THAT(trace.messages(), IsEmpty());
    }
}

TEST_F(PicTimingDisplay, NullPointersPrintNothing) {
    const TraceCapture trace;
    H265Lib_Display_sei_pictiming(nullptr, &vui_);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pPt != NULL")));
    H265Lib_Display_sei_pictiming(&pt_, nullptr);
    EXPECT_THAT(trace.Texts(5), IsEmpty());
}

}  // namespace
}  // namespace test
