#include "h265d/parsing/vps.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>

#include "support/entry_point.h"
#include "support/fields.h"
#include "support/nal_unit.h"
#include "support/nested_syntax.h"
#include "support/silence.h"

namespace test {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kVpsNut = 32;
constexpr size_t kLongestNal = 1512;  // from the NAL unit header on

// What a VPS of a test consists of.
struct Shape {
    int max_sub_layers_minus1 = 0;
    int ordering_info = 1;
    int max_layer_id = 0;
    int layer_sets_minus1 = 0;
    int timing = 0;
    int poc_proportional = 0;
    int hrds = 0;
    std::vector<int> without_common = {};  // HRDs whose cprms_present_flag is 0
};

class Vps : public testing::Test {
 protected:
    vps_h265_t &vps() { return memory_->vps; }

    // The flag of layer j in layer set i: neighbours differ, in both directions.
    static int Included(int i, int j) { return (i * 5 + j * 3) % 7 < 3; }

    // A dropped HRD without a common part leans on the one before it, the others on the caller's record.
    static bool HasCpb(const Shape &shape, int i) {
        return HasCommonPart(shape, i) || (i >= H265_VPS_HRDS && HasCpb(shape, i - 1));
    }

    static bool HasCommonPart(const Shape &shape, int i) {
        return std::find(shape.without_common.begin(), shape.without_common.end(), i) ==
               shape.without_common.end();
    }

    // Everything in front of vps_max_layer_id.
    void BuildHead(const Shape &shape) {
        syntax_.U(4, 9, FIELD(vps(), vps_video_parameter_set_id))
            .Flag(1, FIELD(vps(), vps_base_layer_internal_flag))
            .Flag(0, FIELD(vps(), vps_base_layer_available_flag))
            .U(6, 41, FIELD(vps(), vps_max_layers_minus1))
            .U(3, Unsigned(shape.max_sub_layers_minus1), FIELD(vps(), vps_max_sub_layers_minus1))
            .Flag(1, FIELD(vps(), vps_temporal_id_nesting_flag))
            .U(16, 0xFF7F, FIELD(vps(), vps_reserved_0xffff_16bits));
        AddProfileTierLevel(&syntax_, &vps().ptl, shape.max_sub_layers_minus1);
        syntax_.Flag(shape.ordering_info, FIELD(vps(), vps_sub_layer_ordering_info_present_flag));
        for (int i = shape.ordering_info ? 0 : shape.max_sub_layers_minus1; i <= shape.max_sub_layers_minus1;
             i++)
            syntax_.Ue(Unsigned(i + 4), KEPT_ENTRY(vps(), vps_max_dec_pic_buffering_minus1, i))
                .Ue(Unsigned(i + 2), KEPT_ENTRY(vps(), vps_max_num_reorder_pics, i))
                .Ue(Unsigned(i * 100), KEPT_ENTRY(vps(), vps_max_latency_increase_plus1, i));
    }

    void BuildLayerSets(const Shape &shape) {
        syntax_.U(6, Unsigned(shape.max_layer_id), FIELD(vps(), vps_max_layer_id))
            .Ue(Unsigned(shape.layer_sets_minus1), FIELD(vps(), vps_num_layers_sets_minus1));
        for (int i = 1; i <= shape.layer_sets_minus1; i++) {
            for (int j = 0; j <= shape.max_layer_id; j++) {
                const bool kept = i < H265_VPS_LAYER_SETS && j < H265_VPS_LAYER_IDS;
                syntax_.Flag(Included(i, j), kept ? &vps().layer_id_included_flag[i][j] : kNotKept,
                             Unreadable("layer_id_included_flag", i, j));
            }
        }
    }

    void BuildTiming(const Shape &shape) {
        syntax_.U(32, 1001, FIELD(vps(), vps_num_units_in_tick))
            .U(32, 0x80000001, FIELD(vps(), vps_time_scale))
            .Flag(shape.poc_proportional, FIELD(vps(), vps_poc_proportional_to_timing_flag));
        if (shape.poc_proportional)
            syntax_.Ue(0xFFFFFFFE, FIELD(vps(), vps_num_ticks_poc_diff_one_minus1));
        syntax_.Ue(Unsigned(shape.hrds), FIELD(vps(), vps_num_hrd_parameters));
        for (int i = 0; i < shape.hrds; i++) {
            syntax_.Ue(Unsigned(i + 1), KEPT_ENTRY(vps(), hrd_layer_set_idx, i));
            if (i > 0)
                syntax_.Flag(HasCommonPart(shape, i), KEPT_ENTRY(vps(), cprms_present_flag, i));
            syntax_.Enter("failed to parse hrd parameters[" + std::to_string(i) + "].\n");
            AddHrd(&syntax_, KeptAt(vps().vps_hrd_parameters, i), HasCommonPart(shape, i), HasCpb(shape, i),
                   shape.max_sub_layers_minus1);
            syntax_.Leave();
        }
    }

