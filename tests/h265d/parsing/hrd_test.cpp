#include "h265d/parsing/hrd.h"

#include <gmock/gmock.h>

#include "support/fields.h"
#include "support/syntax.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

// The ways in which a sub-layer tells its picture rate.
enum Rate { kFixedGeneral, kFixedWithinCvs, kLowDelay, kNotFixed };

class HrdParameters : public testing::Test {
 protected:
    void PresentFlags(int nal, int vcl) {
        syntax_.Flag(nal, FIELD(hrd_, nal_hrd_parameters_present_flag))
            .Flag(vcl, FIELD(hrd_, vcl_hrd_parameters_present_flag));
    }

    // What follows the present flags when one of them is set.
    void CommonPart(bool sub_pic) {
        syntax_.Flag(sub_pic, FIELD(hrd_, sub_pic_hrd_params_present_flag));
        if (sub_pic)
            syntax_.U(8, 0x81, FIELD(hrd_, tick_divisor_minus2))
                .U(5, 0x11, FIELD(hrd_, du_cpb_removal_delay_increment_length_minus1))
                .Flag(1, FIELD(hrd_, sub_pic_cpb_params_in_pic_timing_sei_flag))
                .U(5, 0x12, FIELD(hrd_, dpb_output_delay_du_length_minus1));
        syntax_.U(4, 0x9, FIELD(hrd_, bit_rate_scale)).U(4, 0xA, FIELD(hrd_, cpb_size_scale));
        if (sub_pic)
            syntax_.U(4, 0xB, FIELD(hrd_, cpb_size_du_scale));
        syntax_.U(5, 0x13, FIELD(hrd_, initial_cpb_removal_delay_length_minus1))
            .U(5, 0x1F, FIELD(hrd_, au_cpb_removal_delay_length_minus1))
            .U(5, 0x15, FIELD(hrd_, dpb_output_delay_length_minus1));
    }

    // Sub-layer i up to its CPBs. With a fixed rate, the record's low_delay_hrd_flag has to be 0 beforehand.
    void SubLayer(int i, Rate rate, uint64_t cpb_cnt_minus1) {
        syntax_.Flag(rate == kFixedGeneral, ENTRY(hrd_, fixed_pic_rate_general_flag, i));
        if (rate != kFixedGeneral)
            syntax_.Flag(rate == kFixedWithinCvs, ENTRY(hrd_, fixed_pic_rate_within_cvs_flag, i));
        if (rate == kFixedGeneral || rate == kFixedWithinCvs) {
            syntax_.Ue(static_cast<uint64_t>(1000 + i), ENTRY(hrd_, elemental_duration_in_tc_minus1, i));
            fixed_rates_.push_back(i);
        } else {
            syntax_.Flag(rate == kLowDelay, ENTRY(hrd_, low_delay_hrd_flag, i));
        }
        if (rate != kLowDelay)
            syntax_.Ue(cpb_cnt_minus1, ENTRY(hrd_, cpb_cnt_minus1, i));
    }

    // The elements of one sub_layer_hrd_parameters( ), each with a value of its own.
    void Cpbs(int count, bool sub_pic, sub_layer_hrd_parameters_t *slhp) {
        for (int i = 0; i < count; i++) {
            next_value_ += 3;
            syntax_.Ue(next_value_, ENTRY(*slhp, bit_rate_value_minus1, i))
                .Ue(0xFFFFFFFF, ENTRY(*slhp, cpb_size_value_minus1, i));
            if (sub_pic)
                syntax_.Ue(next_value_ + 1, ENTRY(*slhp, cpb_size_du_value_minus1, i))
                    .Ue(next_value_ + 2, ENTRY(*slhp, bit_rate_du_value_minus1, i));
            syntax_.Flag(i % 2, ENTRY(*slhp, cbr_flag, i));
        }
    }

    void Nested(int count, bool sub_pic, sub_layer_hrd_parameters_t *slhp) {
        syntax_.Enter("cannot parse sub_layer_hrd_parameters.\n");
        Cpbs(count, sub_pic, slhp);
        syntax_.Leave();
    }
    void Nal(int i, int count, bool sub_pic) { Nested(count, sub_pic, &hrd_.s_l_nal_hrd_parameters[i]); }
    void Vcl(int i, int count, bool sub_pic) { Nested(count, sub_pic, &hrd_.s_l_vcl_hrd_parameters[i]); }

