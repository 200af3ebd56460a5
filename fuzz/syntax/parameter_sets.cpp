// Generated VPS, SPS and PPS, ITU-T H.265 clauses 7.3.2.1 to 7.3.2.3.

#include "support/nal_cases.h"
#include "support/nal_unit.h"
#include "syntax/nal_units.h"
#include "syntax/shared_structures.h"

namespace fuzz {
namespace {

Bytes NalUnitOf(int nal_unit_type, SyntaxWriter *w) {
    const int start_code_length = w->input().Flag() ? 4 : 3;
    return test::NalUnit(nal_unit_type, w->bits().TrailingBits().Bytes(), start_code_length);
}

void WriteSubLayerOrdering(SyntaxWriter *w, unsigned int max_sub_layers_minus1) {
    const bool sub_layer_ordering_info_present_flag = w->Flag();
    for (unsigned int i = sub_layer_ordering_info_present_flag ? 0 : max_sub_layers_minus1;
         i <= max_sub_layers_minus1; i++) {
        w->Ue();  // max_dec_pic_buffering_minus1
        w->Ue();  // max_num_reorder_pics
        w->Ue();  // max_latency_increase_plus1
    }
}

void WriteVpsTiming(SyntaxWriter *w, unsigned int max_sub_layers_minus1) {
    w->U(64);       // vps_num_units_in_tick, vps_time_scale
    if (w->Flag())  // vps_poc_proportional_to_timing_flag
        w->Ue();
    const uint32_t vps_num_hrd_parameters = w->Ue(12);
    HrdCommon hrd;
    for (uint32_t i = 0; i < vps_num_hrd_parameters && i < 1024; i++) {
        w->Ue();  // hrd_layer_set_idx
        const bool cprms_present_flag = i == 0 || w->Flag();
        WriteHrd(w, cprms_present_flag, max_sub_layers_minus1, &hrd);
        if (w->input().IsUsedUp())
            break;
    }
}

// Mostly as many as streams have, sometimes more than the record holds.
uint32_t WriteTileCount(SyntaxWriter *w) {
    return w->Ue(w->input().Byte() < 192 ? 21 : 600);
}

void WriteTiles(SyntaxWriter *w) {
    const uint32_t num_tile_columns_minus1 = WriteTileCount(w);
    const uint32_t num_tile_rows_minus1 = WriteTileCount(w);
    if (!w->Flag()) {  // uniform_spacing_flag
        for (uint32_t i = 0; i < num_tile_columns_minus1 + num_tile_rows_minus1 && i < 2048; i++)
            w->Ue();
    }
    w->Flag();  // loop_filter_across_tiles_enabled_flag
}

}  // namespace

Bytes GenerateVps(FuzzInput *input) {
    SyntaxWriter w(input);
    w.U(12);  // vps_video_parameter_set_id to vps_max_layers_minus1
    const auto vps_max_sub_layers_minus1 = static_cast<unsigned int>(w.Put(3, input->Below(8)));
    w.Flag();  // vps_temporal_id_nesting_flag
    w.Put(16, 0xFFFF);
    WriteProfileTierLevel(&w, vps_max_sub_layers_minus1);
    WriteSubLayerOrdering(&w, vps_max_sub_layers_minus1);
    const uint64_t vps_max_layer_id = w.Put(6, input->Flag() ? input->Below(10) : input->Below(64));
    const uint32_t vps_num_layer_sets_minus1 = w.Ue(input->Flag() ? 8 : 200);
    for (uint32_t i = 1; i <= vps_num_layer_sets_minus1 && i < 1024; i++)
        w.U(static_cast<unsigned int>(vps_max_layer_id) + 1);  // layer_id_included_flag
    if (w.Flag())                                              // vps_timing_info_present_flag
        WriteVpsTiming(&w, vps_max_sub_layers_minus1);
    if (w.Flag())  // vps_extension_flag
        w.U(24);
    return NalUnitOf(kVpsNut, &w);
}

Bytes GenerateSps(FuzzInput *input) {
    constexpr uint32_t kYuv444 = 3;
    SyntaxWriter w(input);
    w.U(4);  // sps_video_parameter_set_id
    const auto sps_max_sub_layers_minus1 = static_cast<unsigned int>(w.Put(3, input->Below(8)));
    w.Flag();  // sps_temporal_id_nesting_flag
    WriteProfileTierLevel(&w, sps_max_sub_layers_minus1);
    w.Ue(15);                // sps_seq_parameter_set_id
    if (w.Ue(3) == kYuv444)  // chroma_format_idc
        w.Flag();            // separate_colour_plane_flag
    w.Ue();                  // pic_width_in_luma_samples
    w.Ue();                  // pic_height_in_luma_samples
    if (w.Flag()) {          // conformance_window_flag
        for (int side = 0; side < 4; side++)
            w.Ue();
    }
    w.Ue(8);  // bit_depth_luma_minus8
    w.Ue(8);  // bit_depth_chroma_minus8
    const uint32_t log2_max_pic_order_cnt_lsb_minus4 = w.Ue(input->Flag() ? 12 : 28);
    WriteSubLayerOrdering(&w, sps_max_sub_layers_minus1);
    for (int element = 0; element < 6; element++)
        w.Ue(4);               // block sizes and depths
    if (w.Flag() && w.Flag())  // scaling_list_enabled_flag, sps_scaling_list_data_present_flag
        WriteScalingListData(&w);
    w.U(2);          // amp_enabled_flag, sample_adaptive_offset_enabled_flag
    if (w.Flag()) {  // pcm_enabled_flag
        w.U(8);
        w.Ue(2);
        w.Ue(2);
        w.Flag();
    }
    WriteShortTermRefPicSets(&w);
    if (w.Flag()) {  // long_term_ref_pics_present_flag
        const uint32_t num_long_term_ref_pics_sps = w.Ue(33);
        for (uint32_t i = 0; i < num_long_term_ref_pics_sps && i < 33; i++) {
            w.U(log2_max_pic_order_cnt_lsb_minus4 % 29 + 4);
            w.Flag();
        }
    }
    w.U(2);        // sps_temporal_mvp_enabled_flag, strong_intra_smoothing_enabled_flag
    if (w.Flag())  // vui_parameters_present_flag
        WriteVui(&w, sps_max_sub_layers_minus1);
    if (w.Flag()) {  // sps_extension_present_flag
        const bool sps_range_extension_flag = w.Flag();
        w.Put(3, input->Below(16) == 0 ? 1 : 0);  // the extensions that are not read
        const uint64_t sps_extension_4bits = w.U(4);
        if (sps_range_extension_flag)
            w.U(9);
        if (sps_extension_4bits != 0)
            w.U(24);
    }
    return NalUnitOf(kSpsNut, &w);
}

Bytes GeneratePps(FuzzInput *input) {
    SyntaxWriter w(input);
    w.Ue(63);      // pps_pic_parameter_set_id
    w.Ue(15);      // pps_seq_parameter_set_id
    w.U(7);        // dependent_slice_segments_enabled_flag to cabac_init_present_flag
    w.Ue(14);      // num_ref_idx_l0_default_active_minus1
    w.Ue(14);      // num_ref_idx_l1_default_active_minus1
    w.Se();        // init_qp_minus26
    w.U(2);        // constrained_intra_pred_flag, transform_skip_enabled_flag
    if (w.Flag())  // cu_qp_delta_enabled_flag
        w.Ue(3);   // diff_cu_qp_delta_depth
    w.Se();        // pps_cb_qp_offset
    w.Se();        // pps_cr_qp_offset
    w.U(4);        // pps_slice_chroma_qp_offsets_present_flag to transquant_bypass_enabled_flag
    const bool tiles_enabled_flag = w.Flag();
    w.Flag();  // entropy_coding_sync_enabled_flag
    if (tiles_enabled_flag)
        WriteTiles(&w);
    w.Flag();             // pps_loop_filter_across_slices_enabled_flag
    if (w.Flag()) {       // deblocking_filter_control_present_flag
        w.Flag();         // deblocking_filter_override_enabled_flag
        if (!w.Flag()) {  // pps_deblocking_filter_disabled_flag
            w.Se();
            w.Se();
        }
    }
    if (w.Flag())  // pps_scaling_list_data_present_flag
        WriteScalingListData(&w);
    w.Flag();        // lists_modification_present_flag
    w.Ue(4);         // log2_parallel_merge_level_minus2
    w.Flag();        // slice_segment_header_extension_present_flag
    if (w.Flag()) {  // pps_extension_present_flag
        w.U(8);      // the extensions
        w.U(16);     // extension data
    }
    return NalUnitOf(kPpsNut, &w);
}

}  // namespace fuzz
