#!/usr/bin/env python3
"""Runs one of the example programs on the sample streams, and checks what it made of them.

    check_example.py PROGRAM SAMPLES_DIR [EMULATOR...] H265TOOL

Exit status 77 when ffmpeg is not there.
"""

import json
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "h265tool"))

from edit_receivers import pictures, shown  # noqa: E402
from receivers import checked, expect, frames, run, run_checks, side_data  # noqa: E402

SAMPLES = {"progressive-hrd-vui": 12, "temporal-layers": 40, "repeated-headers": 24, "interlaced-field-hrd": 16}
MICROSECONDS = 1769860800500000


class Streams:
    """The samples, the program, and the streams that it makes in a directory of their own."""

    def __init__(self, samples, tool, directory):
        self.samples, self.tool, self.directory = samples, tool, directory
        self.program = [*tool[:-1], sys.argv[1]]

    def sample(self, name):
        return self.samples / f"{name}.hevc"

    def all(self):
        return sorted(self.samples.glob("*.hevc"))

    def made(self, source, *arguments):
        out = self.directory / f"made-{source.name}"
        checked(*self.program, source, out, *arguments)
        return out

    def units(self, stream):
        """The NAL units, without where they stand in the stream."""
        units = [json.loads(line) for line in checked(*self.tool, "inspect", "--json", stream).splitlines()]
        for unit in units:
            for position in ("offset", "size", "start_code"):
                del unit[position]
        return units

    def carried(self, stream):
        lines = checked(*self.tool, "extract", "--json", "--captions", "--timecodes", "--afd", stream).splitlines()
        return [json.loads(line) for line in lines]

    def check_refused(self, name, *arguments):
        """An exit status and a reason, and nothing is written."""
        out = self.directory / "refused.hevc"
        result = run(*self.program, self.sample(name), out, *arguments)
        expect(f"{name} {arguments}: exit status", 1, result.returncode)
        expect(f"{name} {arguments}: reason", True, result.stderr != "")
        expect(f"{name} {arguments}: output", False, out.exists())


def messages(units, payload_type):
    return [message for unit in units for message in unit.get("sei", []) if message["payload_type"] == payload_type]


def first_slices(units):
    """temporal_id of the pictures, in decoding order."""
    return [unit["temporal_id"] for unit in units if unit.get("slice", {}).get("first_slice_segment_in_pic_flag")]


def check_watch_parameter_sets(streams):
    sets = {"vps": "vps_video_parameter_set_id", "sps": "seq_parameter_set_id", "pps": "pps_pic_parameter_set_id"}
    for sample in streams.all():
        shown_fields = {}
        for line in checked(*streams.program, sample).splitlines():
            kind, number, field, *before, now = re.fullmatch(
                r" *\d+  (\w+) (\d+): (\S+) (?:(\d+) -> )?(\d+)", line).groups()
            key = (kind, int(number), field)
            expect(f"{sample.stem} {key}: value before", shown_fields.get(key), before[0] and int(before[0]))
            shown_fields[key] = int(now)
        last = {(kind, unit[kind].get(name, 0)): unit[kind] for unit in streams.units(sample)
                for kind, name in sets.items() if kind in unit}
        expect(f"{sample.stem}: sets", set(last), {(kind, number) for kind, number, _ in shown_fields})
        for (kind, number, field), value in shown_fields.items():
            actual = last[kind, number]
            for part in field.split("."):
                actual = actual.get(part, 0)
            expect(f"{sample.stem} {kind} {number}: {field}", actual, value)

    printed = checked(*streams.program, streams.sample("repeated-headers"))
    changes = re.findall(r"(\w+ \d: \S+ \d+ -> \d+)\n", printed)
    expect("changes", ["sps 0: pic_height_in_luma_samples 120 -> 128",
                       "sps 0: log2_min_luma_coding_block_size_minus3 0 -> 1",
                       "sps 0: log2_diff_max_min_luma_coding_block_size 3 -> 1",
                       "pps 0: sign_data_hiding_enabled_flag 1 -> 0", "pps 0: weighted_pred_flag 1 -> 0"], changes)


def marked(unit):
    """A NAL unit as it is expected to become."""
    for kind in ("vps", "sps"):
        if kind in unit:
            unit[kind]["ptl"].update(general_progressive_source_flag=0, general_interlaced_source_flag=1,
                                     general_frame_only_constraint_flag=0)
    if "sps" in unit:
        unit["sps"]["ptl"]["general_non_packed_constraint_flag"] = 0
        vui = unit["sps"]["vui"]
        vui.update(vui_timing_info_present_flag=1, vui_num_units_in_tick=1001, vui_time_scale=30000)
    return unit


def check_mark_interlaced(streams):
    for sample in streams.all():
        stream = streams.made(sample, 1001, 30000)
        expect(f"{sample.stem}: NAL units", [marked(unit) for unit in streams.units(sample)], streams.units(stream))
        expect(f"{sample.stem}: rate", "30000/1001", shown(stream)["r_frame_rate"])
        expect(f"{sample.stem}: pictures", pictures(sample), pictures(stream))
    streams.check_refused("slices", 0, 30000)

    # A VPS whose source flags are zero has an emulation prevention byte more than the one that it becomes.
    sample = streams.sample("slices")
    flags = bytes.fromhex("0160000003009000000300000300")
    no_flags = bytes.fromhex("016000000300000300000300000300")
    source = streams.directory / "no-flags.hevc"
    source.write_bytes(sample.read_bytes().replace(flags, no_flags, 1))
    expect("source flag", 0, streams.units(source)[0]["vps"]["ptl"]["general_progressive_source_flag"])
    expect("shorter VPS", streams.made(sample, 1001, 30000).read_bytes(),
           streams.made(source, 1001, 30000).read_bytes())


