#!/usr/bin/env python3
"""Makes the picture of `h265tool inspect` on a terminal that the README shows, from what the tool prints.

    scripts/picture.py H265TOOL... >docs/inspect.svg      a command, behind an emulator where it needs one
    scripts/picture.py --check H265TOOL...                fails when docs/inspect.svg is another one
"""

import pathlib
import re
import subprocess
import sys
from xml.sax.saxutils import escape

ROOT = pathlib.Path(__file__).resolve().parent.parent
PICTURE = ROOT / "docs/inspect.svg"
ARGUMENTS = ["inspect", "--human", "tests/samples/repeated-headers.hevc"]
LINES = 16  # of those that it prints

STYLES = {  # of the tool's colours
    "2": "fill:#8b949e",
    "36": "fill:#56d4dd",
    "1;32": "fill:#56d364;font-weight:bold",
    "1;31": "fill:#ff7b72;font-weight:bold",
}
CHARACTER, LINE, MARGIN = 7.8, 18, 14  # pixels, at 13 pixels


def painted(line):
    """A line of the tool as SVG: "\\033[36mVPS_NUT\\033[0m" becomes an element of its class."""
    parts = re.split(r"\033\[([0-9;]*)m", line)
    svg = escape(parts[0])
    for code, text in zip(parts[1::2], parts[2::2]):
        if text and code != "0":
            svg += f'<tspan class="{class_of(code)}">{escape(text)}</tspan>'
        else:
            svg += escape(text)
    return svg


def class_of(code):
    return "c" + code.replace(";", "-")


def picture(tool):
    printed = subprocess.run([*tool, *ARGUMENTS, "--color", "always"], cwd=ROOT, check=True, capture_output=True,
                             text=True).stdout.splitlines()[:LINES]
    command = "$ " + " ".join(["h265tool", *ARGUMENTS])
    lines = [f'<tspan class="prompt">{escape(command)}</tspan>', *map(painted, printed)]
    columns = max(len(re.sub(r"\033\[[0-9;]*m", "", line)) for line in [command, *printed])
    width, height = round(columns * CHARACTER) + 2 * MARGIN, len(lines) * LINE + 2 * MARGIN
    yield f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}">'
    yield "<style>text{font:13px monospace;fill:#d0d7de;white-space:pre}.prompt{fill:#fff;font-weight:bold}"
    yield "".join(f".{class_of(code)}{{{style}}}" for code, style in STYLES.items()) + "</style>"
    yield f'<rect width="{width}" height="{height}" rx="8" fill="#0d1117"/>'
    for i, line in enumerate(lines):
        yield f'<text x="{MARGIN}" y="{MARGIN + LINE * i + 13}" xml:space="preserve">{line}</text>'
    yield "</svg>"


def main():
    arguments = sys.argv[1:]
    check = arguments[:1] == ["--check"]
    tool = arguments[1:] if check else arguments
    if not tool:
        sys.exit(__doc__)
    svg = "\n".join(picture(tool)) + "\n"
    if not check:
        sys.stdout.write(svg)
    elif svg != PICTURE.read_text(encoding="utf-8"):
        sys.exit(f"{PICTURE} is not what the tool prints; see {__file__}")


main()