    // Everything in front of vps_extenstion_flag.
    void Build(const Shape &shape) {
        BuildHead(shape);
        BuildLayerSets(shape);
        syntax_.Flag(shape.timing, FIELD(vps(), vps_timing_info_present_flag));
        if (shape.timing)
            BuildTiming(shape);
    }

    void BuildWhole(const Shape &shape) {
        Build(shape);
        syntax_.Flag(0, FIELD(vps(), vps_extenstion_flag)).Rest(BitString().TrailingBits());
    }

    // What the parser takes from the caller's record: whether the first HRD has its common part, the present
    // flags of those that have none, and the low delay flags.
    void Prepare(const Shape &shape) {
        vps().cprms_present_flag[0] = HasCommonPart(shape, 0);
        for (int i = 0; i < H265_VPS_HRDS; i++) {
            hrd_h265_t &hrd = vps().vps_hrd_parameters[i];
            if (!HasCommonPart(shape, i)) {
                hrd.nal_hrd_parameters_present_flag = 0;
                hrd.vcl_hrd_parameters_present_flag = 0;
            }
            std::memset(hrd.low_delay_hrd_flag, 0, sizeof hrd.low_delay_hrd_flag);
        }
    }

    void Sweep(const Shape &shape) {
        syntax_.SweepTruncations(&vps(), [&](bitbuffer_t *bb, vps_h265_t *record) {
            if (shape.hrds > 0)
                Prepare(shape);
            return _parse_vps(bb, record) == 0;
        });
    }

    int ParseBits() {
        std::vector<unsigned char> bytes = syntax_.bits().Bytes();
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(syntax_.bits().size())};
        return _parse_vps(&bb, &vps());
    }

    // Parses a shape into a prefilled record: the elements are right, nothing behind the record is written.
    void Parse(const Shape &shape) {
        BuildWhole(shape);
        if (shape.hrds > 0)
            Prepare(shape);
        ASSERT_EQ(ParseBits(), 0);
        syntax_.ExpectFields(syntax_.bits().size());
        EXPECT_THAT(memory_->behind, Each(kPrefill));
    }

    // Parses what was built so far, whose last element is one that is refused.
    void ExpectRefused(const std::string &report) {
        const TraceCapture trace(4);
        EXPECT_EQ(ParseBits(), -1);
        ASSERT_THAT(trace.messages(), SizeIs(1));
        EXPECT_EQ(trace.Errors(), std::vector<std::string>{report});
        EXPECT_EQ(trace.messages()[0].function, "_parse_vps");
        InSilence([this] { EXPECT_EQ(ParseBits(), -1); });
    }

    // A NAL unit of `length` bytes from its header on, filled by an extension of ones.
    Bytes NalOfLength(size_t length, int start_code_length) {
        syntax_ = {};
        Build({});
        syntax_.Flag(1, kNotKept, "");
        for (size_t i = 0; i < length; i++)
            syntax_.Rest(BitString().U(8, 0xFF));
        Bytes nal = NalUnit(kVpsNut, syntax_.bits().Bytes(), start_code_length);
        nal.resize(static_cast<size_t>(start_code_length) + length);
        return nal;
    }

    static uint64_t Unsigned(int value) { return static_cast<uint64_t>(value); }

    Syntax syntax_;

 private:
    struct Guarded {
        Guarded() { std::memset(static_cast<void *>(this), kPrefill, sizeof *this); }
        vps_h265_t vps;
        unsigned char behind[sizeof(hrd_h265_t)];
    };
    const std::unique_ptr<Guarded> memory_ = std::make_unique<Guarded>();
};