    // Cuts the structure at every bit; the last parse is the one of the whole. `prepare` sets fields of the
    // record beforehand.
    void Sweep(int commonInfPresentFlag, int MaxNumSubLayersMinus1, const std::function<void()> &prepare) {
        syntax_.SweepTruncations(&hrd_, [&](bitbuffer_t *bb, hrd_h265_t *hrd) {
            prepare();
            CpbDpbDelaysPresentFlag_ = -77;
            const bool parsed = _parse_hrd(bb, commonInfPresentFlag, MaxNumSubLayersMinus1,
                                           &CpbDpbDelaysPresentFlag_, hrd) == 0;
            EXPECT_NE(CpbDpbDelaysPresentFlag_, -77);
            EXPECT_TRUE(!parsed || bb->bit_offset == syntax_.bits().size());
            return parsed;
        });
    }
    void Sweep(int commonInfPresentFlag, int MaxNumSubLayersMinus1) {
        Sweep(commonInfPresentFlag, MaxNumSubLayersMinus1, [this] { NoLowDelay(); });
    }

    void NoLowDelay() {
        for (const int i : fixed_rates_)
            hrd_.low_delay_hrd_flag[i] = 0;
    }

    static void ExpectUntouched(const sub_layer_hrd_parameters_t &slhp) {
        EXPECT_THAT(slhp.bit_rate_value_minus1, Each(PrefilledValue<UINT64>()));
        EXPECT_THAT(slhp.cpb_size_value_minus1, Each(PrefilledValue<UINT64>()));
        EXPECT_THAT(slhp.cpb_size_du_value_minus1, Each(PrefilledValue<UINT64>()));
        EXPECT_THAT(slhp.bit_rate_du_value_minus1, Each(PrefilledValue<UINT64>()));
        EXPECT_THAT(slhp.cbr_flag, Each(PrefilledValue<int>()));
    }

    Syntax syntax_;
    hrd_h265_t hrd_;
    std::vector<int> fixed_rates_;  // the sub-layers whose low_delay_hrd_flag is not coded
    int CpbDpbDelaysPresentFlag_ = -77;
    uint64_t next_value_ = 0;
};

TEST_F(HrdParameters, WithoutCommonPartTheFlagsOfTheRecordDecide) {
    SubLayer(0, kFixedGeneral, 1);
    Vcl(0, 2, true);
    Sweep(0, 0, [this] {
        NoLowDelay();
        hrd_.nal_hrd_parameters_present_flag = 0;
        hrd_.vcl_hrd_parameters_present_flag = 1;
        hrd_.sub_pic_hrd_params_present_flag = 1;
    });
    EXPECT_EQ(CpbDpbDelaysPresentFlag_, 0);
    EXPECT_EQ(hrd_.vcl_hrd_parameters_present_flag, 1);
    EXPECT_EQ(hrd_.bit_rate_scale, kPrefill);
    EXPECT_EQ(hrd_.au_cpb_removal_delay_length_minus1, kPrefill);
    ExpectUntouched(hrd_.s_l_nal_hrd_parameters[0]);
}

TEST_F(HrdParameters, WithoutCommonPartAndFlagsThereAreNoCpbs) {
    SubLayer(0, kNotFixed, 3);
    Sweep(0, 0, [this] { hrd_.nal_hrd_parameters_present_flag = hrd_.vcl_hrd_parameters_present_flag = 0; });
    EXPECT_EQ(CpbDpbDelaysPresentFlag_, 0);
    ExpectUntouched(hrd_.s_l_nal_hrd_parameters[0]);
    ExpectUntouched(hrd_.s_l_vcl_hrd_parameters[0]);
}

TEST_F(HrdParameters, NeitherNalNorVclEndsTheCommonPart) {
    PresentFlags(0, 0);
    SubLayer(0, kFixedWithinCvs, 2);
    Sweep(1, 0);
    EXPECT_EQ(CpbDpbDelaysPresentFlag_, 0);
    EXPECT_EQ(hrd_.sub_pic_hrd_params_present_flag, PrefilledValue<int>());
    EXPECT_EQ(hrd_.dpb_output_delay_length_minus1, kPrefill);
    ExpectUntouched(hrd_.s_l_nal_hrd_parameters[0]);
    ExpectUntouched(hrd_.s_l_vcl_hrd_parameters[0]);
}

