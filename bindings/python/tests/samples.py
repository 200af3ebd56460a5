"""What the tests share: the sample streams, and what h265tool says of them."""

import json
import os
import subprocess
from collections.abc import Iterator
from functools import cache
from pathlib import Path
from typing import Any

import h265

SOURCE = Path(__file__).resolve().parents[3]
SAMPLES = SOURCE / "tests" / "samples"
STREAMS = sorted(SAMPLES.glob("*.hevc"))
UNITS = sorted(SAMPLES.glob("units/*.nal"))


def run_tool(*arguments: str | Path) -> str:
    """The output of h265tool."""
    return subprocess.run([os.environ["H265TOOL"], *arguments], check=True, capture_output=True,
                          text=True).stdout


@cache
def inspected(path: Path) -> list[dict[str, Any]]:
    """The JSON objects of `h265tool inspect`, one a NAL unit."""
    return [json.loads(line) for line in run_tool("inspect", "--json", path).splitlines()]


def units_of(path: Path, nal_unit_type: int) -> list[h265.NalUnit]:
    return [unit for unit in h265.split(path.read_bytes()) if unit.nal_unit_type == nal_unit_type]


def first_sps(name: str) -> h265.Sps:
    """The first SPS of a sample stream."""
    return h265.Sps.parse(units_of(SAMPLES / name, h265.NalUnitType.SPS_NUT)[0])


def escaped(payload: bytes) -> bytes:
    """Emulation prevention, clause 7.4.2."""
    result = bytearray()
    for byte in payload:
        if byte <= 3 and result[-2:] == b"\0\0":
            result.append(3)
        result.append(byte)
    return bytes(result)


def differences(expected: Any, actual: Any, path: str = "") -> Iterator[str]:
    """Where a record does not hold what the JSON of h265tool holds; null stands for what is not coded."""
    if isinstance(expected, dict):
        for name, value in expected.items():
            yield from differences(value, getattr(actual, name), f"{path}.{name}")
    elif isinstance(expected, list):
        for index, value in enumerate(expected):
            yield from differences(value, actual[index], f"{path}[{index}]")
    elif expected is not None and expected != actual:
        yield f"{path}: {expected} expected, not {actual}"
