"""h265/pps.h: picture parameter sets."""

from ctypes import c_int, c_ubyte

from .scaling_list import (H265_SCALING_LIST_COEFFICIENTS, H265_SCALING_LIST_MATRICES,
                           H265_SCALING_LIST_SIZES)
from .xtypes import INT64, UINT64, Record, array

H265_PPS_TILE_COLUMNS = 481
H265_PPS_TILE_ROWS = 271


class pps_h265_t(Record):
    """pic_parameter_set_rbsp( ), ITU-T H.265 clause 7.3.2.3, up to pps_extension_4bits.

    No value is inferred: a field whose element the bitstream does not carry is 0. The tiles' fields are there
    with tiles_enabled_flag, widths and heights without uniform_spacing_flag only. The scaling lists are as
    scaling_list_data_t has them, of scaling_list_dc_coef_minus8 only the rows 0 and 1 are ever written.
    pps_extension_data_flag is the last bit of the NAL unit, with pps_extension_4bits.
    """

    _fields_ = [
        ("pps_pic_parameter_set_id", UINT64),
        ("pps_seq_parameter_set_id", UINT64),
        ("dependent_slice_segments_enabled_flag", c_int),
        ("output_flag_present_flag", c_int),
        ("num_extra_slice_header_bits", c_ubyte),
        ("sign_data_hiding_enabled_flag", c_int),
        ("cabac_init_present_flag", c_int),
        ("num_ref_idx_l0_default_active_minus1", UINT64),
        ("num_ref_idx_l1_default_active_minus1", UINT64),
        ("init_qp_minus26", INT64),
        ("constrained_intra_pred_flag", c_int),
        ("transform_skip_enabled_flag", c_int),
        ("cu_qp_delta_enabled_flag", c_int),
        ("diff_cu_qp_delta_depth", UINT64),
        ("pps_cb_qp_offset", INT64),
        ("pps_cr_qp_offset", INT64),
        ("pps_slice_chroma_qp_offsets_present_flag", c_int),
        ("weighted_pred_flag", c_int),
        ("weighted_bipred_flag", c_int),
        ("transquant_bypass_enabled_flag", c_int),
        ("tiles_enabled_flag", c_int),
        ("entropy_coding_sync_enabled_flag", c_int),
        ("num_tile_columns_minus1", UINT64),
        ("num_tile_rows_minus1", UINT64),
        ("uniform_spacing_flag", c_int),
        ("column_width_minus1", array(UINT64, H265_PPS_TILE_COLUMNS)),
        ("row_height_minus1", array(UINT64, H265_PPS_TILE_ROWS)),
        ("loop_filter_across_tiles_enabled_flag", c_int),
        ("pps_loop_filter_across_slices_enabled_flag", c_int),
        ("deblocking_filter_control_present_flag", c_int),
        ("deblocking_filter_override_enabled_flag", c_int),
        ("pps_deblocking_filter_disabled_flag", c_int),
        ("pps_beta_offset_div2", INT64),
        ("pps_tc_offset_div2", INT64),
        ("pps_scaling_list_data_present_flag", c_int),
        ("scaling_list_pred_mode_flag", array(c_int, H265_SCALING_LIST_SIZES, H265_SCALING_LIST_MATRICES)),
        ("scaling_list_pred_matrix_id_delta",
         array(UINT64, H265_SCALING_LIST_SIZES, H265_SCALING_LIST_MATRICES)),
        ("scaling_list_dc_coef_minus8", array(INT64, H265_SCALING_LIST_SIZES, H265_SCALING_LIST_MATRICES)),
        ("scaling_list", array(INT64, H265_SCALING_LIST_SIZES, H265_SCALING_LIST_MATRICES,
                               H265_SCALING_LIST_COEFFICIENTS)),
        ("lists_modification_present_flag", c_int),
        ("log2_parallel_merge_level_minus2", UINT64),
        ("slice_segment_header_extension_present_flag", c_int),
        ("pps_extension_present_flag", c_int),
        ("pps_range_extension_flag", c_int),
        ("pps_multilayer_extension_flag", c_int),
        ("pps_3d_extension_flag", c_int),
        ("pps_scc_extension_flag", c_int),
        ("pps_extension_4bits", c_ubyte),
        ("pps_extension_data_flag", c_int),
    ]
