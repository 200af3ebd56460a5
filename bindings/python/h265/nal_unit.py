"""NAL units and the byte stream that they come in (ITU-T H.265 clauses 7.3.1 and Annex B)."""

import ctypes
import re
from enum import IntEnum

from ._functions import library
from .trace import call


class NalUnitType(IntEnum):
    """nal_unit_type, Table 7-1, without the reserved and the unspecified values."""

    TRAIL_N = 0
    TRAIL_R = 1
    TSA_N = 2
    TSA_R = 3
    STSA_N = 4
    STSA_R = 5
    RADL_N = 6
    RADL_R = 7
    RASL_N = 8
    RASL_R = 9
    BLA_W_LP = 16
    BLA_W_RADL = 17
    BLA_N_LP = 18
    IDR_W_RADL = 19
    IDR_N_LP = 20
    CRA_NUT = 21
    VPS_NUT = 32
    SPS_NUT = 33
    PPS_NUT = 34
    AUD_NUT = 35
    EOS_NUT = 36
    EOB_NUT = 37
    FD_NUT = 38
    PREFIX_SEI_NUT = 39
    SUFFIX_SEI_NUT = 40


_START_CODE = re.compile(rb"\x00?\x00\x00\x01")
_HEADER_SIZE = 2


class NalUnit(bytes):
    """One NAL unit: bytes that begin with an Annex B start code, 00 00 01 or 00 00 00 01.

    The properties raise ValueError when there is no start code, or not the whole header behind it.
    """

    @property
    def payload_offset(self) -> int:
        """Bytes of start code and NAL unit header: 5 or 6."""
        start_code = _START_CODE.match(self)
        if start_code is None or len(self) < start_code.end() + _HEADER_SIZE:
            raise ValueError("no NAL unit with start code and header")
        return start_code.end() + _HEADER_SIZE

    @property
    def _header(self) -> int:
        end = self.payload_offset
        return int.from_bytes(self[end - _HEADER_SIZE:end], "big")

    @property
    def nal_unit_type(self) -> int:
        """u(6): a NalUnitType, or a number that Table 7-1 reserves or leaves unspecified."""
        return self._header >> 9 & 0x3F

    @property
    def nuh_layer_id(self) -> int:
        """u(6): 0 for the base layer."""
        return self._header >> 3 & 0x3F

    @property
    def nuh_temporal_id_plus1(self) -> int:
        """u(3): TemporalId plus 1."""
        return self._header & 7

    @property
    def type_name(self) -> str:
        """The name of the type, "TRAIL_N" to "UNSPEC48"; "Invalid" above 48 (GetH265NalTypeString)."""
        return library.GetH265NalTypeString(self.nal_unit_type).decode()

    @property
    def is_slice(self) -> bool:
        """Whether it is a coded slice segment: what SliceHeader.parse reads."""
        return self.nal_unit_type <= NalUnitType.RASL_R or (
            NalUnitType.BLA_W_LP <= self.nal_unit_type <= NalUnitType.CRA_NUT)

    @property
    def sodb(self) -> bytes:
        """What is behind the header, emulation prevention bytes removed, trailing bits included.

        H265Lib_SODB_deencapsulation_from_NAL.
        """
        encoded = self[self.payload_offset - _HEADER_SIZE:]
        buffer = ctypes.create_string_buffer(len(encoded))
        length = call(library.H265Lib_SODB_deencapsulation_from_NAL, encoded, len(encoded), buffer,
                      len(buffer), succeeded=lambda result: result >= 0)
        return buffer.raw[:length]


def split(data: bytes) -> list[NalUnit]:
    """The NAL units of an Annex B byte stream, start codes included.

    Joined they are the stream again, but for bytes in front of the first start code and zero bytes between
    NAL units, beyond the one that makes a start code four bytes long: these belong to none.
    """
    starts = [match.start() for match in _START_CODE.finditer(data)]
    ends = starts[1:] + [len(data)]
    return [NalUnit(data[start:end].rstrip(b"\0")) for start, end in zip(starts, ends)]
