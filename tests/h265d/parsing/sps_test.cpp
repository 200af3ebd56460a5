#include "h265d/parsing/sps.h"

#include <gmock/gmock.h>

#include <memory>

#include "support/entry_point.h"
#include "support/fields.h"
#include "support/nal_unit.h"
#include "support/silence.h"
#include "support/sps_syntax.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr int kSpsNut = 33;
constexpr size_t kLongestNal = 1512;  // from the NAL unit header on

class Sps : public testing::Test {
 protected:
    sps_h265_t &sps() { return memory_->sps; }

    void Reset() { syntax_ = SpsSyntax(&sps()); }

    void Sweep() {
        syntax_.SweepTruncations(&sps(), [](bitbuffer_t *bb, sps_h265_t *record) {
            SpsSyntax::Prepare(record);
            return _parse_sps(bb, record) == 0;
        });
    }

    int ParseBits() {
        std::vector<unsigned char> bytes = syntax_.bits().Bytes();
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(syntax_.bits().size())};
        SpsSyntax::Prepare(&sps());
        const int result = _parse_sps(&bb, &sps());
        EXPECT_THAT(memory_->behind, Each(kPrefill));
        return result;
    }

    void Parse(const SpsShape &shape) {
        Reset();
        syntax_.AddSps(shape);
        ASSERT_EQ(ParseBits(), 0);
        syntax_.ExpectFields(syntax_.bits().size());
    }

    // Parses what was added so far, which fails in the parser's own name.
    void ExpectFailure(const std::string &report) {
        const TraceCapture trace(4);
        EXPECT_EQ(ParseBits(), -1);
        ASSERT_THAT(trace.messages(), SizeIs(1));
        EXPECT_EQ(trace.Errors(), std::vector<std::string>{report});
        EXPECT_EQ(trace.messages()[0].function, "_parse_sps");
        InSilence([this] { EXPECT_EQ(ParseBits(), -1); });
    }

 private:
    struct Guarded {
        Guarded() { std::memset(static_cast<void *>(this), kPrefill, sizeof *this); }
        sps_h265_t sps;
        unsigned char behind[1024];
    };
    const std::unique_ptr<Guarded> memory_ = std::make_unique<Guarded>();

 protected:
    SpsSyntax syntax_{&sps()};
};

TEST_F(Sps, ReadsEveryShapeAndReportsEveryCut) {
    const SpsShape shapes[] = {
        {},
        {.max_sub_layers_minus1 = 2, .conformance_window = 1},
        {.max_sub_layers_minus1 = 7, .ordering_info = 0, .chroma_format_idc = 3},
        {.chroma_format_idc = 4},
        {.max_sub_layers_minus1 = 7, .scaling_lists = kDefaultScalingLists, .pcm = 1},
        {.scaling_lists = kCodedScalingLists, .short_term_sets = 3},
        {.short_term_sets = 64, .long_term = 1},
        {.log2_max_poc_lsb_minus4 = 12, .long_term = 1, .long_term_pictures = 33},
        {.max_sub_layers_minus1 = 1, .vui = 1},
    };
    for (const SpsShape &shape : shapes) {
        SCOPED_TRACE(&shape - shapes);
        Reset();
        syntax_.AddSps(shape);
        Sweep();
    }
}

