"""h265/slice_header.h: slice segment headers."""

from ctypes import c_int, c_ubyte

from .xtypes import UINT64, Record


class ssh_h265_t(Record):
    """slice_segment_header( ), ITU-T H.265 clause 7.3.6.1, up to slice_pic_order_cnt_lsb.

    slice_segment_address counts coding tree blocks in raster scan. slice_type is 0 for B, 1 for P, 2 for I. A
    dependent slice segment ends behind slice_segment_address: it takes the rest from the segment before it.
    Where they are not coded, dependent_slice_segment_flag is 0, pic_output_flag 1, and
    slice_pic_order_cnt_lsb of an IDR picture 0.
    """

    _fields_ = [
        ("first_slice_segment_in_pic_flag", c_int),
        ("no_output_of_prior_pics_flag", c_int),
        ("slice_pic_parameter_set_id", UINT64),
        ("dependent_slice_segment_flag", c_int),
        ("slice_segment_address", UINT64),
        ("slice_type", UINT64),
        ("pic_output_flag", c_int),
        ("colour_plane_id", c_ubyte),
        ("slice_pic_order_cnt_lsb", UINT64),
    ]