TEST_F(Vps, ReadsEveryShapeAndReportsEveryCut) {
    const Shape shapes[] = {
        {},
        {.max_sub_layers_minus1 = 2},
        {.max_sub_layers_minus1 = 5, .ordering_info = 0},
        {.max_layer_id = 7, .layer_sets_minus1 = 5},
        {.timing = 1},
        {.max_sub_layers_minus1 = 1, .timing = 1, .poc_proportional = 1, .hrds = 1},
        {.timing = 1, .hrds = 3, .without_common = {1}},
        {.timing = 1, .hrds = 2, .without_common = {0}},
        // more than the record holds
        {.max_sub_layers_minus1 = 6, .timing = 1, .hrds = 1},
        {.max_sub_layers_minus1 = 7, .ordering_info = 0},
        {.max_layer_id = 9, .layer_sets_minus1 = 7, .timing = 1},
        {.timing = 1, .hrds = 11, .without_common = {10}},
    };
    for (const Shape &shape : shapes) {
        SCOPED_TRACE(&shape - shapes);
        syntax_ = {};
        BuildWhole(shape);
        Sweep(shape);
    }
}

TEST_F(Vps, RecordsThePositionOfTheScanTypeAndLeavesTheOneBehindThePtl) {
    Parse({});
    EXPECT_EQ(vps().ptl.general_scantype_bitoffset, 72);
    EXPECT_EQ(vps().after_ptl_bitoffset, PrefilledValue<int>());
}

TEST_F(Vps, WithoutOrderingInfoOnlyTheHighestSubLayerIsRead) {
    Parse({.max_sub_layers_minus1 = 2, .ordering_info = 0});
    EXPECT_EQ(vps().vps_max_dec_pic_buffering_minus1[2], 6u);
    for (const int i : {0, 1, 3, 4, 5}) {
        EXPECT_EQ(vps().vps_max_dec_pic_buffering_minus1[i], PrefilledValue<UINT64>());
        EXPECT_EQ(vps().vps_max_num_reorder_pics[i], PrefilledValue<UINT64>());
        EXPECT_EQ(vps().vps_max_latency_increase_plus1[i], PrefilledValue<UINT64>());
    }
}

TEST_F(Vps, WithoutTimingItsFieldsKeepTheirValues) {
    Parse({});
    EXPECT_EQ(vps().vps_num_units_in_tick, PrefilledValue<UINT64>());
    EXPECT_EQ(vps().vps_poc_proportional_to_timing_flag, PrefilledValue<int>());
    EXPECT_EQ(vps().vps_num_hrd_parameters, PrefilledValue<UINT64>());
    EXPECT_EQ(vps().cprms_present_flag[1], PrefilledValue<int>());
    EXPECT_EQ(vps().vps_extenstion_data_flag, PrefilledValue<int>());
}

TEST_F(Vps, TheFirstHrdIsReadAsTheRecordSays) {
    Parse({.timing = 1, .hrds = 2, .without_common = {0}});
    EXPECT_EQ(vps().cprms_present_flag[0], 0);
    EXPECT_EQ(vps().vps_hrd_parameters[0].bit_rate_scale, kPrefill);
    EXPECT_EQ(vps().vps_hrd_parameters[1].bit_rate_scale, 2);

    syntax_ = {};
    Parse({.timing = 1, .hrds = 1});
    EXPECT_EQ(vps().cprms_present_flag[0], 1);
    EXPECT_EQ(vps().vps_hrd_parameters[0].bit_rate_scale, 2);
}

// ---- more than the record holds ------------------------------------------------------------------------

TEST_F(Vps, SubLayersBeyondTheRecordAreReadAndDropped) {
    for (const int max_sub_layers_minus1 : {6, 7}) {
        const std::string sub_layers = std::to_string(max_sub_layers_minus1 + 1);
        for (const int ordering_info : {0, 1}) {
            syntax_ = {};
            const TraceCapture trace(4);
            Parse({.max_sub_layers_minus1 = max_sub_layers_minus1, .ordering_info = ordering_info});
            ASSERT_THAT(trace.messages(), SizeIs(1));
            EXPECT_EQ(trace.messages()[0].level, 4);
            EXPECT_EQ(trace.messages()[0].function, "_parse_vps");
            EXPECT_EQ(trace.messages()[0].text,
                      "Ordering information of " + sub_layers + " sub-layers, the first 6 are kept.\n");
        }
    }
}

