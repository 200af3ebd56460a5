"""h265/short_term_ref_pic_set.h: short-term reference picture sets."""

from ctypes import c_int

from .xtypes import UINT64, Record, array

H265_RPS_PICTURES = 16  # pictures of one set


class short_term_ref_pic_set_t(Record):
    """st_ref_pic_set( stRpsIdx ), ITU-T H.265 clause 7.3.7, as coded.

    A set that is predicted from another (inter_ref_pic_set_prediction_flag) has the fields down to
    used_delta_flag, and neither counts nor deltas; an explicit one has those behind it.
    """

    _fields_ = [
        ("inter_ref_pic_set_prediction_flag", c_int),
        ("delta_idx_minus1", UINT64),
        ("delta_rps_sign", c_int),
        ("abs_delta_rps_minus1", UINT64),
        ("used_by_current_pic_flag", array(c_int, H265_RPS_PICTURES)),
        ("used_delta_flag", array(c_int, H265_RPS_PICTURES)),
        ("num_negative_pics", UINT64),
        ("num_positive_pics", UINT64),
        ("delta_poc_s0_minus1", array(UINT64, H265_RPS_PICTURES)),
        ("used_by_current_pic_s0_flag", array(c_int, H265_RPS_PICTURES)),
        ("delta_poc_s1_minus1", array(UINT64, H265_RPS_PICTURES)),
        ("used_by_current_pic_s1_flag", array(c_int, H265_RPS_PICTURES)),
    ]
