#include "h265d/rewriting/sps.h"

#include <gmock/gmock.h>

#include <climits>

#include "support/interposed.h"
#include "support/samples.h"
#include "support/silence.h"
#include "support/sps_rewriting.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kNoSize = "cannot parse pic_width_in_luma_samples.\n";

// What is tested of both SODB rewriters: their room, and the positions of the record.
class SpsSodbRewriting : public testing::TestWithParam<SpsRewriter> {
 protected:
    static ParsedSps Generated(unsigned int seed) {
        Random random(seed);
        return ParsedSps(RandomSps(&random));
    }

    // The reports when the record has been edited.
    template <typename Edit>
    std::vector<std::string> ReportsAfter(Edit edit) {
        const ParsedSps input = Generated(7);
        edit(*input.sps);
        const auto expect_failure = [&] {
            EXPECT_THAT(GetParam().Rewritten(input.nal, *input.sps), IsEmpty());
        };
        InSilence([&] {
            expect_failure();
            EXPECT_EQ(GetParam().Result(input), -1);
        });
        const TraceCapture trace(3);
        expect_failure();
        std::vector<std::string> reports = trace.Errors();
        EXPECT_EQ(reports.back(), "Failed to set vui parameters SPS NAL!\n");
        reports.pop_back();
        return reports;
    }

    // By 4 bits and `added` more, 0 to 7.
    static void LengthenVui(int added, sps_h265_t *sps) {
        sps->vui.overscan_info_present_flag = added % 2;
        sps->vui.default_display_window_flag = 1;
        sps->vui.def_disp_win_left_offset = (1U << added / 2) - 1;
    }

    static std::string NoRun(int64_t num_bits) {
        return "Failed to get " + std::to_string(num_bits) + " bits as string.\n";
    }
};

TEST_P(SpsSodbRewriting, EveryRoomGivesTheReportOfTheFirstElementThatDoesNotFit) {
    for (const unsigned int seed : {1U, 2U, 3U, 4U, 5U, 6U}) {
        SCOPED_TRACE(seed);
        const ParsedSps input = Generated(seed);
        Bytes sodb = input.bits.Bytes();
        const int length = static_cast<int>(sodb.size());
        Random random(seed);
        input.sps->vui = {};
        FillVui(&input.sps->vui, input.sps->sps_max_sub_layers_minus1, &random);
        SweepRoom(GetParam().model(input.bits, *input.sps), [&](bitbuffer_t *writer) {
            bitbuffer_t reader{sodb.data(), 0, static_cast<unsigned int>(input.bits.size())};
            const int result = GetParam().rewrite(&reader, length, input.sps.get(), writer, length + 256);
            EXPECT_EQ(result, result == -1 ? -1 : static_cast<int>(writer->bit_offset / 8));
            return result != -1;
        });
        if (HasFatalFailure())
            return;
    }
}

TEST_P(SpsSodbRewriting, WithoutMemoryOrVuiItFails) {
    const ParsedSps input = Generated(7);
    const TraceCapture trace;
    EXPECT_GT(GetParam().Result(input), 0);
    {
        const FailingAllocations allocations(1);
        EXPECT_EQ(GetParam().Result(input), -1);
    }
    input.sps->vui_parameters_present_flag = 0;
    EXPECT_EQ(GetParam().Result(input), -1);
}

