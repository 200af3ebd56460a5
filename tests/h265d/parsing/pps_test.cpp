#include "h265d/parsing/pps.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>

#include "support/interposed.h"
#include "support/nal_unit.h"
#include "support/silence.h"
#include "support/syntax.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kNoSodb[] = "Failed to get SODB from RBSP. Output buffer is too small.\n";

std::string Unreadable(const std::string &element) {
    return "cannot parse " + element + ".\n";
}

std::string UnreadableTile(int i) {
    return Unreadable("column_width_minus1[" + std::to_string(i) + "]");
}

// An element's field, and what is reported when it cannot be read.
#define ELEMENT(name) &pps_.name, Unreadable(#name)

enum class Deblocking { kNoControl, kDisabled, kOffsets };

class Pps : public testing::Test {
 protected:
    void Head(int tiles_enabled, int cu_qp_delta_enabled = 0) {
        syntax_.Ue(5, ELEMENT(pps_pic_parameter_set_id))
            .Ue(0xFFFF'FFFF, ELEMENT(pps_seq_parameter_set_id))
            .Flag(1, ELEMENT(dependent_slice_segments_enabled_flag))
            .Flag(0, ELEMENT(output_flag_present_flag))
            .U(3, 6, ELEMENT(num_extra_slice_header_bits))
            .Flag(1, ELEMENT(sign_data_hiding_enabled_flag))
            .Flag(0, ELEMENT(cabac_init_present_flag))
            .Ue(3, ELEMENT(num_ref_idx_l0_default_active_minus1))
            .Ue(14, ELEMENT(num_ref_idx_l1_default_active_minus1))
            .Se(-26, ELEMENT(init_qp_minus26))
            .Flag(0, ELEMENT(constrained_intra_pred_flag))
            .Flag(1, ELEMENT(transform_skip_enabled_flag))
            .Flag(cu_qp_delta_enabled, ELEMENT(cu_qp_delta_enabled_flag));
        if (cu_qp_delta_enabled)
            syntax_.Ue(2, ELEMENT(diff_cu_qp_delta_depth));
        syntax_.Se(-12, ELEMENT(pps_cb_qp_offset))
            .Se(12, ELEMENT(pps_cr_qp_offset))
            .Flag(1, ELEMENT(pps_slice_chroma_qp_offsets_present_flag))
            .Flag(0, ELEMENT(weighted_pred_flag))
            .Flag(1, ELEMENT(weighted_bipred_flag))
            .Flag(0, ELEMENT(transquant_bypass_enabled_flag))
            .Flag(tiles_enabled, ELEMENT(tiles_enabled_flag))
            .Flag(1, ELEMENT(entropy_coding_sync_enabled_flag));
    }

    // Reported with "tiles".
    void TileCounts(uint64_t columns_minus1, uint64_t rows_minus1) {
        syntax_.Ue(columns_minus1, &pps_.num_tile_columns_minus1, Unreadable("num_tiles_columns_minus1"))
            .Ue(rows_minus1, &pps_.num_tile_rows_minus1, Unreadable("num_tiles_rows_minus1"));
    }

    void UniformTiles(uint64_t columns_minus1, uint64_t rows_minus1) {
        TileCounts(columns_minus1, rows_minus1);
        syntax_.Flag(1, ELEMENT(uniform_spacing_flag))
            .Flag(0, ELEMENT(loop_filter_across_tiles_enabled_flag));
    }

    // What does not fit the record has no bits. The heights are reported under the name of the widths.
    void ExplicitTiles(int columns_minus1, int rows_minus1) {
        TileCounts(static_cast<uint64_t>(columns_minus1), static_cast<uint64_t>(rows_minus1));
        syntax_.Flag(0, ELEMENT(uniform_spacing_flag));
        for (int i = 0; i < std::min(columns_minus1, H265_PPS_TILE_COLUMNS); i++)
            syntax_.Ue(static_cast<uint64_t>(i % 3), &pps_.column_width_minus1[i], UnreadableTile(i));
        for (int i = 0; i < std::min(rows_minus1, H265_PPS_TILE_ROWS); i++)
            syntax_.Ue(static_cast<uint64_t>(i % 5), &pps_.row_height_minus1[i], UnreadableTile(i));
        syntax_.Flag(1, ELEMENT(loop_filter_across_tiles_enabled_flag));
    }

    void LoopFilters(Deblocking deblocking) {
        syntax_.Flag(1, ELEMENT(pps_loop_filter_across_slices_enabled_flag))
            .Flag(deblocking != Deblocking::kNoControl, ELEMENT(deblocking_filter_control_present_flag));
        if (deblocking == Deblocking::kNoControl)
            return;
        syntax_.Flag(1, ELEMENT(deblocking_filter_override_enabled_flag))
            .Flag(deblocking == Deblocking::kDisabled, ELEMENT(pps_deblocking_filter_disabled_flag));
        if (deblocking == Deblocking::kOffsets)
            syntax_.Se(-6, ELEMENT(pps_beta_offset_div2)).Se(6, ELEMENT(pps_tc_offset_div2));
    }

    // Reported under the name of a neighbour.
    void ScalingListPresence(int present) {
        syntax_.Flag(present, &pps_.pps_scaling_list_data_present_flag,
                     Unreadable("pps_deblocking_filter_disabled_flag"));
    }

    // Calls `list` for each list that is coded.
    template <typename List>
    static void ForEachList(List list) {
        for (int sizeId = 0; sizeId < 4; sizeId++) {
            for (const int matrixId : {0, 1, 2, 3, 4, 5}) {
                if (sizeId < 3 || matrixId % 3 == 0)
                    list(sizeId, matrixId);
            }
        }
    }

    // Of list elements the reports name no index.
    void PredictedList(int sizeId, int matrixId) {
        syntax_
            .Flag(0, &pps_.scaling_list_pred_mode_flag[sizeId][matrixId],
                  Unreadable("scaling_list_pred_mode_flag"))
            .Ue(static_cast<uint64_t>(matrixId), &pps_.scaling_list_pred_matrix_id_delta[sizeId][matrixId],
                Unreadable("scaling_list_pred_matrix_id_delta"));
    }

    // The first deltas are given, the others 0.
    void ExplicitList(int sizeId, int matrixId, int dc_coef_minus8, const std::vector<int> &deltas) {
        syntax_.Flag(1, &pps_.scaling_list_pred_mode_flag[sizeId][matrixId],
                     Unreadable("scaling_list_pred_mode_flag"));
        if (sizeId > 1)
            syntax_.Se(dc_coef_minus8, &pps_.scaling_list_dc_coef_minus8[sizeId - 2][matrixId],
                       Unreadable("scaling_list_dc_coef_minus8"));
        for (size_t i = 0; i < (sizeId == 0 ? 16u : 64u); i++)
            syntax_.Se(i < deltas.size() ? deltas[i] : 0, kNotKept, Unreadable("scaling_list_delta_coef"));
    }

    void Tail(int extension_present) {
        syntax_.Flag(1, ELEMENT(lists_modification_present_flag))
            .Ue(4, ELEMENT(log2_parallel_merge_level_minus2))
            .Flag(1, ELEMENT(slice_segment_header_extension_present_flag))
            .Flag(extension_present, ELEMENT(pps_extension_present_flag));
    }

    // Bit 3 of `flags` is the range extension, bit 0 the SCC extension.
    void Extension(int flags, uint64_t four_bits) {
        syntax_.Flag(flags >> 3 & 1, ELEMENT(pps_range_extension_flag))
            .Flag(flags >> 2 & 1, ELEMENT(pps_multilayer_extension_flag))
            .Flag(flags >> 1 & 1, ELEMENT(pps_3d_extension_flag))
            .Flag(flags & 1, ELEMENT(pps_scc_extension_flag))
            .U(4, four_bits, ELEMENT(pps_extension_4bits));
    }

    // A PPS that turns everything off, up to its extension.
    void Minimal(int extension_present = 0) {
        Head(0);
        LoopFilters(Deblocking::kNoControl);
        ScalingListPresence(0);
        Tail(extension_present);
    }

    // A whole PPS around the tiles.
    void WithTiles(int columns_minus1, int rows_minus1) {
        syntax_ = {};
        Head(1);
        ExplicitTiles(columns_minus1, rows_minus1);
        LoopFilters(Deblocking::kNoControl);
        ScalingListPresence(0);
        Tail(0);
    }

    void Sweep() {
        syntax_.SweepTruncations(&pps_,
                                 [](bitbuffer_t *bb, pps_h265_t *pps) { return _parse_pps(bb, pps) == 0; });
    }

    // Parses all bits into the record as it is.
    int Parse() {
        bytes_ = syntax_.bits().Bytes();
        bb_ = {bytes_.data(), 0, static_cast<unsigned int>(syntax_.bits().size())};
        return _parse_pps(&bb_, &pps_);
    }

    void ExpectParsedToTheLastBit() {
        ASSERT_EQ(Parse(), 0);
        syntax_.ExpectFields(syntax_.bits().size());
        EXPECT_EQ(bb_.bit_offset, syntax_.bits().size());
    }

    Bytes Rbsp() const { return BitString(syntax_.bits()).TrailingBits().Bytes(); }

    // The NAL unit, its payload filled up so that header and payload have `length` bytes.
    Bytes NalUnitOfLength(size_t length, int start_code_length = 4) const {
        Bytes nal = NalUnit(34, Rbsp(), start_code_length);
        nal.resize(static_cast<size_t>(start_code_length) + length, 0xFF);
        return nal;
    }

    BOOL ParseNal(const Bytes &nal) {
        return H265Lib_Parse_pps_nal(nal.data(), static_cast<int>(nal.size()), &pps_);
    }

    Syntax syntax_;
    pps_h265_t pps_{};
    Bytes bytes_;
    bitbuffer_t bb_{};
};

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
        int columns_minus1, rows_minus1;
        size_t columns_reported, rows_reported;
    };
    for (const Case &c : {Case{480, 270, 0, 0}, Case{481, 271, 0, 0}, Case{482, 271, 1, 0},
                          Case{481, 272, 0, 1}, Case{1054, 1054, 573, 783}}) {
        SCOPED_TRACE(std::to_string(c.columns_minus1) + "x" + std::to_string(c.rows_minus1));
        WithTiles(c.columns_minus1, c.rows_minus1);
        std::vector<std::string> assertions(c.columns_reported, "Too many tiles columns!\n");
        assertions.insert(assertions.end(), c.rows_reported, "Too many tiles rows!\n");
        const TraceCapture trace(3);
        ExpectParsedToTheLastBit();
        EXPECT_EQ(trace.Assertions(), assertions);
        EXPECT_THAT(trace.Errors(), IsEmpty());
        for (const TracedMessage &message : trace.messages())
            EXPECT_EQ(message.function, "_parse_pps");
        InSilence([this] { ExpectParsedToTheLastBit(); });
    }
}