TEST_F(Vps, ASubLayerBeyondTheRecordWritesNoOther) {
    Parse({.max_sub_layers_minus1 = 7, .ordering_info = 0});
    EXPECT_THAT(vps().vps_max_dec_pic_buffering_minus1, Each(PrefilledValue<UINT64>()));
    EXPECT_THAT(vps().vps_max_num_reorder_pics, Each(PrefilledValue<UINT64>()));
    EXPECT_THAT(vps().vps_max_latency_increase_plus1, Each(PrefilledValue<UINT64>()));
}

TEST_F(Vps, LayerSetsBeyondTheRecordAreReadAndDropped) {
    const TraceCapture trace(4);
    Parse({.max_layer_id = 7, .layer_sets_minus1 = 6});
    EXPECT_THAT(trace.Texts(4), ElementsAre("7 layer sets of 8 layers, the first 6 of 8 are kept.\n"));
    EXPECT_THAT(trace.Assertions(), IsEmpty());
    EXPECT_THAT(vps().layer_id_included_flag[0], Each(PrefilledValue<int>()));
    EXPECT_EQ(vps().vps_num_units_in_tick, PrefilledValue<UINT64>());
}

TEST_F(Vps, EveryFlagOfALayerIdBeyondTheRecordIsAsserted) {
    const TraceCapture trace(4);
    Parse({.max_layer_id = 62, .layer_sets_minus1 = 2});
    EXPECT_THAT(trace.Texts(4), ElementsAre("3 layer sets of 63 layers, the first 6 of 8 are kept.\n"));
    EXPECT_THAT(trace.Assertions(),
                AllOf(SizeIs(2 * 55), Each(AssertionOf("j < MAX_VPS_NUM_LAYER_SETS_MINUS1_VALUE"))));
    for (const int i : {0, 3, 4, 5})
        EXPECT_THAT(vps().layer_id_included_flag[i], Each(PrefilledValue<int>()));
}

TEST_F(Vps, WhatFitsTheRecordIsNotReported) {
    const TraceCapture trace(4);
    Parse({.max_sub_layers_minus1 = 5, .max_layer_id = 7, .layer_sets_minus1 = 5, .timing = 1, .hrds = 9});
    syntax_ = {};
    Parse({.max_layer_id = 62});  // no flags, nothing to drop
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST_F(Vps, HrdsBeyondTheRecordAreReadAndDropped) {
    const TraceCapture trace(4);
    Parse({.timing = 1, .hrds = 10});
    EXPECT_THAT(trace.messages(), SizeIs(1));
    EXPECT_THAT(trace.Texts(4), ElementsAre("10 HRDs, the first 9 are kept.\n"));
    EXPECT_EQ(vps().vps_extenstion_data_flag, PrefilledValue<int>());
}

TEST_F(Vps, ADroppedHrdWithoutCommonPartLeansOnTheOneBeforeIt) {
    Parse({.timing = 1, .hrds = 13, .without_common = {9, 10, 12}});
    syntax_ = {};
    Parse({.timing = 1, .hrds = 12, .without_common = {8, 9, 11}});
}

TEST_F(Vps, ADroppedHrdDoesNotInheritLowDelay) {
    BuildHead({});
    BuildLayerSets({});
    BitString timing;
    timing.U(1, 1).U(32, 1).U(32, 25).U(1, 0).Ue(10);
    for (int i = 0; i < 10; i++) {
        timing.Ue(0);  // hrd_layer_set_idx
        if (i > 0)
            timing.U(1, 1);  // cprms_present_flag
        timing.U(2, 0);      // neither NAL nor VCL HRD
        if (i == 8)
            timing.U(1, 0).U(1, 0).U(1, 1);  // no fixed picture rate, low delay: no CPB count
        else
            timing.U(1, 1).Ue(0).Ue(0);  // fixed picture rate: duration and CPB count
    }
    syntax_.Rest(timing).Flag(0, FIELD(vps(), vps_extenstion_flag));
    std::memset(&vps(), 0, sizeof vps());
    vps().cprms_present_flag[0] = 1;
    std::vector<unsigned char> bytes = syntax_.bits().Bytes();
    bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(syntax_.bits().size())};
    ASSERT_EQ(_parse_vps(&bb, &vps()), 0);
    EXPECT_EQ(bb.bit_offset, bb.num_bits);
    EXPECT_EQ(vps().vps_extenstion_flag, 0);
}

