"""Video, sequence and picture parameter sets."""

from ctypes import byref
from typing import Self

from ._functions import library
from .records import H265D_PARSE_CONTEXT, pps_h265_t, sps_h265_t, vps_h265_t
from .trace import call, displayed


class Vps(vps_h265_t):
    """A video parameter set; the fields are those of vps_h265_t."""

    @classmethod
    def parse(cls, nal: bytes) -> Self:
        """Parses a NAL unit of at most 1512 bytes, start code not counted (H265Lib_Parse_vps_nal).

        The NAL unit type is not checked. Raises H265Error.
        """
        vps = cls()
        vps.cprms_present_flag[0] = 1  # as H.265 infers it
        call(library.H265Lib_Parse_vps_nal, nal, len(nal), byref(vps))
        return vps

    def display(self, level: int = 6) -> str:
        """The fields, one a line (H265Lib_Display_vps).

        At level 5 the set's own fields, at level 6 those of profile, tier and level and of the HRDs as well.
        """
        return displayed(library.H265Lib_Display_vps, byref(self), level=level)


class Sps(sps_h265_t):
    """A sequence parameter set; the fields are those of sps_h265_t."""

    @classmethod
    def parse(cls, nal: bytes, context: H265D_PARSE_CONTEXT | None = None) -> Self:
        """Parses a NAL unit of at most 1512 bytes, start code not counted (H265Lib_Parse_sps_nal).

        With a context, a NAL unit that equals the last one parsed with it is not parsed again
        (H265Lib_Parse_sps_nal_ex). The NAL unit type is not checked. Raises H265Error, with the context as it
        was.
        """
        sps = cls()
        if context is None:
            call(library.H265Lib_Parse_sps_nal, nal, len(nal), byref(sps))
        else:
            call(library.H265Lib_Parse_sps_nal_ex, nal, len(nal), byref(context), byref(sps))
        return sps

    def display(self, level: int = 6) -> str:
        """The fields, one a line (H265Lib_Display_sps).

        At level 5 the set's own fields, at level 6 those of profile, tier and level, of the reference picture
        sets, the VUI and its HRD as well.
        """
        return displayed(library.H265Lib_Display_sps, byref(self), level=level)


class Pps(pps_h265_t):
    """A picture parameter set; the fields are those of pps_h265_t."""

    @classmethod
    def parse(cls, nal: bytes, context: H265D_PARSE_CONTEXT | None = None) -> Self:
        """Parses a NAL unit of at most 256 bytes, start code not counted (H265Lib_Parse_pps_nal).

        With a context, as Sps.parse has it (H265Lib_Parse_pps_nal_ex).
        """
        pps = cls()
        if context is None:
            call(library.H265Lib_Parse_pps_nal, nal, len(nal), byref(pps))
        else:
            call(library.H265Lib_Parse_pps_nal_ex, nal, len(nal), byref(context), byref(pps))
        return pps

    def display(self, level: int = 6) -> str:
        """The fields, one a line (H265Lib_Display_pps)."""
        return displayed(library.H265Lib_Display_pps, byref(self), level=level)