TEST_F(Sps, LeavesWhatIsNotCoded) {
    Parse({.max_sub_layers_minus1 = 2, .ordering_info = 0});
    for (const int i : {0, 1, 3}) {
        EXPECT_EQ(sps().sps_max_dec_pic_buffering_minus1[i], PrefilledValue<UINT64>());
        EXPECT_EQ(sps().sps_max_num_reorder_pics[i], PrefilledValue<UINT64>());
        EXPECT_EQ(sps().sps_max_latency_increase_plus1[i], PrefilledValue<UINT64>());
    }
    EXPECT_EQ(sps().separate_colour_plane_flag, PrefilledValue<int>());
    EXPECT_EQ(sps().conf_win_left_offset, PrefilledValue<UINT64>());
    EXPECT_EQ(sps().sps_scaling_list_data_present_flag, PrefilledValue<int>());
    EXPECT_EQ(sps().scaling_list.scaling_list_pred_mode_flag[0][0], PrefilledValue<int>());
    EXPECT_EQ(sps().pcm_sample_bit_depth_luma_minus1, kPrefill);
    EXPECT_EQ(sps().num_long_term_ref_pics_sps, PrefilledValue<UINT64>());
    EXPECT_EQ(sps().vui.aspect_ratio_info_present_flag, PrefilledValue<int>());
    EXPECT_EQ(sps().sps_range_extension_flag, PrefilledValue<int>());
    EXPECT_EQ(sps().sps_extension_4bits, kPrefill);
    EXPECT_EQ(sps().sps_extension_data_flag, PrefilledValue<int>());
}

TEST_F(Sps, RecordsPositions) {
    Parse({});
    EXPECT_EQ(sps().ptl.general_scantype_bitoffset, 48);
    EXPECT_EQ(sps().before_pic_num_samples_offset, 108);
    EXPECT_EQ(sps().vui_parameters_present_offset, syntax_.vui_position());
    EXPECT_EQ(sps().sps_extension_present_offset, sps().vui_parameters_present_offset + 1);
    EXPECT_EQ(sps().vui.vui_timing_info_bitoffset, -1);

    Parse({.chroma_format_idc = 3});
    EXPECT_EQ(sps().before_pic_num_samples_offset, 96 + 8 + 1 + 5 + 1);

    Parse({.max_sub_layers_minus1 = 1, .conformance_window = 1, .pcm = 1, .short_term_sets = 5, .vui = 1});
    EXPECT_EQ(sps().before_pic_num_samples_offset, 108 + 16);
    EXPECT_EQ(sps().vui_parameters_present_offset, syntax_.vui_position());
    EXPECT_EQ(sps().vui.vui_timing_info_bitoffset, syntax_.vui_position() + 1 + 9);
    EXPECT_EQ(sps().sps_extension_present_offset, syntax_.extension_position());
}

TEST_F(Sps, APositionThatIsNotReachedKeepsItsValue) {
    syntax_.AddUpToReferences({});
    const TraceCapture trace;
    EXPECT_EQ(ParseBits(), -1);
    EXPECT_EQ(sps().before_pic_num_samples_offset, 108);
    EXPECT_EQ(sps().vui_parameters_present_offset, PrefilledValue<int>());
    EXPECT_EQ(sps().sps_extension_present_offset, PrefilledValue<int>());
    EXPECT_EQ(sps().vui.vui_timing_info_bitoffset, -1);  // this one is reset before anything is read
}

// ---- limits --------------------------------------------------------------------------------------------

TEST_F(Sps, MoreThan64ShortTermSetsAreUnreadable) {
    for (const uint64_t count : {uint64_t{65}, uint64_t{0xFFFFFFFE}}) {
        Reset();
        syntax_.AddUpToReferences({}).Rest(BitString().Ue(count).U(64, ~uint64_t{0}));
        ExpectFailure("cannot parse num_short_term_ref_pics_sets.\n");
        EXPECT_EQ(sps().num_short_term_ref_pics_sets, PrefilledValue<UINT64>());
    }
}

TEST_F(Sps, MoreThan33LongTermPicturesAreUnreadable) {
    for (const uint64_t count : {uint64_t{34}, uint64_t{0xFFFFFFFE}}) {
        Reset();
        syntax_.AddUpToReferences({}).Rest(BitString().Ue(0).U(1, 1).Ue(count).U(64, ~uint64_t{0}));
        ExpectFailure("cannot parse num_short_term_ref_pics_sets.\n");
        EXPECT_EQ(sps().num_long_term_ref_pics_sps, PrefilledValue<UINT64>());
    }
}

