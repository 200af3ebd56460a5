#include "h265d/parsing/pps.h"

#include <gmock/gmock.h>

#include "h265d/parsing/pps_syntax.h"
#include "support/silence.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class Pps : public PpsSyntax {};

// ---- syntax ----------------------------------------------------------------------------------------------

TEST_F(Pps, WithEverythingOffLeavesTheRestOfTheRecord) {
    Minimal();
    Sweep();
    for (const int flag :
         {pps_.uniform_spacing_flag, pps_.loop_filter_across_tiles_enabled_flag,
          pps_.deblocking_filter_override_enabled_flag, pps_.pps_deblocking_filter_disabled_flag,
          pps_.scaling_list_pred_mode_flag[0][0], pps_.pps_range_extension_flag,
          pps_.pps_multilayer_extension_flag, pps_.pps_3d_extension_flag, pps_.pps_scc_extension_flag})
        EXPECT_EQ(flag, PrefilledValue<int>());
    for (const UINT64 value : {pps_.diff_cu_qp_delta_depth, pps_.num_tile_columns_minus1,
                               pps_.num_tile_rows_minus1, pps_.column_width_minus1[0],
                               pps_.row_height_minus1[0], pps_.scaling_list_pred_matrix_id_delta[0][0]})
        EXPECT_EQ(value, PrefilledValue<UINT64>());
    for (const INT64 value : {pps_.pps_beta_offset_div2, pps_.pps_tc_offset_div2,
                              pps_.scaling_list_dc_coef_minus8[0][0], pps_.scaling_list[0][0][0]})
        EXPECT_EQ(value, PrefilledValue<INT64>());
    EXPECT_EQ(pps_.pps_extension_4bits, kPrefill);
}

TEST_F(Pps, WithEverythingOn) {
    Head(1, 1);
    ExplicitTiles(3, 4);
    LoopFilters(Deblocking::kOffsets);
    ScalingListPresence(1);
    ForEachList([this](int sizeId, int matrixId) { PredictedList(sizeId, matrixId); });
    Tail(1);
    Extension(0b1010, 9);
    syntax_.Rest(BitString().U(5, 0b01101));
    Sweep();
    EXPECT_EQ(pps_.pps_extension_data_flag, 1);
    EXPECT_EQ(pps_.column_width_minus1[3], PrefilledValue<UINT64>());
    EXPECT_EQ(pps_.row_height_minus1[4], PrefilledValue<UINT64>());
}

TEST_F(Pps, UniformTilesHaveNoWidths) {
    Head(1);
    UniformTiles(19, 21);
    LoopFilters(Deblocking::kNoControl);
    ScalingListPresence(0);
    Tail(0);
    Sweep();
    EXPECT_EQ(pps_.column_width_minus1[0], PrefilledValue<UINT64>());
    EXPECT_EQ(pps_.row_height_minus1[0], PrefilledValue<UINT64>());
}

TEST_F(Pps, DisabledDeblockingHasNoOffsets) {
    Head(0);
    LoopFilters(Deblocking::kDisabled);
    ScalingListPresence(0);
    Tail(0);
    Sweep();
    EXPECT_EQ(pps_.pps_beta_offset_div2, PrefilledValue<INT64>());
    EXPECT_EQ(pps_.pps_tc_offset_div2, PrefilledValue<INT64>());
}

TEST_F(Pps, TracesItsEntryOnly) {
    Minimal();
    const TraceCapture trace;
    ExpectParsedToTheLastBit();
    ASSERT_EQ(trace.messages().size(), 1u);
    EXPECT_THAT(trace.Texts(7), ElementsAre("Called.\n"));
    EXPECT_EQ(trace.messages()[0].function, "_parse_pps");
    EXPECT_EQ(trace.messages()[0].file, "pps.cpp");
}