TEST_P(SpsSodbRewriting, PositionsOutsideTheDataFail) {
    const ParsedSps input = Generated(7);
    const int num_bits = static_cast<int>(input.bits.size());
    const int tail = input.sps->sps_extension_present_offset;
    ASSERT_GT(num_bits - tail, 8);

    for (const int position : {INT_MIN, INT_MIN + 1, -1000000, -1, num_bits + 1, 100000, INT_MAX}) {
        SCOPED_TRACE(position);
        const std::vector<std::string> vui =
            ReportsAfter([&](sps_h265_t &sps) { sps.vui_parameters_present_offset = position; });
        EXPECT_THAT(vui, ElementsAre(testing::MatchesRegex("Failed to get -?[0-9]+ bits as string.\n")));
        const std::vector<std::string> extension =
            ReportsAfter([&](sps_h265_t &sps) { sps.sps_extension_present_offset = position; });
        EXPECT_THAT(extension,
                    ElementsAre(testing::MatchesRegex("Failed to get -?[0-9]+ bits as (string|Uint8).\n")));
    }
    EXPECT_THAT(ReportsAfter([&](sps_h265_t &sps) { sps.sps_extension_present_offset = num_bits; }),
                ElementsAre("Failed to get 0 bits as Uint8.\n"));
    EXPECT_THAT(ReportsAfter([&](sps_h265_t &sps) { sps.sps_extension_present_offset = num_bits + 3; }),
                ElementsAre("Failed to get -3 bits as Uint8.\n"));
    EXPECT_THAT(ReportsAfter([&](sps_h265_t &sps) { sps.sps_extension_present_offset = -3; }),
                ElementsAre(NoRun(num_bits + 3 - 8)));
}

TEST_P(SpsSodbRewriting, SubLayersAndCpbsBeyondTheRecordFail) {
    const auto with_hrd = [](sps_h265_t &sps) {
        sps.vui.vui_timing_info_present_flag = sps.vui.vui_hrd_parameters_present_flag = 1;
        sps.vui.nal_hrd = {};
    };
    EXPECT_THAT(ReportsAfter([&](sps_h265_t &sps) {
                    with_hrd(sps);
                    sps.sps_max_sub_layers_minus1 = 255;
                }),
                ElementsAre(Unwritable("fixed_pic_rate_general_flag", 8), "Failed to set hrd parameters!\n"));
    EXPECT_THAT(ReportsAfter([&](sps_h265_t &sps) {
                    with_hrd(sps);
                    sps.vui.nal_hrd.vcl_hrd_parameters_present_flag = 1;
                    sps.vui.nal_hrd.cpb_cnt_minus1[0] = 32;
                }),
                ElementsAre(Unwritable("bit_rate_value_minus1", 32),
                            Unwritable("sub_layer_hrd_parameters", 0), "Failed to set hrd parameters!\n"));
}

// The tail: of 8 bits and fewer it is the last byte alone.
TEST_P(SpsSodbRewriting, CopiesTailsOfEveryLength) {
    for (unsigned int extension_bits = 0; extension_bits < 24; extension_bits++) {
        BitString tail;
        if (extension_bits == 0)
            tail.U(1, 0);
        else
            tail.U(1, 1).U(8, 1).U(extension_bits, 0x5A5A5A);
        const ParsedSps input(SpsWithTail(tail));
        const int string_bits = input.tail_bits() > 8 ? input.tail_bits() - 8 : 0;
        for (int added = 0; added < 8; added++) {
            SCOPED_TRACE(added);
            LengthenVui(added, input.sps.get());
            const TraceCapture trace;
            EXPECT_EQ(GetParam().Rewritten(input.nal, *input.sps), GetParam().Expected(input, *input.sps));
            EXPECT_THAT(trace.Texts(7),
                        testing::Contains(testing::StartsWith(
                            "num_bits:" + std::to_string(input.tail_bits()) + ", LastByteNumBits:" +
                            std::to_string(input.tail_bits() - string_bits) + ", LastByte:")));
        }
    }
}

TEST_P(SpsSodbRewriting, ATailOfExactly8BitsIsTheLastByte) {
    for (int added = 0; added < 8; added++) {  // until the alignment is right
        const ParsedSps narrow(SpsWithTail(BitString().U(1, 0)));
        LengthenVui(added, narrow.sps.get());
        const ParsedSps input(GetParam().Rewritten(narrow.nal, *narrow.sps));
        if (input.tail_bits() != 8)
            continue;
        const TraceCapture trace;
        EXPECT_FALSE(GetParam().Rewritten(input.nal, *input.sps).empty());
        EXPECT_THAT(trace.Texts(7), testing::Contains("num_bits:8, LastByteNumBits:8, LastByte:0x40.\n"));
        return;
    }
    FAIL() << "no tail of 8 bits";
}

