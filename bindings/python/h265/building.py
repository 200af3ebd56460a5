"""Building of SEI NAL units: a prefix SEI with a start code of three bytes and one message each."""

from collections.abc import Iterable
from ctypes import POINTER, byref, c_int, cast, create_string_buffer, pointer, sizeof
from typing import Any

from ._functions import library
from .nal_unit import NalUnit
from .records import (INT64, SEI_COMMERCIALTC, UINT, CountingMode, SEI_time_code_info_t, Suid, TimeSource,
                      caption_t, sei_h265_pic_timing_t, sps_h265_t, vanc_t, vitc_t, vui_h265_t)
from .trace import call

_CAPACITY = 4096  # beyond what any of them can take
_HEADER_ONLY = 5  # start code and NAL unit header


def _built(function: Any, *arguments: Any) -> NalUnit:
    buffer = create_string_buffer(_CAPACITY)
    length = call(function, buffer, len(buffer), *arguments,
                  succeeded=lambda result: result > _HEADER_ONLY)
    return NalUnit(buffer.raw[:length])


def _bits(value: int, count: int) -> int:
    """The value, which has to fit so many bits: C would drop the rest."""
    if not 0 <= value < 1 << count:
        raise ValueError(f"{value} is no number of {count} bits")
    return value


def build_captions(captions: Iterable[caption_t], cc_count: int) -> NalUnit:
    """Closed captions of one picture: registered user data, ATSC A/53 (H265Lib_format_sei_cc_nal).

    cc_count is the number of constructs that the message carries, at most 31: the captions in order, then
    padding (FA 00 00). CTA-708 wants 600 a second: 20 a picture at 29.97 Hz. Raises ValueError when there are
    more captions than that, H265Error when there are none.
    """
    entries = [
        vanc_t(suid=Suid.SUID_CLOSED_CAPTION, vanc_data=vanc_t.VancData(caption=caption))
        for caption in captions
    ]
    vanc = (vanc_t * len(entries))(*entries)
    taken = c_int()
    unit = _built(library.H265Lib_format_sei_cc_nal, vanc, sizeof(vanc), cc_count, byref(taken))
    if taken.value < len(entries):
        raise ValueError(f"{len(entries)} captions, but the message carries {taken.value}")
    return unit


def build_active_format(active_format: int | None) -> NalUnit:
    """Active format description: registered user data, "DTG1" (H265Lib_format_sei_afd_nal).

    active_format is 0 to 15, ATSC A/53 clause 6.2.4; None makes a message that says that there is none.
    Raises ValueError for others.
    """
    vanc = vanc_t(suid=Suid.SUID_AFD)
    if active_format is not None:
        vanc.vanc_data.afd_data.active_format_flag = 1
        vanc.vanc_data.afd_data.active_format = _bits(active_format, 4)
    return _built(library.H265Lib_format_sei_afd_nal, byref(vanc), sizeof(vanc))


def build_precision_time(microseconds: int, status: int = 0x1F) -> NalUnit:
    """Precision time: unregistered user data, MISB ST 0604 (H265Lib_formatMISPMicroSecondTimeSEI).

    microseconds are counted from the epoch of the clock, 63 bits. status is the status byte, whose five low
    bits have to be set. Raises ValueError for what is no such number, H265Error for another status byte.
    """
    return _built(library.H265Lib_formatMISPMicroSecondTimeSEI, byref(INT64(_bits(microseconds, 63))),
                  _bits(status, 8))


def vitc(hours: int, minutes: int, seconds: int, frames: int, drop_frame: bool = False) -> vitc_t:
    """A VITC record (SMPTE ST 12-1) of a time of day, for build_time_code.

    Raises ValueError when the library would take it for none: it allows frames up to 85, whatever the rate.
    """
    if not (0 <= hours <= 23 and 0 <= minutes <= 59 and 0 <= seconds <= 59 and 0 <= frames <= 85):
        raise ValueError(f"no time of day: {hours}:{minutes}:{seconds}:{frames}")
    return vitc_t(HourTens=hours // 10, HourUnits=hours % 10, MinuteTens=minutes // 10,
                  MinuteUnits=minutes % 10, SecondTens=seconds // 10, SecondUnits=seconds % 10,
                  FrameTens=frames // 10, FrameUnits=frames % 10, Flag1=int(drop_frame))


def build_time_code(sps: sps_h265_t, frame_rate: int, time: vitc_t | SEI_COMMERCIALTC,
                    time_source: TimeSource = TimeSource.EMBEDDED_TIME_CODE,
                    counting_mode: CountingMode = CountingMode.SYSTEM_TC_SMPTE12M_1_COUNT_MODE) -> NalUnit:
    """A time code message with one clock timestamp (H265Lib_format_sei_time_code_nal).

    sps is the active one. frame_rate is in frames per second times 1000: 29970 for 29.97 Hz. time is a VITC
    record (see vitc), or a time of day from another source, for which the library notes that there is no VITC
    record. time_source and counting_mode tell how counts are dropped at 29.97 and 59.94 Hz: of an embedded
    time code as its drop-frame flag says, else by the mode.
    """
    info = SEI_time_code_info_t(FrameRate=frame_rate, enSystemTCCountingMode=counting_mode,
                                enTimeSource=time_source,
                                pParsedSps=cast(pointer(sps), POINTER(sps_h265_t)))
    if isinstance(time, vitc_t):
        return _built(library.H265Lib_format_sei_time_code_nal, byref(time), byref(info))
    info.WallTime = time
    return _built(library.H265Lib_format_sei_time_code_nal, None, byref(info))


def build_pic_timing(vui: vui_h265_t, timing: sei_h265_pic_timing_t) -> NalUnit:
    """A picture timing message (H265Lib_format_sei_pictiming_nal).

    pic_struct, source_scan_type and duplicate_flag always, the CPB and DPB delays when the HRD of the VUI has
    NAL or VCL parameters; decoding units never. vui is that of the active SPS. Raises H265Error.
    """
    buffer = create_string_buffer(_CAPACITY)
    length = UINT(len(buffer))
    call(library.H265Lib_format_sei_pictiming_nal, buffer, byref(length), byref(vui), byref(timing))
    return NalUnit(buffer.raw[:length.value])