TEST_F(Pps, ReportsInTheNameOfTheReader) {
    Minimal();
    syntax_ = Syntax().Rest(syntax_.bits().Prefix(3));
    const TraceCapture trace(3);
    EXPECT_EQ(Parse(), -1);
    ASSERT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, "_parse_pps");
    EXPECT_EQ(trace.messages()[0].file, "pps.cpp");
}

TEST_F(Pps, NullArgumentsOfTheReaderFail) {
    const TraceCapture trace;
    EXPECT_EQ(_parse_pps(nullptr, &pps_), -1);
    EXPECT_EQ(_parse_pps(&bb_, nullptr), -1);
    EXPECT_THAT(trace.Errors(), IsEmpty());
}

// ---- scaling lists ---------------------------------------------------------------------------------------

TEST_F(Pps, PredictedScalingListsLeaveTheCoefficients) {
    Head(0);
    LoopFilters(Deblocking::kNoControl);
    ScalingListPresence(1);
    ForEachList([this](int sizeId, int matrixId) { PredictedList(sizeId, matrixId); });
    Tail(0);
    Sweep();
    for (const auto &size : pps_.scaling_list) {
        for (const auto &list : size)
            EXPECT_THAT(list, Each(PrefilledValue<INT64>()));
    }
    for (const auto &row : pps_.scaling_list_dc_coef_minus8)
        EXPECT_THAT(row, Each(PrefilledValue<INT64>()));
    for (const int matrixId : {1, 2, 4, 5})
        EXPECT_EQ(pps_.scaling_list_pred_mode_flag[3][matrixId], PrefilledValue<int>());
}

TEST_F(Pps, ExplicitScalingListsRunModulo256) {
    const auto delta = [](int matrixId) { return matrixId - 2; };
    const auto dc = [](int sizeId, int matrixId) { return 20 * sizeId - 8 * matrixId; };
    Head(0);
    LoopFilters(Deblocking::kNoControl);
    ScalingListPresence(1);
    ForEachList([&](int sizeId, int matrixId) {
        ExplicitList(sizeId, matrixId, dc(sizeId, matrixId), std::vector<int>(64, delta(matrixId)));
    });
    Tail(0);
    Sweep();

    ForEachList([&](int sizeId, int matrixId) {
        SCOPED_TRACE(std::to_string(sizeId) + "," + std::to_string(matrixId));
        const int start = sizeId > 1 ? dc(sizeId, matrixId) + 8 : 8;
        for (int i = 0; i < 64; i++) {
            const int coefficient = (start + (i + 1) * delta(matrixId) + 1024) % 256;
            EXPECT_EQ(pps_.scaling_list[sizeId][matrixId][i],
                      sizeId > 0 || i < 16 ? coefficient : PrefilledValue<INT64>());
        }
    });
    for (const int matrixId : {1, 2, 4, 5}) {
        EXPECT_EQ(pps_.scaling_list_dc_coef_minus8[1][matrixId], PrefilledValue<INT64>());
        EXPECT_THAT(pps_.scaling_list[3][matrixId], Each(PrefilledValue<INT64>()));
    }
    for (const int row : {2, 3})
        EXPECT_THAT(pps_.scaling_list_dc_coef_minus8[row], Each(PrefilledValue<INT64>()));
    EXPECT_EQ(pps_.scaling_list_pred_matrix_id_delta[0][0], PrefilledValue<UINT64>());
}

TEST_F(Pps, RemaindersOfCoefficientsHaveTheSignOfTheDividend) {
    Head(0);
    LoopFilters(Deblocking::kNoControl);
    ScalingListPresence(1);
    ForEachList([this](int sizeId, int matrixId) {
        if (sizeId == 0 && matrixId == 0)
            ExplicitList(0, 0, 0, {-1000, 0, 1000, INT32_MAX, -INT32_MAX, 0});
        else if (sizeId == 3 && matrixId == 3)
            ExplicitList(3, 3, -INT32_MAX, {0, -1});
        else
            PredictedList(sizeId, matrixId);
    });
    Tail(0);
    ExpectParsedToTheLastBit();
    const INT64 *list = pps_.scaling_list[0][0];
    EXPECT_THAT(std::vector<INT64>(list, list + 7), ElementsAre(-224, 32, 8, 7, -248, 8, 8));
    EXPECT_EQ(pps_.scaling_list[3][3][0], -247);  // -(2^31 - 1) + 8 + 256
    EXPECT_EQ(pps_.scaling_list[3][3][1], 8);
}