TEST_P(SpsSodbRewriting, ALastByteWithoutStopBitIsAssertedAndCopied) {
    ParsedSps input(SpsWithTail(BitString().U(1, 0)));
    input.nal.push_back(0);
    input.bits.U(8, 0);
    const TraceCapture trace;
    EXPECT_EQ(GetParam().Rewritten(input.nal, *input.sps), GetParam().Expected(input, *input.sps));
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("StopBitPos >= 0")));
    EXPECT_THAT(trace.Texts(7), testing::Contains(testing::HasSubstr("StopBitPos:-1, LastByte:0.\n")));
    InSilence([&] {
        EXPECT_EQ(GetParam().Rewritten(input.nal, *input.sps), GetParam().Expected(input, *input.sps));
    });
}

TEST_P(SpsSodbRewriting, AVuiIsAddedWhereThereWasNone) {
    const ParsedSps with(SpsWithTail(BitString().U(1, 0)));
    BitString bits = with.bits.Prefix(static_cast<size_t>(with.sps->vui_parameters_present_offset));
    const ParsedSps without(NalUnit(kSpsNut, bits.U(2, 0).TrailingBits().Bytes()));
    ASSERT_EQ(without.sps->vui_parameters_present_flag, 0);
    without.sps->vui_parameters_present_flag = 1;
    without.sps->vui.field_seq_flag = 1;
    const Bytes result = GetParam().Rewritten(without.nal, *without.sps);
    EXPECT_EQ(result, GetParam().Expected(without, *without.sps));
    EXPECT_EQ(ParsedSps(result).sps->vui.field_seq_flag, 1);
}

