"""h265/vui.h: video usability information."""

from ctypes import c_int, c_ubyte, c_uint16
from enum import IntEnum

from .hrd import hrd_h265_t
from .xtypes import UINT64, Record


class AspectRatio(IntEnum):
    """aspect_ratio_idc, Table E.1: sample aspect ratio width_height."""

    IH265ENC_ASPECTRATIO_UNSPECIFIED = 0
    IH265ENC_ASPECTRATIO_SQUARE = 1
    IH265ENC_ASPECTRATIO_12_11 = 2
    IH265ENC_ASPECTRATIO_10_11 = 3
    IH265ENC_ASPECTRATIO_16_11 = 4
    IH265ENC_ASPECTRATIO_40_33 = 5
    IH265ENC_ASPECTRATIO_24_11 = 6
    IH265ENC_ASPECTRATIO_20_11 = 7
    IH265ENC_ASPECTRATIO_32_11 = 8
    IH265ENC_ASPECTRATIO_80_33 = 9
    IH265ENC_ASPECTRATIO_18_11 = 10
    IH265ENC_ASPECTRATIO_15_11 = 11
    IH265ENC_ASPECTRATIO_64_33 = 12
    IH265ENC_ASPECTRATIO_160_99 = 13
    IH265ENC_ASPECTRATIO_4_3 = 14
    IH265ENC_ASPECTRATIO_3_2 = 15
    IH265ENC_ASPECTRATIO_2_1 = 16
    IH265ENC_ASPECTRATIO_EXTENDED = 255
    """sar_width and sar_height follow"""


class vui_h265_t(Record):
    """vui_parameters( ), ITU-T H.265 clause E.2.1.

    aspect_ratio_idc is an AspectRatio. The default display window is in chroma units. vui_time_scale counts
    units in a second. The two bit offsets are recorded: the position of vui_num_units_in_tick (-1 without
    timing information), and the one behind vui_hrd_parameters_present_flag. CpbDpbDelaysPresentFlag is
    derived: with timing information, 1 when there is a NAL or VCL HRD; without an HRD then, four of its
    lengths get the defaults 23, 23, 0 and 0.
    """

    _fields_ = [
        ("aspect_ratio_info_present_flag", c_int),
        ("aspect_ratio_idc", c_ubyte),
        ("sar_width", c_uint16),
        ("sar_height", c_uint16),
        ("overscan_info_present_flag", c_int),
        ("overscan_appropriate_flag", c_int),
        ("video_signal_type_present_flag", c_int),
        ("video_format", c_ubyte),
        ("video_full_range_flag", c_int),
        ("colour_description_present_flag", c_int),
        ("colour_primaries", c_ubyte),
        ("transfer_characteristics", c_ubyte),
        ("matrix_coeffs", c_ubyte),
        ("chroma_loc_info_present_flag", c_int),
        ("chroma_sample_loc_type_top_field", UINT64),
        ("chroma_sample_loc_type_bottom_field", UINT64),
        ("neutral_chroma_indication_flag", c_int),
        ("field_seq_flag", c_int),
        ("frame_field_info_present_flag", c_int),
        ("default_display_window_flag", c_int),
        ("def_disp_win_left_offset", UINT64),
        ("def_disp_win_right_offset", UINT64),
        ("def_disp_win_top_offset", UINT64),
        ("def_disp_win_bottom_offset", UINT64),
        ("vui_timing_info_present_flag", c_int),
        ("vui_timing_info_bitoffset", c_int),
        ("vui_num_units_in_tick", UINT64),
        ("vui_time_scale", UINT64),
        ("vui_poc_proportional_to_timing_flag", c_int),
        ("vui_num_ticks_poc_diff_one_minus1", UINT64),
        ("vui_hrd_parameters_present_flag_bitoffset", c_int),
        ("vui_hrd_parameters_present_flag", c_int),
        ("CpbDpbDelaysPresentFlag", c_int),
        ("nal_hrd", hrd_h265_t),
        ("bitstream_restriction_flag", c_int),
        ("tiles_fixed_structure_flag", c_int),
        ("motion_vectors_over_pic_boundaries_flag", c_int),
        ("restricted_ref_pic_lists_flag", c_int),
        ("min_spatial_segmentation_idc", UINT64),
        ("max_bytes_per_pic_denom", UINT64),
        ("max_bits_per_min_cu_denom", UINT64),
        ("log2_max_mv_length_horizontal", UINT64),
        ("log2_max_mv_length_vertical", UINT64),
    ]