TEST_F(Vps, ReadsAsManyLayerSetsAndHrdsAsThereCanBe) {
    Shape shape = {.layer_sets_minus1 = 1023, .timing = 1, .hrds = 1024};
    for (int i = 0; i < shape.hrds; i++)
        shape.without_common.push_back(i);
    const TraceCapture trace(4);
    Parse(shape);
    EXPECT_THAT(trace.Texts(4), ElementsAre("1024 layer sets of 1 layers, the first 6 of 8 are kept.\n",
                                            "1024 HRDs, the first 9 are kept.\n"));
}

TEST_F(Vps, MoreLayerSetsThanThereCanBeAreUnreadable) {
    for (const uint64_t count : {uint64_t{1024}, uint64_t{0xFFFFFFFE}}) {
        syntax_ = {};
        BuildHead({});
        syntax_.U(6, 0, kNotKept, "").Ue(count, kNotKept, "").Rest(BitString().U(64, 0));
        ExpectRefused("cannot parse vps_num_layers_sets_minus1.\n");
        EXPECT_EQ(vps().vps_num_layers_sets_minus1, PrefilledValue<UINT64>());
    }
}

TEST_F(Vps, MoreHrdsThanThereCanBeAreUnreadable) {
    for (const uint64_t count : {uint64_t{1025}, uint64_t{0xFFFFFFFE}}) {
        syntax_ = {};
        BuildHead({});
        BuildLayerSets({});
        syntax_.Rest(BitString().U(1, 1).U(32, 1).U(32, 25).U(1, 0).Ue(count).U(64, 0));
        ExpectRefused("cannot parse vps_num_hrd_parameters.\n");
        EXPECT_EQ(vps().vps_time_scale, 25u);
        EXPECT_EQ(vps().vps_num_hrd_parameters, PrefilledValue<UINT64>());
    }
}

// ---- the extension -------------------------------------------------------------------------------------

TEST_F(Vps, AnExtensionTakesAllThatIsLeft) {
    for (const unsigned int last_bit : {0U, 1U}) {
        syntax_ = {};
        Build({});
        syntax_.Flag(1, FIELD(vps(), vps_extenstion_flag))
            .Rest(BitString().U(36, 0x12345678C).U(1, last_bit));
        const TraceCapture trace(6);
        ASSERT_EQ(ParseBits(), 0);
        EXPECT_THAT(trace.messages(), SizeIs(1));
        EXPECT_THAT(trace.Texts(6), ElementsAre("vps_extension_data_flag has 37 bits.\n"));
        EXPECT_EQ(vps().vps_extenstion_data_flag, static_cast<int>(last_bit));
        Sweep({});
    }
}

TEST_F(Vps, AnExtensionOfNoBitsLeavesTheField) {
    Build({});
    syntax_.Flag(1, FIELD(vps(), vps_extenstion_flag));
    const TraceCapture trace(6);
    ASSERT_EQ(ParseBits(), 0);
    EXPECT_THAT(trace.Texts(6), ElementsAre("vps_extension_data_flag has 0 bits.\n"));
    EXPECT_EQ(vps().vps_extenstion_data_flag, PrefilledValue<int>());
}

// ---- traces and arguments ------------------------------------------------------------------------------

TEST_F(Vps, TracesEntryStepAndExit) {
    const TraceCapture trace(7);
    Parse({.max_sub_layers_minus1 = 1, .timing = 1, .hrds = 1});
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Called.\n", "Called.\n",
                            "Before general_progressive_source_flag, CurrentBitOffset:72.\n", "Done.\n",
                            "After profile tier level, CurrentBitOffset:144.\n",
                            "Called. MaxNumSubLayersMinus1=1\n", "Called. cpb_cnt_minus1=0\n", "Done.\n",
                            "Called. cpb_cnt_minus1=0\n", "Done.\n", "Done.\n", "Done.\n"));
    EXPECT_EQ(trace.messages().front().function, "_parse_vps");
    EXPECT_EQ(trace.messages()[4].function, "_parse_vps");
    EXPECT_EQ(trace.messages().back().function, "_parse_vps");
    EXPECT_EQ(trace.messages().back().file, "vps.cpp");
}

