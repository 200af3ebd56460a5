#include "h265d/display/expected_display.h"
#include "h265d/display/sub_structures.h"

namespace test {
namespace {

constexpr UINT64 kLargest = 0xFFFF'FFFF;

// Fills the entries with different values.
ExpectedDisplay SubLayer(sub_layer_hrd_parameters_t *slhp, int sub_pic, int cpb_cnt_minus1) {
    ExpectedDisplay expected("_display_sub_layer_hrd_parameters", 6);
    expected.Step("Called. cpb_cnt_minus1=" + std::to_string(cpb_cnt_minus1) + "\n");
    for (int i = 0; i <= cpb_cnt_minus1; i++) {
        const auto n = static_cast<UINT64>(i);
        ENTRY_LINE(expected, *slhp, bit_rate_value_minus1, i, kLargest - n);
        ENTRY_LINE(expected, *slhp, cpb_size_value_minus1, i, 100 + n);
        if (sub_pic) {
            ENTRY_LINE(expected, *slhp, cpb_size_du_value_minus1, i, 200 + n);
            ENTRY_LINE(expected, *slhp, bit_rate_du_value_minus1, i, 300 + n);
        }
        ENTRY_LINE(expected, *slhp, cbr_flag, i, (i + 1) % 2);
    }
    expected.Step("Done.\n");
    return expected;
}

class HrdDisplay : public testing::Test {
 protected:
    void AddPresence(int nal, int vcl) {
        LINE(expected_, hrd_, nal_hrd_parameters_present_flag, nal);
        LINE(expected_, hrd_, vcl_hrd_parameters_present_flag, vcl);
    }

    void AddCommon(int sub_pic) {
        LINE(expected_, hrd_, sub_pic_hrd_params_present_flag, sub_pic);
        if (sub_pic) {
            LINE(expected_, hrd_, tick_divisor_minus2, 255);
            LINE(expected_, hrd_, du_cpb_removal_delay_increment_length_minus1, 31);
            LINE(expected_, hrd_, sub_pic_cpb_params_in_pic_timing_sei_flag, 1);
            LINE(expected_, hrd_, dpb_output_delay_du_length_minus1, 30);
        }
        LINE(expected_, hrd_, bit_rate_scale, 15);
        LINE(expected_, hrd_, cpb_size_scale, 14);
        if (sub_pic)
            LINE(expected_, hrd_, cpb_size_du_scale, 13);
        LINE(expected_, hrd_, initial_cpb_removal_delay_length_minus1, 23);
        LINE(expected_, hrd_, au_cpb_removal_delay_length_minus1, 22);
        LINE(expected_, hrd_, dpb_output_delay_length_minus1, 21);
    }

    void AddSubLayer(int i, int fixed_general, int fixed_within_cvs, int low_delay, UINT64 cpb_cnt_minus1) {
        hrd_.fixed_pic_rate_within_cvs_flag[i] = fixed_within_cvs;
        hrd_.low_delay_hrd_flag[i] = low_delay;
        hrd_.cpb_cnt_minus1[i] = cpb_cnt_minus1;
        ENTRY_LINE(expected_, hrd_, fixed_pic_rate_general_flag, i, fixed_general);
        if (!fixed_general)
            ENTRY_LINE(expected_, hrd_, fixed_pic_rate_within_cvs_flag, i, fixed_within_cvs);
        if (fixed_within_cvs)
            ENTRY_LINE(expected_, hrd_, elemental_duration_in_tc_minus1, i, 2047);
        else
            ENTRY_LINE(expected_, hrd_, low_delay_hrd_flag, i, low_delay);
        if (!low_delay)
            ENTRY_LINE(expected_, hrd_, cpb_cnt_minus1, i, cpb_cnt_minus1);
        const int sub_pic = hrd_.sub_pic_hrd_params_present_flag;
        const int count = static_cast<int>(cpb_cnt_minus1);
        if (hrd_.nal_hrd_parameters_present_flag)
            expected_.Append(SubLayer(&hrd_.s_l_nal_hrd_parameters[i], sub_pic, count));
        if (hrd_.vcl_hrd_parameters_present_flag)
            expected_.Append(SubLayer(&hrd_.s_l_vcl_hrd_parameters[i], sub_pic, count));
    }

