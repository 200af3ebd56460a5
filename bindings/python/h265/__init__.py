"""Reads, prints, rewrites and builds the syntax of H.265 (HEVC, ITU-T H.265) bitstreams.

A thin layer on the C library of the same name, libh265.so.1. It works on NAL units: bytes that begin with an
Annex B start code. split() takes a byte stream apart.

Parsing
    Vps, Sps, Pps, SliceHeader, PicTiming, TimeCode, Captions, ActiveFormat and AccessUnitDelimiter have a
    class method parse(); sei_messages() tells what a SEI NAL unit holds. They are records of the C interface
    (h265.records) with the syntax elements as fields. display() gives parameter sets and picture timing as
    text.
Rewriting
    modify_vps, modify_sps, modify_sps_vui and modify_pic_timing return a new NAL unit.
Building
    build_captions, build_active_format, build_time_code, build_pic_timing, build_precision_time,
    build_access_unit_delimiter and build_end_of_sequence.

What the library refuses raises H265Error with the messages that it reported; h265.trace says where other
messages go. All functions may be called from any number of threads on different records; the library is
called without the interpreter's lock.

The library is the one that H265_LIBRARY in the environment names, else the one that is installed beside this
package, else the one that the dynamic loader finds.
"""

from .access_unit_delimiter import AccessUnitDelimiter, build_access_unit_delimiter, build_end_of_sequence
from .building import (build_active_format, build_captions, build_pic_timing, build_precision_time,
                       build_time_code, vitc)
from .nal_unit import NalUnit, NalUnitType, split
from .parameter_sets import Pps, Sps, Vps
from .records import (AspectRatio, CountingMode, H265D_PARSE_CONTEXT, SEI_COMMERCIALTC, Suid, TimeSource,
                      caption_t, vitc_t)
from .rewriting import modify_pic_timing, modify_sps, modify_sps_vui, modify_vps
from .sei import ActiveFormat, Captions, PicTiming, SeiMessage, TimeCode, sei_messages
from .slice_header import SliceHeader
from .trace import H265Error, TraceMessage

__all__ = [
    "AccessUnitDelimiter", "ActiveFormat", "AspectRatio", "Captions", "CountingMode",
    "H265D_PARSE_CONTEXT", "H265Error", "NalUnit", "NalUnitType", "PicTiming", "Pps", "SEI_COMMERCIALTC",
    "SeiMessage", "SliceHeader", "Sps", "Suid", "TimeCode", "TimeSource", "TraceMessage", "Vps",
    "build_access_unit_delimiter", "build_active_format", "build_captions", "build_end_of_sequence",
    "build_pic_timing", "build_precision_time", "build_time_code", "caption_t", "modify_pic_timing",
    "modify_sps", "modify_sps_vui", "modify_vps", "sei_messages", "split", "vitc", "vitc_t",
]
