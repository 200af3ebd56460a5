"""h265/parse_context.h: the last parameter sets of a stream."""

from ctypes import c_size_t

from .pps import pps_h265_t
from .sps import sps_h265_t
from .vps import vps_h265_t
from .xtypes import BYTE, Record, array

H265_CONTEXT_VPS_SIZE = 256
H265_CONTEXT_SPS_SIZE = 1512
H265_CONTEXT_PPS_SIZE = 256


class H265D_PARSE_CONTEXT(Record):
    """Remembers the last parameter sets of one stream, so that an unchanged one is not parsed again.

    One a stream, passed to Sps.parse and Pps.parse, by one thread at a time. A length of 0 says that there is
    none yet. A NAL unit that is longer than its store is parsed and not remembered. The VPS members are not
    used.
    """

    _fields_ = [
        ("LastVPSLength", c_size_t),
        ("LastVPS", array(BYTE, H265_CONTEXT_VPS_SIZE)),
        ("LastSPSLength", c_size_t),
        ("LastSPS", array(BYTE, H265_CONTEXT_SPS_SIZE)),
        ("LastPPSLength", c_size_t),
        ("LastPPS", array(BYTE, H265_CONTEXT_PPS_SIZE)),
        ("last_parsed_vps", vps_h265_t),
        ("last_parsed_sps", sps_h265_t),
        ("last_parsed_pps", pps_h265_t),
    ]
