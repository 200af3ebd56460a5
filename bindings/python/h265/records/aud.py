"""h265/aud.h: access unit delimiters."""

from ctypes import c_ubyte

from .xtypes import Record


class aud_h265_t(Record):
    """access_unit_delimiter_rbsp( ), ITU-T H.265 clause 7.3.2.5, with its NAL unit type.

    pic_type is 0 for I, 1 for P and I, 2 for B, P and I slices.
    """

    _fields_ = [
        ("nal_type", c_ubyte),
        ("pic_type", c_ubyte),
    ]