TEST_F(Sps, PocLsbsHave32BitsAtMost) {
    const SpsShape widest = {.log2_max_poc_lsb_minus4 = 28, .long_term = 1, .long_term_pictures = 2};
    Parse(widest);
    EXPECT_EQ(sps().lt_ref_pic_poc_lsb_sps[1], 0x80000001u);
    EXPECT_EQ(sps().lt_ref_pic_poc_lsb_sps[2], PrefilledValue<UINT64>());
    Reset();
    syntax_.AddSps(widest);
    Sweep();
}

TEST_F(Sps, WiderPocLsbsFailWithLongTermPicturesOnly) {
    for (const int pictures : {0, 1}) {
        Reset();
        syntax_.AddSps({.log2_max_poc_lsb_minus4 = 29, .long_term = 1, .long_term_pictures = pictures});
        ExpectFailure("invalid log2_max_pic_order_cnt_lsb_minus4[29].\n");
        EXPECT_EQ(sps().num_long_term_ref_pics_sps, static_cast<UINT64>(pictures));
        EXPECT_EQ(sps().lt_ref_pic_poc_lsb_sps[0], PrefilledValue<UINT64>());
    }
    Parse({.log2_max_poc_lsb_minus4 = 29});
    EXPECT_EQ(sps().log2_max_pic_order_cnt_lsb_minus4, 29u);
}

TEST_F(Sps, AWidthThatIsNegativeIn32BitsIsUnreadable) {
    syntax_.AddUpToReferences({.log2_max_poc_lsb_minus4 = 0x80000000})
        .Rest(BitString().Ue(0).U(1, 1).Ue(1).U(64, 0));
    ExpectFailure("cannot parse It_ref_pic_poc_lsb_sps[0].\n");
    Reset();
    syntax_.AddUpToReferences({.log2_max_poc_lsb_minus4 = 0x7FFFFFF0})
        .Rest(BitString().Ue(0).U(1, 1).Ue(1).U(64, 0));
    ExpectFailure("invalid log2_max_pic_order_cnt_lsb_minus4[2147483632].\n");
}

TEST_F(Sps, APredictedFirstSetOfTheRecordFailsItsSet) {
    syntax_.AddSps({.short_term_sets = 1});
    std::vector<unsigned char> bytes = syntax_.bits().Bytes();
    bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(syntax_.bits().size())};
    const TraceCapture trace(3);
    EXPECT_EQ(_parse_sps(&bb, &sps()), -1);  // the prefill is a set flag
    EXPECT_THAT(trace.Errors(), ElementsAre("cannot parse used_by_current_pic_flag[0].\n",
                                            "failed to parse short term ref pic set[0].\n"));
}

// ---- extensions ----------------------------------------------------------------------------------------

TEST_F(Sps, ReadsTheRangeExtension) {
    syntax_.AddUpToExtensions({}).AddExtensions({.range = 1}).Rest(BitString().TrailingBits());
    Sweep();
    EXPECT_EQ(sps().sps_extension_data_flag, PrefilledValue<int>());
}

TEST_F(Sps, OtherExtensionsFailBehindTheRangeExtension) {
    const std::pair<SpsExtensions, const char *> cases[] = {
        {{.multilayer = 1, .three_d = 1, .scc = 1},
         "sps_multilayer_extension is NOT parsed! at the moment.\n"},
        {{.multilayer = 1}, "sps_multilayer_extension is NOT parsed! at the moment.\n"},
        {{.three_d = 1, .scc = 1}, "sps_3d_extension is NOT parsed! at the moment.\n"},
        {{.three_d = 1}, "sps_3d_extension is NOT parsed! at the moment.\n"},
        {{.scc = 1, .four_bits = 1}, "sps_scc_extension_flag is NOT parsed! at the moment.\n"},
    };
    for (auto [extensions, report] : cases) {
        for (const int range : {0, 1}) {
            extensions.range = range;
            Reset();
            syntax_.AddUpToExtensions({}).AddExtensions(extensions).Rest(BitString().U(9, 0));
            std::memset(&sps(), kPrefill, sizeof sps());
            ExpectFailure(report);
            syntax_.ExpectFields(syntax_.bits().size());
            EXPECT_EQ(sps().cabac_bypass_alignment_enabled_flag, range ? 1 : PrefilledValue<int>());
            EXPECT_EQ(sps().sps_extension_data_flag, PrefilledValue<int>());
        }
    }
}