TEST_F(Pps, MoreTilesThanAnyLevelAllowsAreUnreadable) {
    for (const uint64_t count : {uint64_t{1055}, uint64_t{0xFFFF'FFFE}, uint64_t{0xFFFF'FFFF}}) {
        for (const bool columns : {true, false}) {
            SCOPED_TRACE(std::to_string(count) + (columns ? " columns" : " rows"));
            syntax_ = {};
            Head(1);
            if (columns)
                UniformTiles(count, 0);
            else
                UniformTiles(1054, count);
            std::memset(&pps_, kPrefill, sizeof pps_);
            const TraceCapture trace;
            EXPECT_EQ(Parse(), -1);
            EXPECT_THAT(trace.Errors(), ElementsAre(Unreadable(columns ? "num_tiles_columns_minus1"
                                                                       : "num_tiles_rows_minus1")));
            EXPECT_THAT(trace.Assertions(), IsEmpty());
            EXPECT_EQ(pps_.num_tile_columns_minus1, columns ? PrefilledValue<UINT64>() : 1054);
            EXPECT_EQ(pps_.num_tile_rows_minus1, PrefilledValue<UINT64>());
        }
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

// ---- NAL units -------------------------------------------------------------------------------------------

TEST_F(Pps, NalUnitsWithEitherStartCodeParseWithoutTheHeap) {
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

TEST_F(Pps, TheTypeOfTheNalUnitIsNotLookedAt) {
    Minimal();
    EXPECT_TRUE(ParseNal(NalUnit(1, Rbsp())));
}

TEST_F(Pps, EmulationPreventionIsRemoved) {
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

TEST_F(Pps, NalUnitsOfAtMost256BytesBehindTheStartCodeAreAccepted) {
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

TEST_F(Pps, ShortInputIsRefusedUnseen) {
    const Bytes nal = {0xFF, 0xFF, 0xFF, 0xFF};
    for (const int length : {4, 0, -1, INT32_MIN}) {
        const TraceCapture trace;
        EXPECT_FALSE(H265Lib_Parse_pps_nal(nal.data(), length, &pps_));
        EXPECT_THAT(trace.Errors(),
                    ElementsAre("buffer_len:" + std::to_string(length) + " is too small. Malformed NAL.\n"));
        EXPECT_EQ(trace.messages().size(), 1u);
    }
}

TEST_F(Pps, InputWithoutStartCodeIsRefused) {
    const Bytes nal = {0, 0, 2, 1, 0x44, 1, 0xC0};
    char text[80];
    std::snprintf(text, sizeof text, "Failed to parse pps nal! buffer:%p.\n",
                  static_cast<const void *>(nal.data()));
    const TraceCapture trace;
    EXPECT_FALSE(ParseNal(nal));
    EXPECT_THAT(trace.Errors(), ElementsAre(text));
    EXPECT_EQ(trace.messages().back().function, "H265Lib_Parse_pps_nal");
}

TEST_F(Pps, AHeaderWithoutPayloadIsRefused) {
    for (const Bytes &nal : {Bytes{0, 0, 1, 0x44, 1}, Bytes{0, 0, 0, 1, 0x44}}) {
        const TraceCapture trace(3);
        EXPECT_FALSE(ParseNal(nal));
        EXPECT_THAT(trace.Errors(), ElementsAre(kNoSodb));
    }
}

TEST_F(Pps, AnUnreadableElementIsReportedOnceMoreByTheEntryPoint) {
    const auto expect_failure = [this] { EXPECT_FALSE(ParseNal({0, 0, 1, 0x44, 1, 0xC0})); };
    const TraceCapture trace(3);
    expect_failure();
    EXPECT_THAT(trace.Errors(),
                ElementsAre(Unreadable("cabac_init_present_flag"), "Failed to parse PPS NAL!\n"));
    EXPECT_EQ(trace.messages()[0].function, "_parse_pps");
    EXPECT_EQ(trace.messages()[1].function, "H265Lib_Parse_pps_nal");
    InSilence(expect_failure);
}

TEST_F(Pps, NullArgumentsAreReportedAndFail) {
    Minimal();
    const Bytes nal = NalUnit(34, Rbsp());
    TraceCapture trace;
    EXPECT_FALSE(H265Lib_Parse_pps_nal(nullptr, 100, &pps_));
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("buffer != NULL")));
    EXPECT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, "H265Lib_Parse_pps_nal");
    trace.Clear();
    EXPECT_FALSE(H265Lib_Parse_pps_nal(nal.data(), static_cast<int>(nal.size()), nullptr));
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pps != NULL")));
    EXPECT_EQ(trace.messages().size(), 1u);
}

}  // namespace
}  // namespace test