TEST_F(HrdParameters, NalAlone) {
    PresentFlags(1, 0);
    CommonPart(false);
    SubLayer(0, kFixedGeneral, 0);
    Nal(0, 1, false);
    Sweep(1, 0);
    EXPECT_EQ(CpbDpbDelaysPresentFlag_, 1);
    EXPECT_EQ(hrd_.tick_divisor_minus2, kPrefill);
    EXPECT_EQ(hrd_.cpb_size_du_scale, kPrefill);
    EXPECT_EQ(hrd_.s_l_nal_hrd_parameters[0].cpb_size_du_value_minus1[0], PrefilledValue<UINT64>());
    EXPECT_EQ(hrd_.s_l_nal_hrd_parameters[0].bit_rate_value_minus1[1], PrefilledValue<UINT64>());
    ExpectUntouched(hrd_.s_l_nal_hrd_parameters[1]);
    ExpectUntouched(hrd_.s_l_vcl_hrd_parameters[0]);
}

TEST_F(HrdParameters, VclAlone) {
    PresentFlags(0, 1);
    CommonPart(false);
    SubLayer(0, kFixedGeneral, 1);
    Vcl(0, 2, false);
    Sweep(1, 0);
    EXPECT_EQ(CpbDpbDelaysPresentFlag_, 1);
    ExpectUntouched(hrd_.s_l_nal_hrd_parameters[0]);
}

TEST_F(HrdParameters, NalStandsInFrontOfVclInEachSubLayer) {
    PresentFlags(1, 1);
    CommonPart(false);
    for (int i = 0; i <= 1; i++) {
        SubLayer(i, kFixedGeneral, 1);
        Nal(i, 2, false);
        Vcl(i, 2, false);
    }
    Sweep(1, 1);
    EXPECT_EQ(CpbDpbDelaysPresentFlag_, 1);
}

TEST_F(HrdParameters, SubPictureParameters) {
    PresentFlags(1, 1);
    CommonPart(true);
    SubLayer(0, kNotFixed, 1);
    Nal(0, 2, true);
    Vcl(0, 2, true);
    Sweep(1, 0);
}

TEST_F(HrdParameters, AFixedRateInGeneralIsOneWithinTheSequence) {
    PresentFlags(0, 0);
    SubLayer(0, kFixedGeneral, 0);
    Sweep(1, 0);
    EXPECT_EQ(hrd_.fixed_pic_rate_within_cvs_flag[0], 1);
    EXPECT_EQ(hrd_.fixed_pic_rate_within_cvs_flag[1], PrefilledValue<int>());
    EXPECT_EQ(hrd_.low_delay_hrd_flag[0], 0);
}

TEST_F(HrdParameters, LowDelayMeansOneCpb) {
    PresentFlags(1, 1);
    CommonPart(false);
    SubLayer(0, kLowDelay, 0);
    Nal(0, 1, false);
    Vcl(0, 1, false);
    Sweep(1, 0);
    EXPECT_EQ(hrd_.cpb_cnt_minus1[0], 0u);
    EXPECT_EQ(hrd_.elemental_duration_in_tc_minus1[0], PrefilledValue<UINT64>());
}

TEST_F(HrdParameters, ALowDelayFlagThatIsNotReadIsThatOfTheRecord) {
    PresentFlags(1, 0);
    CommonPart(false);
    for (int i = 0; i <= 1; i++) {
        syntax_.Flag(i, ENTRY(hrd_, fixed_pic_rate_general_flag, i));
        if (i == 0)
            syntax_.Flag(1, ENTRY(hrd_, fixed_pic_rate_within_cvs_flag, i));
        syntax_.Ue(40, ENTRY(hrd_, elemental_duration_in_tc_minus1, i));
        Nal(i, 1, false);
    }
    Sweep(1, 1, [] {});  // the prefill is not 0
    EXPECT_THAT(std::vector<UINT64>(hrd_.cpb_cnt_minus1, hrd_.cpb_cnt_minus1 + 3),
                ElementsAre(0, 0, PrefilledValue<UINT64>()));
    EXPECT_EQ(hrd_.low_delay_hrd_flag[0], PrefilledValue<int>());
}

TEST_F(HrdParameters, SubLayersDifferInRateAndCpbs) {
    PresentFlags(0, 1);
    CommonPart(true);
    const Rate rates[] = {kFixedGeneral, kFixedWithinCvs, kLowDelay, kNotFixed};
    for (int i = 0; i <= 3; i++) {
        SubLayer(i, rates[i], static_cast<uint64_t>(i));
        Vcl(i, rates[i] == kLowDelay ? 1 : i + 1, true);
    }
    Sweep(1, 3);
}

