"""dbgtrace.h: what the debug trace service shares with its callers."""

from ctypes import CFUNCTYPE, POINTER, c_char_p, c_int, c_void_p

from .xtypes import DWORD, Record


class tagHDBG(Record):
    """One trace channel: nMaxLevel is the most detailed level that it lets through."""

    _fields_ = [
        ("dwReserved", DWORD),
        ("nMaxLevel", c_int),
    ]


HDBG = POINTER(tagHDBG)


class DbgTraceMessage(Record):
    """One message as it is handed to a sink; the texts are valid during the call only."""

    _fields_ = [
        ("channel", c_char_p),
        ("level", c_int),
        ("function", c_char_p),
        ("file", c_char_p),
        ("line", c_int),
        ("text", c_char_p),
    ]


DbgTraceSink = CFUNCTYPE(None, POINTER(DbgTraceMessage), c_void_p)