TEST_F(Vps, NullArgumentsAreReportedAndFail) {
    bitbuffer_t bb{};
    TraceCapture trace;
    EXPECT_EQ(_parse_vps(nullptr, &vps()), -1);
    EXPECT_EQ(_parse_vps(&bb, nullptr), -1);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("vps_nalu_bb != NULL"), AssertionOf("pVps != NULL")));
    EXPECT_THAT(trace.messages(), SizeIs(2));
}

// ---- the entry point -----------------------------------------------------------------------------------

TEST_F(Vps, ParsesANalUnitBehindEitherStartCode) {
    BuildWhole({.timing = 1});
    const Bytes rbsp = syntax_.bits().Bytes();
    ASSERT_GT(Encapsulated(rbsp).size(), rbsp.size());  // there is something to remove
    for (const int start_code_length : {3, 4}) {
        for (const int nal_unit_type : {kVpsNut, 1}) {  // the type is not looked at
            std::memset(&vps(), kPrefill, sizeof vps());
            const Bytes nal = NalUnit(nal_unit_type, rbsp, start_code_length);
            const TraceCapture trace(7);
            EXPECT_EQ(H265Lib_Parse_vps_nal(nal.data(), nal.size(), &vps()), TRUE);
            syntax_.ExpectFields(syntax_.bits().size());
            EXPECT_EQ(vps().ptl.general_scantype_bitoffset, 72);
            for (const TracedMessage &message : trace.messages())
                EXPECT_NE(message.function, "H265Lib_Parse_vps_nal");
        }
    }
}

TEST_F(Vps, RefusesMalformedFrames) {
    const auto parse = [this](const unsigned char *nal, size_t length) {
        return H265Lib_Parse_vps_nal(nal, length, &vps());
    };
    // a missing start code is reported under the name of the SPS
    ExpectRefusesMalformedFrames({.parse = parse,
                                  .length_name = "BufferLen",
                                  .no_start_code = "Failed to parse sps nal!",
                                  .longest = kLongestNal});
    EXPECT_EQ(vps().vps_max_layers_minus1, kPrefill);
}

TEST_F(Vps, ALengthOfZeroIsAsserted) {
    const Bytes nal = {0, 0, 1, 0x40, 1, 0};
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_Parse_vps_nal(nal.data(), 0, &vps()), FALSE);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("BufferLen > 0")));
}

TEST_F(Vps, TakesNalUnitsOf1512Bytes) {
    for (const int start_code_length : {3, 4}) {
        const Bytes nal = NalOfLength(kLongestNal, start_code_length);
        EXPECT_EQ(H265Lib_Parse_vps_nal(nal.data(), nal.size(), &vps()), TRUE);
    }
}

TEST_F(Vps, ACutNalUnitAddsTheReportOfTheEntryPoint) {
    Build({});
    const Bytes whole = NalUnit(kVpsNut, syntax_.bits().Bytes());
    const Bytes nal(whole.begin(), whole.begin() + 10);
    TraceCapture trace;
    EXPECT_EQ(H265Lib_Parse_vps_nal(nal.data(), nal.size(), &vps()), FALSE);
    EXPECT_THAT(trace.Errors(),
                ElementsAre("cannot parse general_profile_space.\n", "cannot parse profile_tier_level.\n",
                            "Failed to parse VPS NAL!\n"));
    EXPECT_EQ(trace.messages().back().function, "H265Lib_Parse_vps_nal");
    EXPECT_EQ(vps().vps_reserved_0xffff_16bits, 0xFF7F);
    InSilence([&] { EXPECT_EQ(H265Lib_Parse_vps_nal(nal.data(), nal.size(), &vps()), FALSE); });
}

TEST_F(Vps, NullArgumentsOfTheEntryPointAreReportedAndFail) {
    const Bytes nal = {0, 0, 1, 0x40, 1, 0};
    const TraceCapture trace(3);
    EXPECT_EQ(H265Lib_Parse_vps_nal(nullptr, 6, &vps()), FALSE);
    EXPECT_EQ(H265Lib_Parse_vps_nal(nal.data(), 6, nullptr), FALSE);
    // each function on the way asserts its own arguments
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("pBuffer != NULL"), AssertionOf("pBuffer != NULL"),
                            AssertionOf("pVps != NULL"), AssertionOf("pVps != NULL")));
    EXPECT_THAT(trace.Errors(),
                ElementsAre("Failed to parse sps nal! buffer:(nil).\n", "Failed to parse VPS NAL!\n"));
}

}  // namespace
}  // namespace test
