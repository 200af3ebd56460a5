"""h265/hrd.h: hypothetical reference decoder parameters."""

from ctypes import c_int, c_ubyte

from .xtypes import UINT64, Record, array

H265_HRD_SUB_LAYERS = 8  # entries of the per-sub-layer arrays
H265_HRD_CPB_COUNT = 32  # coded picture buffers of a sub-layer: cpb_cnt_minus1 is at most 31


class sub_layer_hrd_parameters_t(Record):
    """sub_layer_hrd_parameters( ), ITU-T H.265 clause E.2.3.

    Entry i describes CPB i, up to cpb_cnt_minus1 of the sub-layer; the _du_ values are there with
    sub_pic_hrd_params_present_flag.
    """

    _fields_ = [
        ("bit_rate_value_minus1", array(UINT64, H265_HRD_CPB_COUNT)),
        ("cpb_size_value_minus1", array(UINT64, H265_HRD_CPB_COUNT)),
        ("cpb_size_du_value_minus1", array(UINT64, H265_HRD_CPB_COUNT)),
        ("bit_rate_du_value_minus1", array(UINT64, H265_HRD_CPB_COUNT)),
        ("cbr_flag", array(c_int, H265_HRD_CPB_COUNT)),
    ]


class hrd_h265_t(Record):
    """hrd_parameters( ), ITU-T H.265 clause E.2.2.

    The first two flags are the common part's: with either one, the fields down to
    dpb_output_delay_length_minus1 are there. Entry i of the arrays describes sub-layer i.
    """

    _fields_ = [
        ("nal_hrd_parameters_present_flag", c_int),
        ("vcl_hrd_parameters_present_flag", c_int),
        ("sub_pic_hrd_params_present_flag", c_int),
        ("tick_divisor_minus2", c_ubyte),
        ("du_cpb_removal_delay_increment_length_minus1", c_ubyte),
        ("sub_pic_cpb_params_in_pic_timing_sei_flag", c_int),
        ("dpb_output_delay_du_length_minus1", c_ubyte),
        ("bit_rate_scale", c_ubyte),
        ("cpb_size_scale", c_ubyte),
        ("cpb_size_du_scale", c_ubyte),
        ("initial_cpb_removal_delay_length_minus1", c_ubyte),
        ("au_cpb_removal_delay_length_minus1", c_ubyte),
        ("dpb_output_delay_length_minus1", c_ubyte),
        ("fixed_pic_rate_general_flag", array(c_int, H265_HRD_SUB_LAYERS)),
        ("fixed_pic_rate_within_cvs_flag", array(c_int, H265_HRD_SUB_LAYERS)),
        ("elemental_duration_in_tc_minus1", array(UINT64, H265_HRD_SUB_LAYERS)),
        ("low_delay_hrd_flag", array(c_int, H265_HRD_SUB_LAYERS)),
        ("cpb_cnt_minus1", array(UINT64, H265_HRD_SUB_LAYERS)),
        ("s_l_nal_hrd_parameters", array(sub_layer_hrd_parameters_t, H265_HRD_SUB_LAYERS)),
        ("s_l_vcl_hrd_parameters", array(sub_layer_hrd_parameters_t, H265_HRD_SUB_LAYERS)),
    ]
