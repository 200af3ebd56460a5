"""Finds and loads the shared library."""

import ctypes
import os
import sysconfig
from pathlib import Path

_SONAME = "libh265.so.1"


def _library_path() -> str:
    """Where the environment says, else beside an installed package, else where the dynamic loader looks."""
    explicit = os.environ.get("H265_LIBRARY")
    if explicit:
        return explicit
    multiarch = sysconfig.get_config_var("MULTIARCH") or ""
    for directory in Path(__file__).resolve().parents:
        if directory.name in ("lib", "lib64"):
            for candidate in (directory / _SONAME, directory / multiarch / _SONAME):
                if candidate.exists():
                    return str(candidate)
    return _SONAME


def _load() -> ctypes.CDLL:
    path = _library_path()
    try:
        return ctypes.CDLL(path)
    except OSError as error:
        raise ImportError(f"the H.265 library cannot be loaded ({error}); "
                          f"H265_LIBRARY in the environment may name it") from error


library = _load()