TEST_F(Pps, CoefficientsInFrontOfACutAreKept) {
    Head(0);
    LoopFilters(Deblocking::kNoControl);
    ScalingListPresence(1);
    ExplicitList(0, 0, 0, std::vector<int>(64, 1));
    const size_t size = syntax_.bits().size();  // the last delta ends here, each has three bits
    syntax_ = Syntax().Rest(syntax_.bits().Prefix(size - 1));
    std::memset(&pps_, kPrefill, sizeof pps_);
    const TraceCapture trace(3);
    EXPECT_EQ(Parse(), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre(Unreadable("scaling_list_delta_coef")));
    EXPECT_EQ(pps_.scaling_list[0][0][14], 23);
    EXPECT_EQ(pps_.scaling_list[0][0][15], PrefilledValue<INT64>());
}

// ---- tiles -----------------------------------------------------------------------------------------------

TEST_F(Pps, EachTileBeyondTheBoundIsReportedAndHasNoBits) {
    struct Case {
        uint64_t columns_minus1, rows_minus1;
        size_t columns_reported, rows_reported;
    };
    for (const Case &c : {Case{480, 270, 0, 0}, Case{481, 271, 0, 0}, Case{482, 271, 1, 0},
                          Case{481, 272, 0, 1}, Case{1054, 1054, 573, 783},
                          // what no level allows: a few bytes must not keep their parser busy with reports
                          Case{1055, 1055, 573, 783}, Case{0xFFFF'FFFE, 0xFFFF'FFFE, 573, 783}}) {
        SCOPED_TRACE(std::to_string(c.columns_minus1) + "x" + std::to_string(c.rows_minus1));
        WithTiles(c.columns_minus1, c.rows_minus1);
        std::vector<std::string> assertions(c.columns_reported, "Too many tiles columns!\n");
        assertions.insert(assertions.end(), c.rows_reported, "Too many tiles rows!\n");
        const TraceCapture trace(3);
        ExpectParsedToTheLastBit();
        EXPECT_EQ(trace.Assertions(), assertions);
        EXPECT_THAT(trace.Errors(), IsEmpty());
        EXPECT_EQ(pps_.num_tile_columns_minus1, c.columns_minus1);
        EXPECT_EQ(pps_.num_tile_rows_minus1, c.rows_minus1);
        for (const TracedMessage &message : trace.messages())
            EXPECT_EQ(message.function, "_parse_pps");
        InSilence([this] { ExpectParsedToTheLastBit(); });
    }
}