    void Expect(int commonInfPresentFlag, int MaxNumSubLayersMinus1) {
        expected_.Step("Done.\n");
        ExpectDisplay(
            hrd_,
            [=](const hrd_h265_t *hrd) { _display_hrd(hrd, commonInfPresentFlag, MaxNumSubLayersMinus1); },
            expected_);
    }

    void SetUp() override { expected_.Step("Called.\n"); }

    hrd_h265_t hrd_{};
    ExpectedDisplay expected_{"_display_hrd", 6};
};

TEST_F(HrdDisplay, NeitherNalNorVclParameters) {
    AddPresence(0, 0);
    AddSubLayer(0, 1, 1, 0, 0);
    Expect(1, 0);
}

TEST_F(HrdDisplay, NalParameters) {
    AddPresence(1, 0);
    AddCommon(0);
    AddSubLayer(0, 0, 1, 0, 2);
    Expect(1, 0);
}

TEST_F(HrdDisplay, VclParameters) {
    AddPresence(0, 1);
    AddCommon(0);
    AddSubLayer(0, 0, 0, 1, 0);
    AddSubLayer(1, 0, 0, 0, 1);
    Expect(1, 1);
}

TEST_F(HrdDisplay, SubPictureParametersOfEightSubLayers) {
    AddPresence(1, 1);
    AddCommon(1);
    for (int i = 0; i < 8; i++)
        AddSubLayer(i, i & 1, i & 1 ? 1 : i >> 1 & 1, i >> 2 & 1, i == 5 ? 31 : static_cast<UINT64>(i % 2));
    Expect(1, 7);
}

TEST_F(HrdDisplay, WithoutTheCommonPartTheRecordStillDecides) {
    hrd_.nal_hrd_parameters_present_flag = 1;
    hrd_.sub_pic_hrd_params_present_flag = 1;
    AddSubLayer(0, 0, 0, 0, 1);
    Expect(0, 0);
}

TEST_F(HrdDisplay, AnyRecordStaysWithinItsArrays) {
    const auto count = [](int byte, int sub_layers_minus1) {
        return MessagesOfFilledRecord<hrd_h265_t>(
            byte, [=](const hrd_h265_t *hrd) { _display_hrd(hrd, 1, sub_layers_minus1); });
    };
    for (const int byte : {0xFF, 0xA5}) {
        const size_t one = count(byte, 0);
        const size_t eight = count(byte, 7);
        EXPECT_GT(eight, one);
        EXPECT_LE(eight, 8 * one);
        EXPECT_EQ(count(byte, 8), eight);
        EXPECT_EQ(count(byte, 0x7FFF'FFFF), eight);
        EXPECT_LT(count(byte, -1), one);
    }
}

TEST_F(HrdDisplay, NullIsReported) {
    ExpectNullIsReported("hrd != NULL", [] { _display_hrd(nullptr, 1, 7); });
}

class SubLayerHrdDisplay : public testing::TestWithParam<int> {};

TEST_P(SubLayerHrdDisplay, PrintsEachCodedPictureBuffer) {
    for (const int cpb_cnt_minus1 : {-1, 0, 1, 31}) {
        sub_layer_hrd_parameters_t slhp{};
        const ExpectedDisplay expected = SubLayer(&slhp, GetParam(), cpb_cnt_minus1);
        ExpectDisplay(
            slhp,
            [&](const sub_layer_hrd_parameters_t *record) {
                _display_sub_layer_hrd_parameters(record, GetParam(), cpb_cnt_minus1);
            },
            expected);
    }
}

TEST_P(SubLayerHrdDisplay, PrintsNoMoreThanThereAre) {
    const size_t lines = GetParam() ? 5 : 3;
    for (const int cpb_cnt_minus1 : {31, 32, 0x7FFF'FFFF}) {
        for (const int byte : {0xFF, 0xA5}) {
            const size_t count = MessagesOfFilledRecord<sub_layer_hrd_parameters_t>(
                byte, [&](const sub_layer_hrd_parameters_t *record) {
                    _display_sub_layer_hrd_parameters(record, GetParam(), cpb_cnt_minus1);
                });
            EXPECT_EQ(count, 2 + 32 * lines);
        }
    }
}

TEST_P(SubLayerHrdDisplay, NullIsReported) {
    ExpectNullIsReported("slhp != NULL", [] { _display_sub_layer_hrd_parameters(nullptr, GetParam(), 3); });
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutSubPictures, SubLayerHrdDisplay, testing::Values(0, 1));

}  // namespace
}  // namespace test
