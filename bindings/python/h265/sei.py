"""Reading SEI messages."""

from collections.abc import Iterator
from ctypes import byref, c_int, create_string_buffer
from typing import NamedTuple, Self

from ._functions import library
from .nal_unit import NalUnit
from .records import (BOOL, SEI_afd_t, SEI_cc_t, SEI_message_t, Suid, caption_t, sei_h265_pic_timing_t,
                      sei_h265_time_code_t, vui_h265_t)
from .trace import call, displayed


class SeiMessage(NamedTuple):
    """The place of one message in a SEI NAL unit; the numbers are those of SEI_message_t."""

    payload_type: int
    """wraps at 256"""
    payload_size: int
    """bytes"""
    payload_index: int
    """of the payload's first byte in NalUnit.sodb"""
    suid: Suid
    """what it is"""

    def payload(self, nal: bytes) -> bytes:
        """The bytes of the payload, out of the NAL unit that it was found in."""
        return NalUnit(nal).sodb[self.payload_index:self.payload_index + self.payload_size]

    def header(self) -> SEI_message_t:
        """As the library's parsers take it."""
        return SEI_message_t(self.payload_type, self.payload_size, self.payload_index)


def sei_messages(nal: bytes) -> Iterator[SeiMessage]:
    """The messages of a prefix or suffix SEI NAL unit, in order (H265Lib_DetermineSEIType).

    Raises H265Error, behind the messages that could be told, when the NAL unit is no SEI or malformed, for
    reserved payload types (above 202, in a suffix SEI above 146), and for registered user data (payload type
    4) that is neither captions nor active format. Types and sizes of 255 and more are read differently from
    what H.265 codes.
    """
    offset, header_offset, suid, more = c_int(0), c_int(0), c_int(Suid.SUID_UNKNOWN), BOOL(True)
    header = SEI_message_t()
    while more:
        call(library.H265Lib_DetermineSEIType, nal, len(nal), byref(offset), byref(header_offset),
             byref(header), byref(suid), byref(more))
        yield SeiMessage(header.payload_type, header.payload_size, header.payload_index, Suid(suid.value))


class PicTiming(sei_h265_pic_timing_t):
    """A picture timing message; the fields are those of sei_h265_pic_timing_t."""

    @classmethod
    def parse(cls, nal: bytes, message: SeiMessage, vui: vui_h265_t) -> Self:
        """Parses the message at that place of the NAL unit (H265Lib_Parse_sei_pictiming_nal).

        vui is that of the active SPS; it tells what is present. Type and size of the message are not checked.
        Of more than 510 decoding units the first 510 are kept. Raises H265Error.
        """
        timing = cls()
        call(library.H265Lib_Parse_sei_pictiming_nal, nal, len(nal), byref(message.header()), byref(vui),
             byref(timing))
        return timing

    def display(self, vui: vui_h265_t) -> str:
        """The fields, one a line (H265Lib_Display_sei_pictiming)."""
        return displayed(library.H265Lib_Display_sei_pictiming, byref(self), byref(vui), level=5)


class TimeCode(sei_h265_time_code_t):
    """A time code message; the fields are those of sei_h265_time_code_t."""

    @classmethod
    def parse(cls, nal: bytes, message: SeiMessage) -> Self:
        """Parses the message at that place of the NAL unit (H265Lib_Parse_sei_timecode_nal).

        Type and size of the message are not checked. Raises H265Error.
        """
        time_code = cls()
        call(library.H265Lib_Parse_sei_timecode_nal, nal, len(nal), byref(message.header()), byref(time_code))
        return time_code


class Captions(SEI_cc_t):
    """A closed caption message; the fields are those of SEI_cc_t."""

    @classmethod
    def parse(cls, nal: bytes) -> Self:
        """Finds and parses the first one of a SEI NAL unit (H265Lib_Parse_sei_cc_nal).

        Raises H265Error, also when there is none.
        """
        captions = cls()
        buffer = create_string_buffer(nal, len(nal))
        call(library.H265Lib_Parse_sei_cc_nal, buffer, len(buffer), byref(captions))
        return captions

    @property
    def constructs(self) -> list[caption_t]:
        """The entries of cc_bytes that are in use."""
        return self.cc_bytes[:self.cc_data.cc_count]


class ActiveFormat(SEI_afd_t):
    """An active format description message; the fields are those of SEI_afd_t."""

    @classmethod
    def parse(cls, nal: bytes) -> Self:
        """Finds and parses the first one of a SEI NAL unit (H265Lib_Parse_sei_afd_nal).

        Raises H265Error, also when there is none.
        """
        afd = cls()
        buffer = create_string_buffer(nal, len(nal))
        call(library.H265Lib_Parse_sei_afd_nal, buffer, len(buffer), byref(afd))
        return afd
