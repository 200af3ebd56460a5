// A PPS, written down element by element: for the tests of its reader and of its entry point.

#ifndef TESTS_H265D_PARSING_PPS_SYNTAX_H
#define TESTS_H265D_PARSING_PPS_SYNTAX_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "h265d/parsing/pps.h"
#include "support/nal_unit.h"
#include "support/syntax.h"

namespace test {

inline std::string Unreadable(const std::string &element) {
    return "cannot parse " + element + ".\n";
}

inline std::string UnreadableTile(int i) {
    return Unreadable("column_width_minus1[" + std::to_string(i) + "]");
}

// An element's field, and what is reported when it cannot be read.
#define ELEMENT(name) &pps_.name, Unreadable(#name)

enum class Deblocking { kNoControl, kDisabled, kOffsets };

class PpsSyntax : public testing::Test {
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
    void ExplicitTiles(uint64_t columns_minus1, uint64_t rows_minus1) {
        TileCounts(columns_minus1, rows_minus1);
        syntax_.Flag(0, ELEMENT(uniform_spacing_flag));
        for (int i = 0; i < static_cast<int>(std::min<uint64_t>(columns_minus1, H265_PPS_TILE_COLUMNS)); i++)
            syntax_.Ue(static_cast<uint64_t>(i % 3), &pps_.column_width_minus1[i], UnreadableTile(i));
        for (int i = 0; i < static_cast<int>(std::min<uint64_t>(rows_minus1, H265_PPS_TILE_ROWS)); i++)
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
    void WithTiles(uint64_t columns_minus1, uint64_t rows_minus1) {
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

}  // namespace test

#endif
