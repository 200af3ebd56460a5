#include <gmock/gmock.h>

#include <cstdio>

#include "h265d/parsing/pps_syntax.h"
#include "support/interposed.h"
#include "support/silence.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kNoSodb[] = "Failed to get SODB from RBSP. Output buffer is too small.\n";

class PpsNalUnit : public PpsSyntax {};

TEST_F(PpsNalUnit, NalUnitsWithEitherStartCodeParseWithoutTheHeap) {
    Minimal(1);
    Extension(0, 0);
    for (const int start_code_length : {3, 4}) {
        pps_ = {};
        const Bytes nal = NalUnit(34, Rbsp(), start_code_length);
        const FailingAllocations allocations(1);
        const TraceCapture trace(6);
        EXPECT_TRUE(ParseNal(nal));
        EXPECT_THAT(trace.messages(), IsEmpty());
        EXPECT_EQ(FailingAllocations::Calls(), 0);
        syntax_.ExpectFields(syntax_.bits().size());
    }
}

TEST_F(PpsNalUnit, TheTypeOfTheNalUnitIsNotLookedAt) {
    Minimal();
    EXPECT_TRUE(ParseNal(NalUnit(1, Rbsp())));
}

TEST_F(PpsNalUnit, EmulationPreventionIsRemoved) {
    Head(1);
    TileCounts(1, 0);
    syntax_.Flag(0, ELEMENT(uniform_spacing_flag))
        .Ue(0x8000'0000, &pps_.column_width_minus1[0], UnreadableTile(0))
        .Flag(1, ELEMENT(loop_filter_across_tiles_enabled_flag));
    LoopFilters(Deblocking::kNoControl);
    ScalingListPresence(0);
    Tail(0);
    ASSERT_GT(Encapsulated(Rbsp()).size(), Rbsp().size());
    EXPECT_TRUE(ParseNal(NalUnit(34, Rbsp())));
    syntax_.ExpectFields(syntax_.bits().size());
}

TEST_F(PpsNalUnit, NalUnitsOfAtMost256BytesBehindTheStartCodeAreAccepted) {
    Minimal();
    for (const int start_code_length : {3, 4}) {
        EXPECT_TRUE(ParseNal(NalUnitOfLength(256, start_code_length)));
        const ControlledClock clock(FreshTime());
        const TraceCapture trace;
        EXPECT_FALSE(ParseNal(NalUnitOfLength(257, start_code_length)));
        EXPECT_THAT(trace.Errors(), ElementsAre("Deencapsulation cannot be done as InputBufferLength:257 is "
                                                "longer than OutputBufferLength:256.\n",
                                                kNoSodb));
        EXPECT_EQ(trace.messages().back().function, "H265Lib_Parse_pps_nal");
    }
}

TEST_F(PpsNalUnit, ShortInputIsRefusedUnseen) {
    const Bytes nal = {0xFF, 0xFF, 0xFF, 0xFF};
    for (const int length : {4, 0, -1, INT32_MIN}) {
        const TraceCapture trace;
        EXPECT_FALSE(H265Lib_Parse_pps_nal(nal.data(), length, &pps_));
        EXPECT_THAT(trace.Errors(),
                    ElementsAre("buffer_len:" + std::to_string(length) + " is too small. Malformed NAL.\n"));
        EXPECT_EQ(trace.messages().size(), 1u);
    }
}

TEST_F(PpsNalUnit, InputWithoutStartCodeIsRefused) {
    const Bytes nal = {0, 0, 2, 1, 0x44, 1, 0xC0};
    char text[80];
    std::snprintf(text, sizeof text, "Failed to parse pps nal! buffer:%p.\n",
                  static_cast<const void *>(nal.data()));
    const TraceCapture trace;
    EXPECT_FALSE(ParseNal(nal));
    EXPECT_THAT(trace.Errors(), ElementsAre(text));
    EXPECT_EQ(trace.messages().back().function, "H265Lib_Parse_pps_nal");
}

TEST_F(PpsNalUnit, AHeaderWithoutPayloadIsRefused) {
    for (const Bytes &nal : {Bytes{0, 0, 1, 0x44, 1}, Bytes{0, 0, 0, 1, 0x44}}) {
        const TraceCapture trace(3);
        EXPECT_FALSE(ParseNal(nal));
        EXPECT_THAT(trace.Errors(), ElementsAre(kNoSodb));
    }
}

TEST_F(PpsNalUnit, AnUnreadableElementIsReportedOnceMoreByTheEntryPoint) {
    const auto expect_failure = [this] { EXPECT_FALSE(ParseNal({0, 0, 1, 0x44, 1, 0xC0})); };
    const TraceCapture trace(3);
    expect_failure();
    EXPECT_THAT(trace.Errors(),
                ElementsAre(Unreadable("cabac_init_present_flag"), "Failed to parse PPS NAL!\n"));
    EXPECT_EQ(trace.messages()[0].function, "_parse_pps");
    EXPECT_EQ(trace.messages()[1].function, "H265Lib_Parse_pps_nal");
    InSilence(expect_failure);
}

TEST_F(PpsNalUnit, NullArgumentsAreReportedAndFail) {
    Minimal();
    const Bytes nal = NalUnit(34, Rbsp());
    TraceCapture trace(3);
    EXPECT_FALSE(H265Lib_Parse_pps_nal(nullptr, 100, &pps_));
    EXPECT_EQ(trace.messages().front().function, "H265Lib_Parse_pps_nal");
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("buffer != NULL"), AssertionOf("pBuffer != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to parse pps nal! buffer:(nil).\n"));
    trace.Clear();
    EXPECT_FALSE(H265Lib_Parse_pps_nal(nal.data(), static_cast<int>(nal.size()), nullptr));
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pps != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to parse PPS NAL!\n"));
}

}  // namespace
}  // namespace test
