"""h265/vps.h: video parameter sets."""

from ctypes import c_int, c_ubyte, c_uint16

from .hrd import hrd_h265_t
from .profile_tier_level import profile_tier_level_t
from .xtypes import UINT64, Record, array

H265_VPS_SUB_LAYERS = 6  # entries of the per-sub-layer ordering arrays
H265_VPS_LAYER_SETS = 6  # layer sets whose flags are kept
H265_VPS_LAYER_IDS = 8  # layer ids whose flags are kept, in each layer set
H265_VPS_HRDS = 9  # HRDs kept


class vps_h265_t(Record):
    """video_parameter_set_rbsp( ), ITU-T H.265 clause 7.3.2.1.

    No value is inferred: a field whose element the bitstream does not carry is 0, but cprms_present_flag[0],
    which Vps.parse sets to 1. Entries that the bitstream carries beyond the bounds of the arrays are dropped.
    Without vps_sub_layer_ordering_info_present_flag only entry vps_max_sub_layers_minus1 of the per-sub-layer
    arrays is there; layer_id_included_flag is from layer set 1 on. after_ptl_bitoffset is never written.
    """

    _fields_ = [
        ("vps_video_parameter_set_id", c_ubyte),
        ("vps_base_layer_internal_flag", c_int),
        ("vps_base_layer_available_flag", c_int),
        ("vps_max_layers_minus1", c_ubyte),
        ("vps_max_sub_layers_minus1", c_ubyte),
        ("vps_temporal_id_nesting_flag", c_int),
        ("vps_reserved_0xffff_16bits", c_uint16),
        ("ptl", profile_tier_level_t),
        ("after_ptl_bitoffset", c_int),
        ("vps_sub_layer_ordering_info_present_flag", c_int),
        ("vps_max_dec_pic_buffering_minus1", array(UINT64, H265_VPS_SUB_LAYERS)),
        ("vps_max_num_reorder_pics", array(UINT64, H265_VPS_SUB_LAYERS)),
        ("vps_max_latency_increase_plus1", array(UINT64, H265_VPS_SUB_LAYERS)),
        ("vps_max_layer_id", c_ubyte),
        ("vps_num_layers_sets_minus1", UINT64),
        ("layer_id_included_flag", array(c_int, H265_VPS_LAYER_SETS, H265_VPS_LAYER_IDS)),
        ("vps_timing_info_present_flag", c_int),
        ("vps_num_units_in_tick", UINT64),
        ("vps_time_scale", UINT64),
        ("vps_poc_proportional_to_timing_flag", c_int),
        ("vps_num_ticks_poc_diff_one_minus1", UINT64),
        ("vps_num_hrd_parameters", UINT64),
        ("hrd_layer_set_idx", array(UINT64, H265_VPS_HRDS)),
        ("cprms_present_flag", array(c_int, H265_VPS_HRDS)),
        ("vps_hrd_parameters", array(hrd_h265_t, H265_VPS_HRDS)),
        ("vps_extenstion_flag", c_int),
        ("vps_extenstion_data_flag", c_int),
    ]
