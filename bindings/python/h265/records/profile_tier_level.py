"""h265/profile_tier_level.h: profile, tier and level."""

from ctypes import c_int, c_ubyte

from .xtypes import UINT64, Alternatives, Record, array

H265_PTL_SUB_LAYERS = 8  # entries of the per-sub-layer arrays
H265_PTL_COMPATIBILITY_FLAGS = 32  # profile compatibility flags of a layer


class ptl_general_profile_idc_2(Record):
    """The 43 bits behind the source and constraint flags of profile 2 (and compatible ones)."""

    _fields_ = [
        ("reserved_zero_7bits", c_ubyte),
        ("one_picture_only_constraint_flag", c_int),
        ("reserved_zero_35bits", UINT64),
    ]


class ptl_general_profile_idc_4_10(Record):
    """The 43 bits of profiles 4 to 10 (and compatible ones).

    max_14bits_constraint_flag is read for profiles 5, 9 and 10 (in sub-layers for profile 5 alone), with
    reserved_zero_33bits behind it; elsewhere there are reserved_zero_34bits.
    """

    _fields_ = [
        ("max_12bits_constraint_flag", c_int),
        ("max_10bits_constraint_flag", c_int),
        ("max_8bits_constraint_flag", c_int),
        ("max_422chroma_constraint_flag", c_int),
        ("max_420chroma_constraint_flag", c_int),
        ("max_monochrome_constraint_flag", c_int),
        ("intra_constraint_flag", c_int),
        ("one_picture_only_constraint_flag", c_int),
        ("lower_bitrate_constraint_flag", c_int),
        ("max_14bits_constraint_flag", c_int),
        ("reserved_zero_33bits", UINT64),
        ("reserved_zero_34bits", UINT64),
    ]


class in_profile_tier_level_t(Alternatives):
    """The 43 bits: exactly one alternative is filled, by profile; reserved_zero_43bits for all others."""

    _fields_ = [
        ("profile_2", ptl_general_profile_idc_2),
        ("profile_4_10", ptl_general_profile_idc_4_10),
        ("reserved_zero_43bits", UINT64),
    ]


class profile_tier_level_t(Record):
    """profile_tier_level( 1, maxNumSubLayersMinus1 ), ITU-T H.265 clause 7.3.3.

    general_scantype_bitoffset is recorded: the position of general_progressive_source_flag.
    general_level_idc is the level times 30. general_inbld_flag is read for profiles 1 to 5 and 9,
    general_reserved_zero_bit for all others.

    Entry i of the arrays is valid for i < maxNumSubLayersMinus1, with sub_layer_profile_present_flag[i] or
    sub_layer_level_present_flag[i]; reserved_zero_2bits for the other entries up to 7.
    sub_layer_reserved_zero_bit is never written.
    """

    _fields_ = [
        ("general_profile_space", c_ubyte),
        ("general_tier_flag", c_int),
        ("general_profile_idc", c_ubyte),
        ("general_profile_compatibility_flag", array(c_int, H265_PTL_COMPATIBILITY_FLAGS)),
        ("general_scantype_bitoffset", c_int),
        ("general_progressive_source_flag", c_int),
        ("general_interlaced_source_flag", c_int),
        ("general_non_packed_constraint_flag", c_int),
        ("general_frame_only_constraint_flag", c_int),
        ("u_general", in_profile_tier_level_t),
        ("general_inbld_flag", c_int),
        ("general_reserved_zero_bit", c_int),
        ("general_level_idc", c_ubyte),
        ("sub_layer_profile_present_flag", array(c_int, H265_PTL_SUB_LAYERS)),
        ("sub_layer_level_present_flag", array(c_int, H265_PTL_SUB_LAYERS)),
        ("reserved_zero_2bits", array(c_ubyte, H265_PTL_SUB_LAYERS)),
        ("sub_layer_profile_space", array(c_ubyte, H265_PTL_SUB_LAYERS)),
        ("sub_layer_tier_flag", array(c_int, H265_PTL_SUB_LAYERS)),
        ("sub_layer_profile_idc", array(c_ubyte, H265_PTL_SUB_LAYERS)),
        ("sub_layer_profile_compatibility_flag",
         array(c_int, H265_PTL_SUB_LAYERS, H265_PTL_COMPATIBILITY_FLAGS)),
        ("sub_layer_progressive_source_flag", array(c_int, H265_PTL_SUB_LAYERS)),
        ("sub_layer_interlaced_source_flag", array(c_int, H265_PTL_SUB_LAYERS)),
        ("sub_layer_non_packed_constrained_flag", array(c_int, H265_PTL_SUB_LAYERS)),
        ("sub_layer_frame_only_constrained_flag", array(c_int, H265_PTL_SUB_LAYERS)),
        ("u_sub_layer", array(in_profile_tier_level_t, H265_PTL_SUB_LAYERS)),
        ("sub_layer_inbld_flag", array(c_int, H265_PTL_SUB_LAYERS)),
        ("sub_layer_reserved_zero_bit", array(c_int, H265_PTL_SUB_LAYERS)),
        ("sub_layer_level_idc", array(c_ubyte, H265_PTL_SUB_LAYERS)),
    ]
