"""h265/scaling_list.h: scaling lists."""

from ctypes import c_int

from .xtypes import INT64, UINT64, Record, array

H265_SCALING_LIST_SIZES = 4
H265_SCALING_LIST_MATRICES = 6
H265_SCALING_LIST_COEFFICIENTS = 64


class scaling_list_data_t(Record):
    """scaling_list_data( ) of an SPS, ITU-T H.265 clause 7.3.4, as coded: a predicted list is not filled in.

    Index [sizeId][matrixId], of scaling_list_dc_coef_minus8 [sizeId - 2][matrixId]; sizeId 3 has matrices 0
    and 3 only. Where scaling_list_pred_mode_flag is 1, ScalingList holds the coefficients in coded order, 16
    of them for sizeId 0, else 64. scaling_list_delta_coef is the last one read.
    """

    _fields_ = [
        ("scaling_list_pred_mode_flag", array(c_int, H265_SCALING_LIST_SIZES, H265_SCALING_LIST_MATRICES)),
        ("scaling_list_pred_matrix_id_delta",
         array(UINT64, H265_SCALING_LIST_SIZES, H265_SCALING_LIST_MATRICES)),
        ("scaling_list_dc_coef_minus8", array(INT64, 2, H265_SCALING_LIST_MATRICES)),
        ("scaling_list_delta_coef", INT64),
        ("ScalingList", array(INT64, H265_SCALING_LIST_SIZES, H265_SCALING_LIST_MATRICES,
                              H265_SCALING_LIST_COEFFICIENTS)),
    ]
