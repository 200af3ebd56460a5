"""Access unit delimiters and the end of a sequence."""

from ctypes import byref, create_string_buffer
from typing import Self

from ._functions import library
from .nal_unit import NalUnit
from .records import aud_h265_t
from .trace import call


class AccessUnitDelimiter(aud_h265_t):
    """An access unit delimiter; the fields are those of aud_h265_t."""

    @classmethod
    def parse(cls, nal: bytes) -> Self:
        """Parses one whose payload still holds the two header bytes (H265Lib_Parse_au_delimiter_nal).

        An ordinary delimiter is too short for that: its pic_type is ``nal.sodb[0] >> 5``. At most 16 bytes,
        start code not counted. Raises H265Error.
        """
        aud = cls()
        buffer = create_string_buffer(nal, len(nal))
        call(library.H265Lib_Parse_au_delimiter_nal, buffer, len(buffer), byref(aud))
        return aud


def build_access_unit_delimiter(primary_pic_type: int) -> NalUnit:
    """An access unit delimiter, 7 bytes (H265Lib_format_au_delimiter_nalu).

    primary_pic_type is the standard's pic_type: 0 for I, 1 for P and I, 2 for B, P and I slices. Raises
    H265Error for others.
    """
    buffer = create_string_buffer(8)  # one byte more than is written
    length = call(library.H265Lib_format_au_delimiter_nalu, buffer, len(buffer), primary_pic_type,
                  succeeded=lambda result: result > 0)
    return NalUnit(buffer.raw[:length])


def build_end_of_sequence() -> NalUnit:
    """An end of sequence NAL unit, 5 bytes (H265Lib_format_end_of_sequence_nalu)."""
    buffer = create_string_buffer(5)
    call(library.H265Lib_format_end_of_sequence_nalu, buffer, len(buffer),
         succeeded=lambda result: result > 0)
    return NalUnit(buffer.raw)
