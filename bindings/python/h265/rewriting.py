"""Rewriting of parameter sets and picture timing: each function returns a new NAL unit.

Besides H265Error, where a function of the library refuses something, they raise ValueError for what does not
begin with a start code and a NAL unit header.
"""

import ctypes
from ctypes import byref
from typing import Any

from ._functions import library
from .nal_unit import NalUnit
from .parameter_sets import Vps
from .records import UINT, sei_h265_pic_timing_t, sps_h265_t, vui_h265_t
from .sei import SeiMessage
from .trace import H265Error, call


def modify_vps(nal: bytes) -> NalUnit:
    """The VPS, marked as carrying interlaced source material (H265Lib_modify_vps_NAL).

    general_progressive_source_flag becomes 0, general_interlaced_source_flag 1 and
    general_frame_only_constraint_flag 0; every other bit stays. At most 1512 bytes, start code not counted;
    zero bytes behind the NAL unit are dropped. Raises H265Error when it cannot be parsed, or lacks emulation
    prevention so that the result does not fit.
    """
    unit = NalUnit(nal.rstrip(b"\0"))
    buffer = ctypes.create_string_buffer(unit, len(unit))
    call(library.H265Lib_modify_vps_NAL, buffer, len(buffer))
    rewritten = NalUnit(buffer.raw)
    # Where emulation prevention went away, the result is shorter than the buffer, which ends as it did.
    size = len(unit.sodb)
    while len(rewritten.sodb) > size:
        rewritten = NalUnit(rewritten[:-1])
    ptl = Vps.parse(rewritten).ptl
    if ptl.general_progressive_source_flag or not ptl.general_interlaced_source_flag:
        raise H265Error(library.H265Lib_modify_vps_NAL.__name__, [])
    return rewritten


def modify_sps(nal: bytes, sps: sps_h265_t) -> NalUnit:
    """The SPS with what the record says (H265Lib_modify_sps_NAL).

    The general progressive and interlaced source flags, picture size, conformance window and the whole VUI
    are taken from the record; general_non_packed_constraint_flag and general_frame_only_constraint_flag
    become 0; every other bit is carried over.

    sps is the record of this very NAL unit, parsed and then edited: vui_parameters_present_flag has to be 1,
    conformance_window_flag has to stay as parsed. At most 1512 bytes, start code not counted. Raises
    H265Error.
    """
    return _rewritten_sps(library.H265Lib_modify_sps_NAL, nal, sps)


def modify_sps_vui(nal: bytes, sps: sps_h265_t) -> NalUnit:
    """The same for the VUI alone: every bit outside it stays (H265Lib_Set_sps_vui_parameters_NAL)."""
    return _rewritten_sps(library.H265Lib_Set_sps_vui_parameters_NAL, nal, sps)


def _rewritten_sps(function: Any, nal: bytes, sps: sps_h265_t) -> NalUnit:
    payload_offset = NalUnit(nal).payload_offset
    buffer = ctypes.c_void_p()
    length = UINT()
    try:
        call(function, nal, len(nal), byref(sps), byref(buffer), byref(length),
             succeeded=lambda done: done and length.value > payload_offset)  # a bare header: did not fit
        return NalUnit(ctypes.string_at(buffer.value, length.value))
    finally:
        library.H265Lib_Release_sps_buffer(buffer)


def modify_pic_timing(nal: bytes, message: SeiMessage, vui: vui_h265_t, pic_struct: int) -> NalUnit:
    """The SEI NAL unit with another pic_struct in one picture timing message.

    H265Lib_modify_pictiming_sei_NAL; every other bit stays. vui is that of the active SPS, with
    frame_field_info_present_flag set. pic_struct is 0 to 12, Table D.2. At most 1512 bytes; zero bytes behind
    the NAL unit are dropped. Raises H265Error when the message has no pic_struct or does not lie in the NAL
    unit.
    """
    payload_offset = NalUnit(nal).payload_offset
    room = 1  # for the emulation prevention byte that the new value may need; dropped when it does not
    buffer = ctypes.create_string_buffer(nal, len(nal) + room)
    length = UINT(len(buffer))
    call(library.H265Lib_modify_pictiming_sei_NAL, buffer, byref(length), byref(vui), message.payload_index,
         byref(sei_h265_pic_timing_t(pic_struct=pic_struct)),
         succeeded=lambda done: done and length.value > payload_offset)  # a bare header: did not fit
    return NalUnit(buffer.raw[:length.value])
