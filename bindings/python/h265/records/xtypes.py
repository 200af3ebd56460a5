"""The fixed-width base types of xtypes.h, and what all records share."""

import ctypes

BOOL = ctypes.c_int32
BYTE = ctypes.c_uint8
UINT = ctypes.c_uint32
DWORD = ctypes.c_uint32
INT64 = ctypes.c_int64
UINT64 = ctypes.c_uint64


def array(element: type, *bounds: int) -> type:
    """The type of an array field, with its bounds in the order in which C has them."""
    for bound in reversed(bounds):
        element = element * bound
    return element


class _CheckedFields:
    """Refuses what ctypes takes silently: names that are no fields, and numbers that do not fit theirs."""

    def __setattr__(self, name: str, value: object) -> None:
        if not hasattr(type(self), name):
            raise AttributeError(f"{type(self).__name__} has no field {name}")
        before = getattr(self, name)
        super().__setattr__(name, value)
        if isinstance(value, int) and getattr(self, name) != value:
            super().__setattr__(name, before)
            raise OverflowError(f"{value} does not fit {name} of {type(self).__name__}")


class Record(_CheckedFields, ctypes.Structure):
    """A record of the library; all bytes zero when it is made without arguments."""


class Alternatives(_CheckedFields, ctypes.Union):
    """A union of the library."""
