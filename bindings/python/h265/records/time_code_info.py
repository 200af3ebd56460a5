"""h265/time_code_info.h: what a time code message is made from, besides the VITC record."""

from ctypes import POINTER, c_int, c_ubyte
from enum import IntEnum

from .sps import sps_h265_t
from .xtypes import Record


class CountingMode(IntEnum):
    """How a time of day that comes from a system clock is counted at 29.97 and 59.94 Hz."""

    SYSTEM_TC_SMPTE12M_1_COUNT_MODE = 0
    """SMPTE ST 12-1 drop-frame"""
    SYSTEM_TC_UTC_CONVERSION_COUNT_MODE = 1
    """converted from UTC: unspecified numbers of counts are dropped"""


class TimeSource(IntEnum):
    """Where a time code comes from."""

    UNKNOWN_TIME_CODE = 0
    NTP_SERVER = 1
    EMBEDDED_TIME_CODE = 2
    """VITC or LTC of the video input"""
    MISB605_DOUBLE_TIME_CODE = 3


class SEI_COMMERCIALTC(Record):
    """A time of day."""

    _fields_ = [
        ("n_frames", c_ubyte),
        ("seconds", c_ubyte),
        ("minutes", c_ubyte),
        ("hours", c_ubyte),
    ]


class SEI_time_code_info_t(Record):
    """What h265.build_time_code hands to the library.

    WallTime is overwritten from a VITC record when there is one. FrameRate is in frames per second times
    1000: 29970 for 29.97 Hz. enSystemTCCountingMode is a CountingMode, enTimeSource a TimeSource; scan_type
    and BottomFieldFlag are traced only. Of the SPS, the library looks at field_seq_flag,
    frame_field_info_present_flag and vui_num_units_in_tick of the VUI.
    """

    _fields_ = [
        ("WallTime", SEI_COMMERCIALTC),
        ("FrameRate", c_int),
        ("enSystemTCCountingMode", c_int),
        ("scan_type", c_ubyte),
        ("BottomFieldFlag", c_ubyte),
        ("enTimeSource", c_int),
        ("pParsedSps", POINTER(sps_h265_t)),
    ]