TEST_F(Sps, AnExtensionOfUnknownSyntaxTakesAllThatIsLeft) {
    for (const int four_bits : {1, 8, 15}) {
        for (const unsigned int last_bit : {0U, 1U}) {
            Reset();
            syntax_.AddUpToExtensions({})
                .AddExtensions({.range = 1, .four_bits = four_bits})
                .Rest(BitString().U(40, 0xAAAAAAAAAA).U(1, last_bit));
            const TraceCapture trace(6);
            ASSERT_EQ(ParseBits(), 0);
            EXPECT_THAT(trace.messages(), SizeIs(1));
            EXPECT_THAT(trace.Texts(6), ElementsAre("sps_extension_data_flag has 41 bits.\n"));
            EXPECT_EQ(sps().sps_extension_data_flag, static_cast<int>(last_bit));
        }
    }
    Sweep();
}

TEST_F(Sps, AnExtensionOfNoBitsLeavesTheField) {
    syntax_.AddUpToExtensions({}).AddExtensions({.four_bits = 1});
    const TraceCapture trace(6);
    ASSERT_EQ(ParseBits(), 0);
    EXPECT_THAT(trace.Texts(6), ElementsAre("sps_extension_data_flag has 0 bits.\n"));
    EXPECT_EQ(sps().sps_extension_data_flag, PrefilledValue<int>());
}

// ---- traces and arguments ------------------------------------------------------------------------------

TEST_F(Sps, TracesItsStepsInOrder) {
    const TraceCapture trace(7);
    Parse({.conformance_window = 1, .scaling_lists = kCodedScalingLists, .short_term_sets = 2, .vui = 1});
    std::vector<std::string> expected = syntax_.steps();
    expected.insert(expected.begin(), "Called.\n");
    expected.push_back("Done.\n");
    std::vector<std::string> own;
    for (const TracedMessage &message : trace.messages()) {
        if (message.function == "_parse_sps") {
            EXPECT_EQ(message.level, 7);
            EXPECT_EQ(message.file, "sps.cpp");
            own.push_back(message.text);
        }
    }
    EXPECT_EQ(own, expected);
    EXPECT_THAT(own, SizeIs(11));
}

TEST_F(Sps, TracesWhatItNestsInBetween) {
    const TraceCapture trace(7);
    Parse({.scaling_lists = kCodedScalingLists, .short_term_sets = 1, .vui = 1});
    std::vector<std::string> entered;
    for (const TracedMessage &message : trace.messages()) {
        if (message.level == 7 && message.text.starts_with("Called."))
            entered.push_back(message.function);
    }
    EXPECT_THAT(entered, ElementsAre("_parse_sps", "_parse_profile_tier_level", "_parse_scaling_list",
                                     "_parse_short_term_ref_pic_set", "_parse_vui_parameters", "_parse_hrd",
                                     "_parse_sub_layer_hrd_parameters"));
}

TEST_F(Sps, DumpsTheBitsOnEntry) {
    const TraceCapture trace(7);
    Parse({});
    ASSERT_GT(trace.messages().size(), 3u);
    const size_t bytes = syntax_.bits().Bytes().size();
    EXPECT_EQ(trace.messages()[1].text, "Fresh New SPS (" + std::to_string(bytes) + " bytes):\n");
    EXPECT_EQ(trace.messages()[1].level, 7);
    EXPECT_THAT(trace.messages()[2].text, StartsWith("00000000  B1 21 "));
}