TEST_P(SpsSodbRewriting, TooSmallACapacityIsAssertedOnly) {
    const ParsedSps input = Generated(8);
    Bytes sodb = input.bits.Bytes();
    Bytes result(1768);
    const int length = static_cast<int>(sodb.size());
    for (const int missing : {0, 1}) {
        bitbuffer_t reader{sodb.data(), 0, static_cast<unsigned int>(input.bits.size())};
        bitbuffer_t writer{result.data(), 0, 14144};
        const TraceCapture trace;
        EXPECT_GT(GetParam().rewrite(&reader, length, input.sps.get(), &writer, length + 256 - missing), 0);
        if (missing)
            EXPECT_THAT(trace.Assertions(),
                        ElementsAre(AssertionOf(
                            "NewSpsSodbLength >= (SpsSodbLength + MIN_VUI_PARAMETERS_SIZE_BYTES)")));
        else
            EXPECT_THAT(trace.Assertions(), IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Both, SpsSodbRewriting, testing::Values(kSpsModification, kSpsVuiReplacement),
                         [](const auto &rewriter) { return std::string(rewriter.param.function); });

// ---- the rewriting of the whole SPS --------------------------------------------------------------------

class SpsModification : public testing::Test {
 protected:
    Bytes Modified() const { return kSpsModification.Rewritten(input_.nal, *input_.sps); }

    std::vector<std::string> Reports() const {
        InSilence([this] { EXPECT_EQ(kSpsModification.Result(input_), -1); });
        const TraceCapture trace(3);
        EXPECT_THAT(Modified(), IsEmpty());
        return trace.Errors();
    }

    ParsedSps input_{SampleNalUnits("units/sps-heavy.nal", kSpsNut).front()};
};

TEST_F(SpsModification, WritesTheFieldsOfTheRecord) {
    sps_h265_t &sps = *input_.sps;
    ASSERT_EQ(sps.conformance_window_flag, 1);
    sps.ptl.general_progressive_source_flag ^= 1;
    sps.ptl.general_interlaced_source_flag ^= 1;
    sps.pic_width_in_luma_samples = 1280;
    sps.pic_height_in_luma_samples = 0x7'0000'02D0;  // the low 32 bits: 720
    sps.conf_win_left_offset = 7;
    sps.conf_win_right_offset = 0;
    sps.conf_win_top_offset = 1000;
    sps.conf_win_bottom_offset = 3;
    const Bytes result = Modified();
    EXPECT_EQ(result, kSpsModification.Expected(input_, sps));

    const ParsedSps parsed(result);
    EXPECT_EQ(parsed.sps->ptl.general_progressive_source_flag, sps.ptl.general_progressive_source_flag);
    EXPECT_EQ(parsed.sps->ptl.general_interlaced_source_flag, sps.ptl.general_interlaced_source_flag);
    EXPECT_EQ(parsed.sps->ptl.general_non_packed_constraint_flag, 0);
    EXPECT_EQ(parsed.sps->ptl.general_frame_only_constraint_flag, 0);
    EXPECT_EQ(parsed.sps->pic_width_in_luma_samples, 1280u);
    EXPECT_EQ(parsed.sps->pic_height_in_luma_samples, 720u);

    // Everything else is as before, if at other positions.
    const int moved = parsed.sps->vui_parameters_present_offset - sps.vui_parameters_present_offset;
    sps_h265_t &expected = *input_.sps;
    expected.pic_height_in_luma_samples = 720;
    expected.ptl.general_non_packed_constraint_flag = expected.ptl.general_frame_only_constraint_flag = 0;
    expected.vui_parameters_present_offset += moved;
    expected.sps_extension_present_offset += moved;
    expected.vui.vui_timing_info_bitoffset += moved;
    expected.vui.vui_hrd_parameters_present_flag_bitoffset += moved;
    EXPECT_EQ(std::memcmp(parsed.sps.get(), &expected, sizeof expected), 0);
}

TEST_F(SpsModification, TheConstraintFlagsBecome0WhateverTheRecordSays) {
    input_.sps->ptl.general_non_packed_constraint_flag = 1;
    input_.sps->ptl.general_frame_only_constraint_flag = 1;
    const ParsedSps parsed(Modified());
    EXPECT_EQ(parsed.sps->ptl.general_non_packed_constraint_flag, 0);
    EXPECT_EQ(parsed.sps->ptl.general_frame_only_constraint_flag, 0);
}

TEST_F(SpsModification, AWidthOf1280ChangesOnlyItsCode) {
    const size_t position = static_cast<size_t>(input_.sps->before_pic_num_samples_offset);
    ASSERT_EQ(input_.sps->pic_width_in_luma_samples, 1920u);
    const Syntax before = ModifiedSps(input_.bits, *input_.sps);
    input_.sps->pic_width_in_luma_samples = 1280;
    const BitString after = ParsedSps(Modified()).bits;
    BitString expected = before.bits().Prefix(position);
    expected.Ue(1280);  // of 21 bits, as 1920
    for (size_t i = position + 21; i < before.bits().size(); i++)
        expected.U(1, before.bits()[i]);
    EXPECT_EQ(after.Bytes(), expected.Bytes());
}

TEST_F(SpsModification, ShorterAndLongerCodesMoveTheRest) {
    const size_t size = Modified().size();
    input_.sps->pic_width_in_luma_samples = 0xFFFFFFFE;
    EXPECT_EQ(Modified(), kSpsModification.Expected(input_, *input_.sps));
    EXPECT_GE(Modified().size(), size + 5);  // 63 bits, not 21
    input_.sps->pic_width_in_luma_samples = 0;
    EXPECT_EQ(Modified(), kSpsModification.Expected(input_, *input_.sps));
    EXPECT_LE(Modified().size(), size - 2);
}

TEST_F(SpsModification, WithoutVuiItFailsWithATextAssertion) {
    for (const int flag : {0, 2}) {
        input_.sps->vui_parameters_present_flag = flag;
        const TraceCapture trace;
        EXPECT_THAT(Modified(), IsEmpty());
        EXPECT_THAT(trace.Assertions(), ElementsAre("vui parameters should be present at this point.\n"));
        EXPECT_THAT(trace.Errors(), ElementsAre("Failed to set vui parameters SPS NAL!\n"));
        InSilence([this] { EXPECT_THAT(Modified(), IsEmpty()); });
    }
}

// Elements of the input that are not there: the data ends in them.
TEST_F(SpsModification, WhatCannotBeSkippedIsReported) {
    const std::string no_window = "cannot parse conformance_window_flag.\n";
    const std::string no_offset = "cannot parse conf_win_";
    Bytes sodb = input_.bits.Bytes();
    size_t position = static_cast<size_t>(input_.sps->before_pic_num_samples_offset);
    const std::pair<size_t, std::string> elements[] = {{21, kNoSize},  // 1920
                                                       {21, kNoSize},  // 1088
                                                       {1, no_window},
                                                       {0, no_offset + "left_offset.\n"},
                                                       {0, no_offset + "right_offset.\n"},
                                                       {0, no_offset + "top_offset.\n"},
                                                       {0, no_offset + "bottom_offset.\n"}};
    for (const auto &[width, report] : elements) {
        size_t zeros = 0;
        while (width == 0 && !input_.bits[position + zeros])
            zeros++;
        const size_t end = position + (width != 0 ? width : 2 * zeros + 1);
        for (; position < end; position++) {
            Bytes result(1768);
            bitbuffer_t reader{sodb.data(), 0, static_cast<unsigned int>(position)};
            bitbuffer_t writer{result.data(), 0, 14144};
            const TraceCapture trace;
            EXPECT_EQ(_modify_sps_parameters(&reader, 100, input_.sps.get(), &writer, 1768), -1);
            EXPECT_THAT(trace.Errors(), ElementsAre(report)) << position;
            EXPECT_EQ(trace.messages().back().text, "Done.\n");
        }
    }
}

TEST_F(SpsModification, PositionsInTheWrongOrderFail) {
    const int size = input_.sps->before_pic_num_samples_offset;
    input_.sps->ptl.general_scantype_bitoffset = -1;
    EXPECT_THAT(Reports(), ElementsAre("Failed to get -1 bits as string.\n", testing::_));
    input_.sps->ptl.general_scantype_bitoffset = INT_MIN;
    EXPECT_THAT(Reports(), ElementsAre("Failed to get -2147483648 bits as string.\n", testing::_));
    input_.sps->ptl.general_scantype_bitoffset = INT_MAX;
    EXPECT_THAT(Reports(), ElementsAre("Failed to get 2147483647 bits as string.\n", testing::_));
    input_.sps->ptl.general_scantype_bitoffset = static_cast<int>(input_.bits.size());
    EXPECT_THAT(Reports(), ElementsAre("Failed to get " +
                                           std::to_string(size - static_cast<int>(input_.bits.size()) - 4) +
                                           " bits as string.\n",
                                       testing::_));
    input_.sps->ptl.general_scantype_bitoffset = 48;
    input_.sps->before_pic_num_samples_offset = 51;
    EXPECT_THAT(Reports(), ElementsAre("Failed to get -1 bits as string.\n", testing::_));
    input_.sps->before_pic_num_samples_offset = INT_MIN;
    EXPECT_THAT(Reports(),
                ElementsAre(testing::MatchesRegex("Failed to get .* bits as string.\n"), testing::_));
}

TEST_F(SpsModification, TracesEveryStep) {
    const ParsedSps input(SpsWithTail(BitString().U(1, 0)));
    const int vui = input.sps->vui_parameters_present_offset;
    const int tail = input.sps->sps_extension_present_offset;
    const int size = static_cast<int>(input.bits.size());
    ASSERT_EQ(input.sps->before_pic_num_samples_offset, 108);
    const auto number = [](int value) { return std::to_string(value); };
    TraceCapture trace(7);
    const Bytes result = kSpsModification.Rewritten(input.nal, *input.sps);
    const std::string last = input.tail_bits() <= 8 ? "0x" : "0x80";
    const int last_bits = std::min(input.tail_bits(), 8);
    EXPECT_THAT(
        trace.Texts(7),
        ElementsAre(
            testing::StartsWith("Called, sps_bb:0x"),
            "num_bits:56 from general_frame_only_constraint_flag to pic_width_in_luma_samples.\n",
            "num_bits:" + number(vui - 108 - 43) +
                " from bit_depth_luma_minus8 to "
                "vui_parameters_present_flag.\n",
            "SpsSodbLength bytes:" + number(size / 8) + "(bits:" + number(size) +
                "). Current offset in bb:" + number(tail) + ", num_bits:" + number(size - tail) +
                ", IsByteBoudary:" + (tail % 8 == 0 ? "TRUE" : "FALSE") + ".\n",
            testing::StartsWith("num_bits:" + number(size - tail) + ", LastByteNumBits:" + number(last_bits) +
                                ", LastByte:" + last),
            "new_sps_nal_bb has bitstream_restriction_flag=0.\n",
            testing::StartsWith("Before Trailing bits, bitbuffer BitOffset:" + number(size - last_bits) +
                                ", StopBitPos:"),
            "Final new SPS num_bits:" + number(size) + ", Bytes:" + number(size / 8) + ".\n",
            "RBSP encapsulation done NewSPSBufferLength:" + number(static_cast<int>(result.size())) + ".\n",
            "Done, bRetCode:\"TRUE\".\n"));
    EXPECT_THAT(trace.messages(), testing::SizeIs(10));
    EXPECT_EQ(trace.messages().front().function, "_modify_sps_parameters");
    EXPECT_EQ(trace.messages().back().function, "H265Lib_modify_sps_NAL");
    EXPECT_EQ(trace.messages().back().file, "sps.cpp");

    trace.Clear();
    input.sps->vui_parameters_present_flag = 0;
    EXPECT_THAT(kSpsModification.Rewritten(input.nal, *input.sps), IsEmpty());
    const std::vector<std::string> texts = trace.Texts(7);
    EXPECT_EQ(texts.at(texts.size() - 2), "Done.\n");
    EXPECT_EQ(texts.back(), "Done, bRetCode:\"FALSE\".\n");

    trace.Clear();
    EXPECT_THAT(kSpsModification.Rewritten({0, 0, 1, 0x42, 1}, *input.sps), IsEmpty());
    EXPECT_THAT(trace.Texts(7), IsEmpty());
}

TEST_F(SpsModification, NullArgumentsAreReportedAndFail) {
    unsigned char *buffer = nullptr;
    UINT length = 0;
    const Bytes &nal = input_.nal;
    const unsigned int size = static_cast<unsigned int>(nal.size());
    bitbuffer_t bb{};
    TraceCapture trace(3);
    EXPECT_EQ(H265Lib_modify_sps_NAL(nullptr, size, input_.sps.get(), &buffer, &length), FALSE);
    EXPECT_EQ(H265Lib_modify_sps_NAL(nal.data(), size, nullptr, &buffer, &length), FALSE);
    EXPECT_EQ(H265Lib_modify_sps_NAL(nal.data(), size, input_.sps.get(), nullptr, &length), FALSE);
    EXPECT_EQ(H265Lib_modify_sps_NAL(nal.data(), size, input_.sps.get(), &buffer, nullptr), FALSE);
    EXPECT_EQ(_modify_sps_parameters(nullptr, 1, input_.sps.get(), &bb, 257), -1);
    EXPECT_EQ(_modify_sps_parameters(&bb, 1, nullptr, &bb, 257), -1);
    EXPECT_EQ(_modify_sps_parameters(&bb, 1, input_.sps.get(), nullptr, 257), -1);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("pBuffer != NULL"), AssertionOf("pBuffer != NULL"),
                            AssertionOf("pSpsElements != NULL"), AssertionOf("pSpsElements != NULL"),
                            AssertionOf("ppNewSpsBuffer != NULL"), AssertionOf("pNewSPSLength != NULL"),
                            AssertionOf("sps_bb != NULL"), AssertionOf("pSpsElements != NULL"),
                            AssertionOf("new_sps_bb != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to get NAL type offset from pBuffer:(nil).\n",
                                            "Failed to set vui parameters SPS NAL!\n"));
    trace.Clear();
    EXPECT_EQ(H265Lib_modify_sps_NAL(nal.data(), 4, input_.sps.get(), &buffer, &length), FALSE);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("buffer_len > 4")));
}

}  // namespace
}  // namespace test
