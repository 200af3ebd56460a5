#!/usr/bin/env python3
"""Checks that the guide shows the examples as they are: each of its pieces of code stands in one of them.

    check_guide.py
"""

import pathlib
import re
import sys

docs = pathlib.Path(__file__).resolve().parent
guide = (docs / "guide.md").read_text()
sources = [path.read_text() for path in (docs.parent / "examples").glob("*.c*")]
pieces = re.findall(r"^```c(?:pp)?\n(.*?)^```$", guide, re.MULTILINE | re.DOTALL)
strangers = [piece for piece in pieces if not any(piece in source for source in sources)]
missing = [name for name in set(re.findall(r"examples/(\w+\.\w+)", guide)) if not (docs.parent / "examples" / name).exists()]
for piece in strangers:
    print(f"in no example:\n{piece}")
for name in missing:
    print(f"no such example: {name}")
sys.exit(not pieces or bool(strangers or missing))
