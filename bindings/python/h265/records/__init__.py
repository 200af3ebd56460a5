"""The records of the C interface, names and fields as in its headers: a module a header.

A record is made zeroed, may be given fields by name (``caption_t(flag=1, data1=0x14)``), and refuses names
that it does not have and numbers that do not fit; entries of arrays are not checked. Array fields have the
bounds of the C arrays, which the constants in the modules name. Flags are ints holding 0 or 1.
"""

from .aud import aud_h265_t
from .dbgtrace import HDBG, DbgTraceMessage, DbgTraceSink, tagHDBG
from .hrd import hrd_h265_t, sub_layer_hrd_parameters_t
from .parse_context import H265D_PARSE_CONTEXT
from .pps import pps_h265_t
from .profile_tier_level import (in_profile_tier_level_t, profile_tier_level_t, ptl_general_profile_idc_2,
                                 ptl_general_profile_idc_4_10)
from .scaling_list import scaling_list_data_t
from .sei import (SEI_afd_t, SEI_cc_data_t, SEI_cc_t, SEI_message_t, sei_h265_pic_timing_t,
                  sei_h265_time_code_t)
from .short_term_ref_pic_set import short_term_ref_pic_set_t
from .slice_header import ssh_h265_t
from .sps import sps_h265_t
from .time_code_info import CountingMode, SEI_COMMERCIALTC, SEI_time_code_info_t, TimeSource
from .vanc import (Suid, afd_t, caption_service_t, caption_t, csd_t, klv_t, scte104_t, vanc_t, vitc_bg_t,
                   vitc_t)
from .vps import vps_h265_t
from .vui import AspectRatio, vui_h265_t
from .xtypes import BOOL, BYTE, DWORD, INT64, UINT, UINT64, Alternatives, Record

__all__ = [
    "Alternatives", "AspectRatio", "BOOL", "BYTE", "CountingMode", "DWORD", "DbgTraceMessage", "DbgTraceSink",
    "H265D_PARSE_CONTEXT", "HDBG", "INT64", "Record", "SEI_COMMERCIALTC", "SEI_afd_t", "SEI_cc_data_t",
    "SEI_cc_t", "SEI_message_t", "SEI_time_code_info_t", "Suid", "TimeSource", "UINT", "UINT64", "afd_t",
    "aud_h265_t", "caption_service_t", "caption_t", "csd_t", "hrd_h265_t", "in_profile_tier_level_t", "klv_t",
    "pps_h265_t", "profile_tier_level_t", "ptl_general_profile_idc_2", "ptl_general_profile_idc_4_10",
    "scaling_list_data_t", "scte104_t", "sei_h265_pic_timing_t", "sei_h265_time_code_t",
    "short_term_ref_pic_set_t", "sps_h265_t", "ssh_h265_t", "sub_layer_hrd_parameters_t", "tagHDBG", "vanc_t",
    "vitc_bg_t", "vitc_t", "vps_h265_t", "vui_h265_t",
]
