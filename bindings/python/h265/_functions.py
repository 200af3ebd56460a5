"""The functions of the C interface, with the types of their results and parameters."""

from ctypes import POINTER, c_char, c_char_p, c_int, c_size_t, c_ubyte, c_uint, c_void_p

from ._library import library
from .records import (BOOL, HDBG, INT64, UINT, DbgTraceSink, H265D_PARSE_CONTEXT, SEI_afd_t, SEI_cc_t,
                      SEI_message_t, SEI_time_code_info_t, aud_h265_t, pps_h265_t, sei_h265_pic_timing_t,
                      sei_h265_time_code_t, sps_h265_t, ssh_h265_t, vanc_t, vitc_t, vps_h265_t, vui_h265_t)

_INPUT = c_char_p  # const unsigned char *
_BUFFER = POINTER(c_char)  # unsigned char *
_SEI_HEADER = POINTER(SEI_message_t)
_NEW_SPS = [_INPUT, c_uint, POINTER(sps_h265_t), POINTER(c_void_p), POINTER(UINT)]

PROTOTYPES: dict[str, tuple[type | None, list[type]]] = {
    # NAL unit framing
    "GetH265NalTypeString": (c_char_p, [UINT]),
    "H265Lib_SODB_deencapsulation_from_NAL": (c_int, [_INPUT, c_uint, _BUFFER, c_uint]),
    "H265Lib_format_au_delimiter_nalu": (c_int, [_BUFFER, c_uint, c_uint]),
    "H265Lib_format_end_of_sequence_nalu": (c_int, [_BUFFER, c_uint]),
    "H265Lib_Parse_au_delimiter_nal": (BOOL, [_BUFFER, c_int, POINTER(aud_h265_t)]),
    # parameter sets
    "H265Lib_Parse_vps_nal": (BOOL, [_INPUT, c_size_t, POINTER(vps_h265_t)]),
    "H265Lib_Parse_sps_nal": (BOOL, [_INPUT, c_size_t, POINTER(sps_h265_t)]),
    "H265Lib_Parse_sps_nal_ex":
        (BOOL, [_INPUT, c_size_t, POINTER(H265D_PARSE_CONTEXT), POINTER(sps_h265_t)]),
    "H265Lib_Parse_pps_nal": (BOOL, [_INPUT, c_int, POINTER(pps_h265_t)]),
    "H265Lib_Parse_pps_nal_ex": (BOOL, [_INPUT, c_uint, POINTER(H265D_PARSE_CONTEXT), POINTER(pps_h265_t)]),
    "H265Lib_Display_vps": (None, [POINTER(vps_h265_t)]),
    "H265Lib_Display_sps": (None, [POINTER(sps_h265_t)]),
    "H265Lib_Display_pps": (None, [POINTER(pps_h265_t)]),
    # parameter set rewriting
    "H265Lib_modify_vps_NAL": (BOOL, [_BUFFER, c_uint]),
    "H265Lib_modify_sps_NAL": (BOOL, _NEW_SPS),
    "H265Lib_Set_sps_vui_parameters_NAL": (BOOL, _NEW_SPS),
    "H265Lib_Release_sps_buffer": (None, [c_void_p]),
    # slices
    "H265Lib_Parse_slice_header_nal":
        (BOOL, [_INPUT, c_int, POINTER(sps_h265_t), POINTER(pps_h265_t), POINTER(ssh_h265_t)]),
    # SEI messages
    "H265Lib_DetermineSEIType":
        (BOOL, [_INPUT, c_int, POINTER(c_int), POINTER(c_int), _SEI_HEADER, POINTER(c_int), POINTER(BOOL)]),
    "H265Lib_Parse_sei_pictiming_nal":
        (BOOL, [_INPUT, c_int, _SEI_HEADER, POINTER(vui_h265_t), POINTER(sei_h265_pic_timing_t)]),
    "H265Lib_Display_sei_pictiming": (None, [POINTER(sei_h265_pic_timing_t), POINTER(vui_h265_t)]),
    "H265Lib_Parse_sei_timecode_nal": (BOOL, [_INPUT, c_int, _SEI_HEADER, POINTER(sei_h265_time_code_t)]),
    "H265Lib_Parse_sei_cc_nal": (BOOL, [_BUFFER, c_int, POINTER(SEI_cc_t)]),
    "H265Lib_Parse_sei_afd_nal": (BOOL, [_BUFFER, c_int, POINTER(SEI_afd_t)]),
    "H265Lib_modify_pictiming_sei_NAL":
        (BOOL, [_BUFFER, POINTER(UINT), POINTER(vui_h265_t), UINT, POINTER(sei_h265_pic_timing_t)]),
    # SEI building
    "H265Lib_format_sei_cc_nal": (c_int, [_BUFFER, c_int, POINTER(vanc_t), c_int, c_int, POINTER(c_int)]),
    "H265Lib_format_sei_afd_nal": (c_int, [_BUFFER, c_int, POINTER(vanc_t), c_int]),
    "H265Lib_formatMISPMicroSecondTimeSEI": (c_int, [_BUFFER, c_int, POINTER(INT64), c_ubyte]),
    "H265Lib_format_sei_time_code_nal":
        (c_int, [_BUFFER, c_int, POINTER(vitc_t), POINTER(SEI_time_code_info_t)]),
    "H265Lib_format_sei_pictiming_nal":
        (BOOL, [_BUFFER, POINTER(UINT), POINTER(vui_h265_t), POINTER(sei_h265_pic_timing_t)]),
    # the trace service
    "DbgTraceSetSink": (None, [DbgTraceSink, c_void_p]),
}


for _name, (_result, _parameters) in PROTOTYPES.items():
    _function = getattr(library, _name)
    _function.restype = _result
    _function.argtypes = _parameters

channel = HDBG.in_dll(library, "g_hH265LibDbg").contents
"""the trace channel H265LIB"""