def check_add_ancillary_data(streams):
    for name, count in SAMPLES.items():
        sample = streams.sample(name)
        stream = streams.made(sample, "Hello.", 10, "23:59:59:20")
        carried = sorted(streams.carried(stream), key=lambda picture: picture["presentation"])
        expect(f"{name}: pictures", list(range(count)), [picture["presentation"] for picture in carried])
        rate = round(eval(shown(stream)["r_frame_rate"]))
        for number, picture in enumerate(carried):
            frame = (86400 * rate - rate + 20 + number) % (86400 * rate)
            time_code = picture["time_code"][0]
            expect(f"{name}: time code of picture {number}",
                   [frame // rate // 3600, frame // rate // 60 % 60, frame // rate % 60, frame % rate],
                   [time_code[element][0] for element in ("hours_value", "minutes_value", "seconds_value", "n_frames")])
            expect(f"{name}: active format", [10], [afd["afd_data"]["active_format"] for afd in picture["afd"]])
            expect(f"{name}: constructs", [600 // rate], [cc["cc_data"]["cc_count"] for cc in picture["captions"]])
        pairs = [picture["captions"][0]["cc_bytes"][0] for picture in carried]
        text = bytes(pair[part] & 0x7F for pair in pairs for part in ("data1", "data2"))
        expect(f"{name}: caption bytes", b"\x14%\x14%\x14-\x14-Hello.".ljust(2 * count, b"\0"), text)
        expect(f"{name}: odd parity", {1}, {bin(pair[part]).count("1") % 2 for pair in pairs
                                           for part in ("data1", "data2")})

        units = streams.units(stream)
        added = [unit["temporal_id"] for unit in units if messages([unit], 4) or messages([unit], 136)]
        expect(f"{name}: temporal ids", [tid for tid in first_slices(units) for _ in range(3)], added)
        expect(f"{name}: the rest", streams.units(sample),
               [unit for unit in units if not messages([unit], 4) and not messages([unit], 136)])
        expect(f"{name}: captions for players", [1] * count,
               [len(side_data(frame, "ATSC A53")) for frame in frames(stream)])
        expect(f"{name}: pictures", pictures(sample), pictures(stream))
    streams.check_refused("slices", "Hello.", 16, "00:00:00:00")
    streams.check_refused("slices", "Hello.", 10, "00:00:00:99")


def check_set_pic_struct(streams):
    # With this output delay, pic_struct 0 needs an emulation prevention byte more.
    original = streams.sample("interlaced-field-hrd").read_bytes()
    sample = streams.directory / "fields.hevc"
    sample.write_bytes(original.replace(bytes.fromhex("01010310000580"), bytes.fromhex("01010310000180"), 1))
    before = messages(streams.units(sample), 1)
    for pattern in ([1], [2, 1], [9, 10, 11], [0], [12, 0, 0, 0, 0]):
        stream = streams.made(sample, ",".join(map(str, pattern)))
        expect(f"{pattern}: bytes more", int(pattern == [0]), stream.stat().st_size - sample.stat().st_size)
        units = streams.units(stream)
        # captions are an easy way to the order of output: extract tells it
        numbered = streams.directory / "numbered.hevc"
        checked(*streams.tool, "insert", stream, "-o", numbered, "--afd", 8)
        order = [picture["presentation"] for picture in streams.carried(numbered)]
        for message, number in zip(before, order):
            message["pic_timing"]["pic_struct"] = pattern[number % len(pattern)]
        expect(f"{pattern}: pictures", len(before), len(order))
        expect(f"{pattern}: picture timing", before, messages(units, 1))
        expect(f"{pattern}: hashes", pictures(sample), pictures(stream))
    streams.check_refused("progressive-hrd-vui", "1")
    streams.check_refused("interlaced-field-hrd", "13")
    streams.check_refused("interlaced-field-hrd", "1,")


def check_stamp_precision_time(streams):
    for name, count in SAMPLES.items():
        sample = streams.sample(name)
        out = streams.directory / "stamped.hevc"
        printed = [line.split() for line in checked(*streams.program, sample, out, MICROSECONDS).splitlines()]
        expect(f"{name}: numbers", list(range(count)), [int(number) for number, _ in printed])
        units_per_second, seconds = map(int, shown(sample)["r_frame_rate"].split("/"))
        times = [MICROSECONDS + number * 1000000 * seconds // units_per_second for number in range(count)]
        expect(f"{name}: times", times, sorted(int(time) for _, time in printed))

        # what another builder of such a stream makes of it
        peer = streams.directory / "peer.hevc"
        checked(*streams.tool, "insert", sample, "-o", peer, "--precision-time", "2026-01-31T12:00:00.5Z")
        expect(f"{name}: messages", messages(streams.units(peer), 5), messages(streams.units(out), 5))
        units = streams.units(out)
        expect(f"{name}: temporal ids", first_slices(units),
               [unit["temporal_id"] for unit in units if messages([unit], 5)])
        expect(f"{name}: the rest", streams.units(sample), [unit for unit in units if not messages([unit], 5)])
        expect(f"{name}: pictures", pictures(sample), pictures(out))


if __name__ == "__main__":
    check = globals()["check_" + pathlib.Path(sys.argv[1]).name]
    sys.exit(run_checks(["ffmpeg", "ffprobe"], [check], Streams))