TEST_F(Sps, NullArgumentsFailSilently) {
    bitbuffer_t bb{};
    const TraceCapture trace;
    EXPECT_EQ(_parse_sps(nullptr, &sps()), -1);
    EXPECT_EQ(_parse_sps(&bb, nullptr), -1);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

// ---- the entry point -----------------------------------------------------------------------------------

TEST_F(Sps, ParsesANalUnitBehindEitherStartCode) {
    syntax_.AddSps({.pcm = 1, .short_term_sets = 3, .vui = 1});
    const Bytes rbsp = syntax_.bits().Bytes();
    ASSERT_GT(Encapsulated(rbsp).size(), rbsp.size());  // there is something to remove
    for (const int start_code_length : {3, 4}) {
        for (const int nal_unit_type : {kSpsNut, 1}) {  // the type is not looked at
            std::memset(&sps(), kPrefill, sizeof sps());
            SpsSyntax::Prepare(&sps());
            const Bytes nal = NalUnit(nal_unit_type, rbsp, start_code_length);
            const TraceCapture trace(7);
            EXPECT_EQ(H265Lib_Parse_sps_nal(nal.data(), nal.size(), &sps()), TRUE);
            syntax_.ExpectFields(syntax_.bits().size());
            EXPECT_EQ(sps().vui_parameters_present_offset, syntax_.vui_position());
            for (const TracedMessage &message : trace.messages())
                EXPECT_NE(message.function, "H265Lib_Parse_sps_nal");
        }
    }
}

TEST_F(Sps, RefusesMalformedFrames) {
    const auto parse = [this](const unsigned char *nal, size_t length) {
        return H265Lib_Parse_sps_nal(nal, length, &sps());
    };
    ExpectRefusesMalformedFrames({.parse = parse,
                                  .length_name = "buffer_len",
                                  .no_start_code = "Failed to parse sps nal!",
                                  .longest = kLongestNal});
    EXPECT_EQ(sps().vui.vui_timing_info_bitoffset, PrefilledValue<int>());
}

TEST_F(Sps, TakesNalUnitsOf1512Bytes) {
    syntax_.AddSps({});
    for (const int start_code_length : {3, 4}) {
        Bytes nal = NalUnit(kSpsNut, syntax_.bits().Bytes(), start_code_length);
        nal.resize(static_cast<size_t>(start_code_length) + kLongestNal, 0xFF);
        EXPECT_EQ(H265Lib_Parse_sps_nal(nal.data(), nal.size(), &sps()), TRUE);
    }
}

TEST_F(Sps, ACutNalUnitAddsTheReportOfTheEntryPoint) {
    const Bytes nal = {0, 0, 1, 0x42, 1, 0x10};
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_Parse_sps_nal(nal.data(), nal.size(), &sps()), FALSE);
    EXPECT_THAT(trace.Errors(),
                ElementsAre("cannot parse general_profile_space.\n", "cannot parse profile_tier_level.\n",
                            "Failed to parse SPS NAL!\n"));
    EXPECT_EQ(trace.messages().back().function, "H265Lib_Parse_sps_nal");
    EXPECT_EQ(sps().sps_video_parameter_set_id, 1);
    InSilence([&] { EXPECT_EQ(H265Lib_Parse_sps_nal(nal.data(), nal.size(), &sps()), FALSE); });
}

TEST_F(Sps, NullArgumentsOfTheEntryPointAreReportedAndFail) {
    const Bytes nal = {0, 0, 1, 0x42, 1, 0};
    const TraceCapture trace(3);
    EXPECT_EQ(H265Lib_Parse_sps_nal(nullptr, 6, &sps()), FALSE);
    EXPECT_EQ(H265Lib_Parse_sps_nal(nal.data(), 6, nullptr), FALSE);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("buffer != NULL"), AssertionOf("pBuffer != NULL"),
                                                AssertionOf("pSps != NULL")));
    EXPECT_THAT(trace.Errors(),
                ElementsAre("Failed to parse sps nal! buffer:(nil).\n", "Failed to parse SPS NAL!\n"));
}

}  // namespace
}  // namespace test
