#!/usr/bin/env python3
"""Shows what `h265tool edit` made to ffmpeg: it sees what was changed, and the same pictures.

    edit_receivers.py ffmpeg SAMPLES_DIR TOOL...

Exit status 77 when a program is not there.
"""

import json
import sys

from receivers import checked, expect, frames, run_checks

# options, and what ffprobe shows of the stream then
PROPERTIES = [
    (["--sar", "40:33"], {"sample_aspect_ratio": "40:33"}),
    (["--sar", "123:7"], {"sample_aspect_ratio": "123:7"}),
    (["--range", "full"], {"color_range": "pc"}),
    (["--range", "limited"], {"color_range": "tv"}),
    (["--fps", "30000/1001"], {"r_frame_rate": "30000/1001"}),
    (["--timing", "1/50"], {"r_frame_rate": "50/1"}),
    (["--interlaced"], {}),
]
EVERYTHING = (
    ["--interlaced", "--sar", "2:1", "--range", "full", "--colour", "bt2020/arib-std-b67/bt2020nc", "--fps", "24"],
    {"sample_aspect_ratio": "2:1", "color_range": "pc", "color_primaries": "bt2020",
     "color_transfer": "arib-std-b67", "color_space": "bt2020nc", "r_frame_rate": "24/1"})

# by what ffprobe calls them
PRIMARIES = ["bt709", "bt470m", "bt470bg", "smpte170m", "smpte240m", "film", "bt2020", "smpte428", "smpte431",
             "smpte432", "ebu3213"]
TRANSFERS = ["bt709", "bt470m", "bt470bg", "smpte170m", "smpte240m", "linear", "log100", "log316",
             "iec61966-2-4", "bt1361e", "iec61966-2-1", "bt2020-10", "bt2020-12", "smpte2084", "smpte428",
             "arib-std-b67"]
MATRICES = ["bt709", "fcc", "bt470bg", "smpte170m", "smpte240m", "ycgco", "bt2020nc", "bt2020c", "smpte2085",
            "chroma-derived-nc", "chroma-derived-c", "ictcp"]

# the SPS has no conformance window, so that the size is shown as it is coded
SIZES = [("slices", "216x128"), ("10bit-422", "1920x1088"), ("temporal-layers", "8x8")]


class Streams:
    """The samples, and streams made of them in a directory of their own."""

    def __init__(self, samples, tool, directory):
        self.samples, self.tool, self.directory = samples, tool, directory

    def all(self):
        return sorted(self.samples.glob("*.hevc"))

    def edited(self, sample, *options):
        out = self.directory / sample.name
        checked(*self.tool, "edit", sample, "-o", out, *options)
        return out


def shown(stream):
    output = checked("ffprobe", "-v", "error", "-show_streams", "-of", "json", stream)
    return json.loads(output)["streams"][0]


def pictures(stream):
    """Size and hash of each: when they come depends on the rate. Nothing may be wrong with the stream."""
    lines = checked("ffmpeg", "-v", "error", "-nostdin", "-xerror", "-err_detect", "explode", "-i", stream,
                    "-fps_mode", "passthrough", "-f", "framemd5", "-").splitlines()
    return [line.split(",")[-2:] for line in lines if not line.startswith("#")]


def check_properties(streams):
    for sample in streams.all():
        before = pictures(sample)
        alone = PROPERTIES if sample.stem in ("vui-extended-sar", "repeated-headers") else []
        for options, expected in [EVERYTHING, *alone]:
            stream = streams.edited(sample, *options)
            properties = shown(stream)
            for name, value in expected.items():
                expect(f"{sample.stem} {options}: {name}", value, properties.get(name))
            expect(f"{sample.stem} {options}: pictures", before, pictures(stream))


def check_colours(streams):
    for primaries, transfer, matrix in [*((name, "bt709", "bt709") for name in PRIMARIES),
                                        *(("bt709", name, "bt709") for name in TRANSFERS),
                                        *(("bt709", "bt709", name) for name in MATRICES)]:
        colour = f"{primaries}/{transfer}/{matrix}"
        properties = shown(streams.edited(streams.samples / "slices.hevc", "--colour", colour))
        expect("colour", colour, "/".join(properties.get(name, "") for name in
                                          ["color_primaries", "color_transfer", "color_space"]))
    properties = shown(streams.edited(streams.samples / "444-8bit.hevc", "--colour", "bt709/bt709/gbr"))
    expect("colour space", "gbr", properties.get("color_space"))


def check_sizes(streams):
    for name, size in SIZES:
        properties = shown(streams.edited(streams.samples / f"{name}.hevc", "--size", size))
        expect(f"{name}: size", size, f"{properties['width']}x{properties['height']}")
    # a window of 160x96 that is there
    properties = shown(streams.edited(streams.samples / "vui-extended-sar.hevc", "--crop", "4,8,2,20"))
    expect("cropped size", (148, 74), (properties["width"], properties["height"]))


def check_fields(streams):
    for pic_struct, top_field_first in [(1, 1), (2, 0), (9, 1), (10, 0)]:
        sample = streams.samples / "interlaced-field-hrd.hevc"
        stream = streams.edited(sample, "--pic-struct", pic_struct)
        flags = [(frame["interlaced_frame"], frame["top_field_first"]) for frame in frames(stream)]
        expect(f"pic_struct {pic_struct}", [(1, top_field_first)] * 16, flags)
        expect(f"pic_struct {pic_struct}: pictures", pictures(sample), pictures(stream))

    stream = streams.edited(streams.samples / "temporal-layers.hevc", "--interlaced", "--field-seq")
    timed = streams.directory / "timed.hevc"
    checked(*streams.tool, "insert", stream, "-o", timed, "--pic-timing", "1,2")
    flags = [(frame["interlaced_frame"], frame["top_field_first"]) for frame in frames(timed)]
    expect("fields", [(1, 1), (1, 0)] * 20, flags)


CHECKS = [check_properties, check_colours, check_sizes, check_fields]

if __name__ == "__main__":
    sys.exit(run_checks(["ffmpeg", "ffprobe"], CHECKS, Streams))