TEST_F(Pps, AnyNumberOfUniformTilesIsTaken) {
    for (const uint64_t count : {uint64_t{1055}, uint64_t{0xFFFF'FFFE}}) {
        syntax_ = {};
        Head(1);
        UniformTiles(count, count - 1);
        LoopFilters(Deblocking::kNoControl);
        ScalingListPresence(0);
        Tail(0);
        const TraceCapture trace(3);
        ExpectParsedToTheLastBit();
        EXPECT_THAT(trace.messages(), IsEmpty());
        EXPECT_EQ(pps_.num_tile_columns_minus1, count);
        EXPECT_EQ(pps_.num_tile_rows_minus1, count - 1);
    }
}

// ---- extensions ------------------------------------------------------------------------------------------

// In the order of the bits of Extension().
std::vector<std::string> Notices(int flags) {
    std::vector<std::string> notices;
    if (flags & 8)
        notices.push_back("parsing of pps_range_extension_flag is NOT done.");
    if (flags & 4)
        notices.push_back("parsing of pps_multilayer_extension is NOT done.");
    if (flags & 2)
        notices.push_back("parsing of pps_3d_extension is NOT done.");
    if (flags & 1)
        notices.push_back("parsing of pps_scc_extension is NOT done.");
    return notices;
}

TEST_F(Pps, ExtensionsAreNoticedAndNotRead) {
    for (int flags = 0; flags < 16; flags++) {
        SCOPED_TRACE(flags);
        syntax_ = {};
        Minimal(1);
        Extension(flags, 0);
        const size_t read = syntax_.bits().size();
        syntax_.Rest(BitString().U(9, 0x155));
        const TraceCapture trace(6);
        EXPECT_EQ(Parse(), 0);
        EXPECT_EQ(bb_.bit_offset, read);
        EXPECT_EQ(trace.Texts(4), Notices(flags));
        EXPECT_EQ(trace.messages().size(), trace.Texts(4).size());
    }
}

TEST_F(Pps, ExtensionDataAreCountedToTheLastBit) {
    for (const int flags : {0, 0b1000}) {
        for (const uint64_t last : {uint64_t{0}, uint64_t{1}}) {
            syntax_ = {};
            Minimal(1);
            Extension(flags, 15);
            syntax_.Rest(BitString().U(64, 1).U(1, last));
            const TraceCapture trace(6);
            EXPECT_EQ(Parse(), 0);
            EXPECT_EQ(bb_.bit_offset, bb_.num_bits);
            EXPECT_EQ(trace.Texts(4), Notices(flags));
            EXPECT_THAT(trace.Texts(6), ElementsAre("pps_extension_data_flag has 65 bits.\n"));
            EXPECT_THAT(trace.Errors(), IsEmpty());
            EXPECT_EQ(pps_.pps_extension_data_flag, static_cast<int>(last));
        }
    }
}

TEST_F(Pps, NoExtensionDataCountAs0) {
    Minimal(1);
    Extension(0, 1);
    pps_.pps_extension_data_flag = 7;
    const TraceCapture trace(6);
    EXPECT_EQ(Parse(), 0);
    EXPECT_THAT(trace.Texts(6), ElementsAre("pps_extension_data_flag has 0 bits.\n"));
    EXPECT_EQ(pps_.pps_extension_data_flag, 7);
}

TEST_F(Pps, TrailingBitsCountAsExtensionData) {
    Minimal(1);
    Extension(0, 1);
    const Bytes nal = NalUnit(34, Rbsp());
    const size_t trailing = Rbsp().size() * 8 - syntax_.bits().size();
    pps_.pps_extension_data_flag = 7;
    const TraceCapture trace(6);
    EXPECT_TRUE(ParseNal(nal));
    EXPECT_THAT(trace.Texts(6),
                ElementsAre("pps_extension_data_flag has " + std::to_string(trailing) + " bits.\n"));
    EXPECT_EQ(pps_.pps_extension_data_flag, trailing == 1);
}

TEST_F(Pps, ExtensionFieldsOfAnEarlierPpsDecideAsWell) {
    Minimal(0);
    syntax_.Rest(BitString().U(6, 0b100000));
    pps_.pps_range_extension_flag = pps_.pps_multilayer_extension_flag = 1;
    pps_.pps_3d_extension_flag = pps_.pps_scc_extension_flag = 1;
    pps_.pps_extension_4bits = 5;
    const TraceCapture trace(6);
    EXPECT_EQ(Parse(), 0);
    EXPECT_EQ(trace.Texts(4), Notices(15));
    EXPECT_THAT(trace.Texts(6), ElementsAre("pps_extension_data_flag has 6 bits.\n"));
    EXPECT_EQ(pps_.pps_extension_4bits, 5);
}

}  // namespace
}  // namespace test