TEST_F(HrdParameters, EightSubLayersFillTheArrays) {
    PresentFlags(1, 0);
    CommonPart(false);
    for (int i = 0; i <= 7; i++) {
        SubLayer(i, i % 2 == 0 ? kNotFixed : kFixedGeneral, 0);
        Nal(i, 1, false);
    }
    Sweep(1, 7);
}

TEST_F(HrdParameters, ThirtyTwoCpbsFillTheArrays) {
    PresentFlags(1, 0);
    CommonPart(true);
    SubLayer(0, kFixedGeneral, 31);
    Nal(0, 32, true);
    Sweep(1, 0);
}

// Parses what syntax_ holds, with level 8 traced, into a prefilled record without low delay.
class HrdParametersOnce : public HrdParameters {
 protected:
    int Parse(int MaxNumSubLayersMinus1) {
        std::vector<unsigned char> bytes = syntax_.bits().Bytes();
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(syntax_.bits().size())};
        std::memset(&hrd_, kPrefill, sizeof hrd_);
        NoLowDelay();
        trace_.Clear();
        return _parse_hrd(&bb, 1, MaxNumSubLayersMinus1, &CpbDpbDelaysPresentFlag_, &hrd_);
    }

    TraceCapture trace_;
};

TEST_F(HrdParametersOnce, MoreCpbsThanTheStandardPermitsFailAsUnreadable) {
    for (const uint64_t cpb_cnt_minus1 : {32u, 0x7FFFFFFFu, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(cpb_cnt_minus1);
        syntax_ = {};
        PresentFlags(1, 1);
        CommonPart(false);
        SubLayer(0, kLowDelay, 0);
        Nal(0, 1, false);
        Vcl(0, 1, false);
        SubLayer(1, kFixedGeneral, cpb_cnt_minus1);
        syntax_.Rest(BitString().U(64, ~uint64_t{0}).U(64, ~uint64_t{0}));
        EXPECT_EQ(Parse(1), -1);
        EXPECT_THAT(trace_.Errors(), ElementsAre("cannot parse cpb_cnt_minus1[1].\n"));
        EXPECT_EQ(hrd_.cpb_cnt_minus1[1], PrefilledValue<UINT64>());
        ExpectUntouched(hrd_.s_l_nal_hrd_parameters[1]);
        ExpectUntouched(hrd_.s_l_vcl_hrd_parameters[1]);
    }
}

TEST_F(HrdParametersOnce, MoreSubLayersThanTheArraysHoldAreRefused) {
    PresentFlags(0, 0);
    for (int i = 0; i <= 7; i++)
        SubLayer(i, kNotFixed, 0);
    syntax_.Rest(BitString().U(64, ~uint64_t{0}));
    EXPECT_EQ(Parse(8), -1);
    EXPECT_THAT(trace_.Errors(), IsEmpty());
    EXPECT_EQ(Parse(7), 0);
}

TEST_F(HrdParametersOnce, TracesEntryAndExitOfBothStructures) {
    PresentFlags(1, 1);
    CommonPart(false);
    SubLayer(0, kNotFixed, 2);
    Nal(0, 3, false);
    Vcl(0, 3, false);
    SubLayer(1, kLowDelay, 0);
    Nal(1, 1, false);
    Vcl(1, 1, false);
    ASSERT_EQ(Parse(1), 0);
    EXPECT_THAT(trace_.Texts(7),
                ElementsAre("Called. MaxNumSubLayersMinus1=1\n", "Called. cpb_cnt_minus1=2\n", "Done.\n",
                            "Called. cpb_cnt_minus1=2\n", "Done.\n", "Called. cpb_cnt_minus1=0\n", "Done.\n",
                            "Called. cpb_cnt_minus1=0\n", "Done.\n", "Done.\n"));
    ASSERT_EQ(trace_.messages().size(), 10u);
    for (size_t i = 0; i < 10; i++) {
        EXPECT_EQ(trace_.messages()[i].function,
                  i == 0 || i == 9 ? "_parse_hrd" : "_parse_sub_layer_hrd_parameters");
        EXPECT_EQ(trace_.messages()[i].file, "hrd.cpp");
    }
}

TEST_F(HrdParametersOnce, AFailureIsReportedByBothStructuresAndNoExitTraced) {
    PresentFlags(0, 1);
    CommonPart(false);
    SubLayer(0, kFixedGeneral, 0);
    EXPECT_EQ(Parse(0), -1);
    EXPECT_THAT(trace_.Texts(7),
                ElementsAre("Called. MaxNumSubLayersMinus1=0\n", "Called. cpb_cnt_minus1=0\n"));
    ASSERT_THAT(trace_.Errors(), ElementsAre("cannot parse bit_rate_value_minus1[0].\n",
                                             "cannot parse sub_layer_hrd_parameters.\n"));
    EXPECT_EQ(trace_.messages()[2].function, "_parse_sub_layer_hrd_parameters");
    EXPECT_EQ(trace_.messages()[3].function, "_parse_hrd");
}

TEST_F(HrdParametersOnce, NullArgumentsAreReportedAndFail) {
    bitbuffer_t bb{};
    EXPECT_EQ(_parse_hrd(nullptr, 1, 0, &CpbDpbDelaysPresentFlag_, &hrd_), -1);
    EXPECT_EQ(_parse_hrd(&bb, 1, 0, nullptr, &hrd_), -1);
    EXPECT_EQ(_parse_hrd(&bb, 1, 0, &CpbDpbDelaysPresentFlag_, nullptr), -1);
    EXPECT_THAT(trace_.Assertions(),
                ElementsAre(AssertionOf("sps_nalu_bb != NULL"),
                            AssertionOf("pCpbDpbDelaysPresentFlag != NULL"), AssertionOf("pHrd != NULL")));
    EXPECT_EQ(trace_.messages().size(), 3u);
}

class SubLayerHrdParameters : public HrdParameters {
 protected:
    void Sweep(int sub_pic_hrd_params_present_flag, int cpb_cnt_minus1) {
        syntax_.SweepTruncations(&slhp_, [=](bitbuffer_t *bb, sub_layer_hrd_parameters_t *slhp) {
            return _parse_sub_layer_hrd_parameters(bb, sub_pic_hrd_params_present_flag, cpb_cnt_minus1,
                                                   slhp) == 0;
        });
    }

    sub_layer_hrd_parameters_t slhp_;
};

TEST_F(SubLayerHrdParameters, HasAnEntryForEachCpb) {
    for (const int count : {1, 2, 32}) {
        for (const bool sub_pic : {false, true}) {
            syntax_ = {};
            Cpbs(count, sub_pic, &slhp_);
            Sweep(sub_pic, count - 1);
        }
    }
}

TEST_F(SubLayerHrdParameters, LeavesTheOtherEntriesAlone) {
    Cpbs(2, false, &slhp_);
    Sweep(0, 1);
    EXPECT_EQ(slhp_.bit_rate_value_minus1[2], PrefilledValue<UINT64>());
    EXPECT_EQ(slhp_.cbr_flag[2], PrefilledValue<int>());
    EXPECT_THAT(slhp_.cpb_size_du_value_minus1, Each(PrefilledValue<UINT64>()));
    EXPECT_THAT(slhp_.bit_rate_du_value_minus1, Each(PrefilledValue<UINT64>()));
}

TEST_F(SubLayerHrdParameters, WithoutCpbsNothingIsRead) {
    Sweep(1, -1);
    ExpectUntouched(slhp_);
}

TEST_F(SubLayerHrdParameters, MoreCpbsThanTheArraysHoldAreRefused) {
    std::vector<unsigned char> ones(64, 0xFF);
    bitbuffer_t bb{ones.data(), 0, 512};
    std::memset(&slhp_, kPrefill, sizeof slhp_);
    EXPECT_EQ(_parse_sub_layer_hrd_parameters(&bb, 0, 32, &slhp_), -1);
    ExpectUntouched(slhp_);
}

TEST_F(SubLayerHrdParameters, NullArgumentsAreReportedAndFail) {
    bitbuffer_t bb{};
    const TraceCapture trace;
    EXPECT_EQ(_parse_sub_layer_hrd_parameters(nullptr, 0, 0, &slhp_), -1);
    EXPECT_EQ(_parse_sub_layer_hrd_parameters(&bb, 0, 0, nullptr), -1);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("sps_nalu_bb != NULL"), AssertionOf("slhp != NULL")));
    EXPECT_EQ(trace.messages().size(), 2u);
}

}  // namespace
}  // namespace test
