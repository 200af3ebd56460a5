"""h265/sps.h: sequence parameter sets."""

from ctypes import c_int, c_ubyte

from .profile_tier_level import profile_tier_level_t
from .scaling_list import scaling_list_data_t
from .short_term_ref_pic_set import short_term_ref_pic_set_t
from .vui import vui_h265_t
from .xtypes import UINT64, Record, array

H265_SPS_SUB_LAYERS = 8
H265_SPS_SHORT_TERM_REF_PIC_SETS = 65  # an SPS codes at most 64
H265_SPS_LONG_TERM_REF_PICS = 33


class sps_h265_t(Record):
    """seq_parameter_set_rbsp( ), ITU-T H.265 clause 7.3.2.2.

    No value is inferred: a field whose element the bitstream does not carry is 0. The conformance window is
    in chroma units. Entry i of the per-sub-layer arrays describes sub-layer i; without
    sps_sub_layer_ordering_info_present_flag only entry sps_max_sub_layers_minus1 is there.

    before_pic_num_samples_offset, vui_parameters_present_offset and sps_extension_present_offset are recorded
    positions: bits from the first one behind the NAL unit header, emulation prevention bytes removed. The
    rewriting functions need them.
    """

    _fields_ = [
        ("sps_video_parameter_set_id", c_ubyte),
        ("sps_max_sub_layers_minus1", c_ubyte),
        ("sps_temporal_id_nesting_flag", c_int),
        ("ptl", profile_tier_level_t),
        ("seq_parameter_set_id", UINT64),
        ("chroma_format_idc", UINT64),
        ("separate_colour_plane_flag", c_int),
        ("before_pic_num_samples_offset", c_int),
        ("pic_width_in_luma_samples", UINT64),
        ("pic_height_in_luma_samples", UINT64),
        ("conformance_window_flag", c_int),
        ("conf_win_left_offset", UINT64),
        ("conf_win_right_offset", UINT64),
        ("conf_win_top_offset", UINT64),
        ("conf_win_bottom_offset", UINT64),
        ("bit_depth_luma_minus8", UINT64),
        ("bit_depth_chroma_minus8", UINT64),
        ("log2_max_pic_order_cnt_lsb_minus4", UINT64),
        ("sps_sub_layer_ordering_info_present_flag", c_int),
        ("sps_max_dec_pic_buffering_minus1", array(UINT64, H265_SPS_SUB_LAYERS)),
        ("sps_max_num_reorder_pics", array(UINT64, H265_SPS_SUB_LAYERS)),
        ("sps_max_latency_increase_plus1", array(UINT64, H265_SPS_SUB_LAYERS)),
        ("log2_min_luma_coding_block_size_minus3", UINT64),
        ("log2_diff_max_min_luma_coding_block_size", UINT64),
        ("log2_min_luma_transform_block_size_minus2", UINT64),
        ("log2_diff_max_min_luma_transform_block_size", UINT64),
        ("max_transform_hierarchy_depth_inter", UINT64),
        ("max_transform_hierarchy_depth_intra", UINT64),
        ("scaling_list_enabled_flag", c_int),
        ("sps_scaling_list_data_present_flag", c_int),
        ("scaling_list", scaling_list_data_t),
        ("amp_enabled_flag", c_int),
        ("sample_adaptive_offset_flag", c_int),
        ("pcm_enabled_flag", c_int),
        ("pcm_sample_bit_depth_luma_minus1", c_ubyte),
        ("pcm_sample_bit_depth_chroma_minus1", c_ubyte),
        ("log2_min_pcm_luma_coding_block_size_minus3", UINT64),
        ("log2_diff_max_min_pcm_luma_coding_block_size", UINT64),
        ("pcm_loop_filter_disabled_flag", c_int),
        ("num_short_term_ref_pics_sets", UINT64),
        ("strps", array(short_term_ref_pic_set_t, H265_SPS_SHORT_TERM_REF_PIC_SETS)),
        ("long_term_ref_pics_present_flag", c_int),
        ("num_long_term_ref_pics_sps", UINT64),
        ("lt_ref_pic_poc_lsb_sps", array(UINT64, H265_SPS_LONG_TERM_REF_PICS)),
        ("used_by_current_pic_lt_sps_flag", array(c_int, H265_SPS_LONG_TERM_REF_PICS)),
        ("sps_temporal_mvp_enabled_flag", c_int),
        ("strong_intra_smoothing_enabled_flag", c_int),
        ("vui_parameters_present_flag", c_int),
        ("vui_parameters_present_offset", c_int),
        ("vui", vui_h265_t),
        ("sps_extension_present_flag", c_int),
        ("sps_extension_present_offset", c_int),
        ("sps_range_extension_flag", c_int),
        ("sps_multilayer_extension_flag", c_int),
        ("sps_3d_extension_flag", c_int),
        ("sps_scc_extension_flag", c_int),
        ("sps_extension_4bits", c_ubyte),
        ("transform_skip_rotation_enabled_flag", c_int),
        ("transform_skip_context_enabled_flag", c_int),
        ("implicit_rdpcm_enabled_flag", c_int),
        ("explicit_rdpcm_enabled_flag", c_int),
        ("extended_precision_processing_flag", c_int),
        ("intra_smoothing_disabled_flag", c_int),
        ("high_precision_offsets_enabled_flag", c_int),
        ("persistent_rice_adaptation_enabled_flag", c_int),
        ("cabac_bypass_alignment_enabled_flag", c_int),
        ("sps_extension_data_flag", c_int),
    ]
