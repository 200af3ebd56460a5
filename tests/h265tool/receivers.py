#!/usr/bin/env python3
"""Shows what `h265tool insert` made to programs of others: they find what was put in, where it was put.

    receivers.py ffmpeg|gstreamer SAMPLES_DIR TOOL...

Exit status 77 when a program is not there.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77

# pop-on captions, each code twice as usual: "Hello" appears when the second line begins
CAPTIONS = """Scenarist_SCC V1.0

00:00:00:00\t9420 9420 94ae 94ae 9470 9470 c8e5 ecec ef80 942f 942f

00:00:00;25\t942c 942c

"""

# (sample, time code in, the time codes that ffprobe shows in the order of output)
TIME_CODES = [
    ("temporal-layers", "00:00:59;20",
     [f"00:00:59;{f}" for f in range(20, 30)] + [f"00:01:00;{f:02}" for f in range(2, 30)]
     + ["00:01:01;00", "00:01:01;01"]),
    ("progressive-hrd-vui", "23:59:59:20",
     [f"23:59:59:{f}" for f in range(20, 25)] + [f"00:00:00:{f:02}" for f in range(7)]),
    ("captions-a53", "10:00:00:00", [f"10:00:00:{f:02}" for f in range(16)]),
]

MICROSECONDS = 1769860800500000  # of 2026-01-31T12:00:00.5Z
# and how many pictures they have
SAMPLES = {"progressive-hrd-vui": 12, "temporal-layers": 40, "captions-a53": 16, "interlaced-field-hrd": 16}

problems = []


def expect(what, expected, actual):
    if expected != actual:
        problems.append(f"{what}: expected {expected}, got {actual}")


def run(*command, **options):
    return subprocess.run([str(part) for part in command], capture_output=True, text=True, errors="replace",
                          **options)


def checked(*command, **options):
    result = run(*command, **options)
    if result.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))}: exit status {result.returncode}\n{result.stderr}")
    return result.stdout


class Streams:
    """The samples, and streams made of them in a directory of their own."""

    def __init__(self, samples, tool, directory):
        self.samples, self.tool, self.directory = samples, tool, directory
        self.scc = self.directory / "captions.scc"
        self.scc.write_text(CAPTIONS)

    def sample(self, name):
        return self.samples / f"{name}.hevc"

    def inserted(self, name, *options):
        out = self.directory / f"{name}.hevc"
        checked(*self.tool, "insert", self.sample(name), "-o", out, *options)
        return out

    def everything(self, name):
        options = ["--captions", self.scc, "--afd", "10", "--timecode", "00:00:00:00", "--precision-time",
                   "2026-01-31T12:00:00.5Z", "--aud", "--eos", "--replace"]
        if name == "interlaced-field-hrd":
            options += ["--pic-timing", "1,2"]
        return self.inserted(name, *options)


def frames(stream):
    return json.loads(checked("ffprobe", "-v", "error", "-show_frames", "-of", "json", stream))["frames"]


def side_data(frame, kind):
    return [data for data in frame.get("side_data_list", []) if data["side_data_type"].startswith(kind)]


def picture_hashes(stream, *options):
    return checked("ffmpeg", "-v", "error", "-nostdin", *options, "-i", stream, "-f", "framemd5", "-")


def check_pictures(streams):
    for name in SAMPLES:
        expected = picture_hashes(streams.sample(name))
        strict = ["-xerror", "-err_detect", "explode"]
        expect(f"{name}: pictures", expected, picture_hashes(streams.everything(name), *strict))


def check_captions_side_data(streams):
    for name in SAMPLES:
        shown = frames(streams.inserted(name, "--captions", streams.scc, "--replace"))
        expect(f"{name}: pictures with captions or without", SAMPLES[name], len(shown))
        for i, frame in enumerate(shown):
            expect(f"{name}: A/53 captions of picture {i}", 1, len(side_data(frame, "ATSC A53")))


def check_time_codes(streams):
    for name, first, expected in TIME_CODES:
        shown = []
        for frame in frames(streams.inserted(name, "--timecode", first)):
            for data in side_data(frame, "SMPTE 12-1 timecode"):
                shown += [entry["value"] for entry in data["timecodes"]]
        # cnt_dropped_flag, which the separator shows, is set behind a gap only
        expect(f"{name}: time codes", [code.replace(";", ":") for code in expected],
               [code.replace(";", ":") for code in shown])


def precision_time(microseconds):
    digits = f"{microseconds:016x}"
    return "9f" + "ff".join(digits[i:i + 4] for i in range(0, 16, 4))


def check_precision_time(streams):
    stream = streams.inserted("progressive-hrd-vui", "--precision-time", "2026-01-31T12:00:00.5Z")
    log = run("ffmpeg", "-v", "info", "-nostdin", "-i", stream, "-vf", "showinfo", "-f", "null", "-").stderr
    expect("precision time UUID", {"a8687dd4-d759-3758-a5ce-f0338b6545f1"},
           set(re.findall(r"UUID=(\S+)", log)))
    expect("precision time bytes", [precision_time(MICROSECONDS + 40000 * i) for i in range(12)],
           re.findall(r"User Data=(\w+)", log))


def check_caption_text(streams):
    """A raw stream has no time stamps: those of a transport stream are made up, in decoding order."""
    stream = streams.inserted("temporal-layers", "--captions", streams.scc)
    transport = streams.directory / "captions.ts"
    checked("ffmpeg", "-v", "error", "-nostdin", "-y", "-i", stream, "-c", "copy", "-bsf:v",
            "setts=ts=N*3003:time_base=1/90000", transport)
    text = checked("ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i", "movie=captions.ts[out+subcc]",
                   "-map", "s", "-f", "srt", "-", cwd=streams.directory)
    expect("caption text", ["Hello"], re.findall(r"^(?:<[^>]*>|\{[^}]*\})*(\w+)", re.sub(
        r"(?m)^(\d+|[\d:,]+ --> .*)$", "", text), re.MULTILINE))


def check_gstreamer(streams):
    for name in SAMPLES:
        stream = streams.everything(name)
        result = run("gst-launch-1.0", "filesrc", f"location={stream}", "!", "h265parse", "!", "fakesink",
                     env={**os.environ, "GST_DEBUG_NO_COLOR": "1", "HOME": str(streams.directory),
                          "GST_DEBUG": "*:2,h265parse:6,codecparsers_h265:6,videoparseutils:7"})
        expect(f"{name}: exit status", 0, result.returncode)
        log = result.stderr
        expect(f"{name}: complaints", [], [line for line in log.splitlines()
                                           if re.search(r" (WARN|ERROR) .*(h265|videoparse)", line)])
        # four reserved bits come in front of the code
        formats = re.findall(r"active format description \(AFD\): (\d+)", log)
        captions = re.findall(r"CEA-708 closed captions, (\d+) bytes", log)
        expect(f"{name}: AFD", {str(0xF0 | 10)}, set(formats))
        # RASL pictures that are not output get no captions; these streams have none of those
        expect(f"{name}: number of AFD", SAMPLES[name], len(formats))
        expect(f"{name}: number of captions", SAMPLES[name], len(captions))


RECEIVERS = {
    "ffmpeg": (["ffmpeg", "ffprobe"], [check_pictures, check_captions_side_data, check_time_codes,
                                       check_precision_time, check_caption_text]),
    "gstreamer": (["gst-launch-1.0"], [check_gstreamer]),
}


def run_checks(programs, checks, make_streams):
    """The exit status. make_streams has the arguments samples directory, tool and directory to write to."""
    for program in programs:
        if shutil.which(program) is None:
            print(f"SKIPPED: {program} is not there")
            return SKIPPED
    if "gst-launch-1.0" in programs and run("gst-inspect-1.0", "h265parse").returncode != 0:
        print("SKIPPED: GStreamer has no h265parse here")
        return SKIPPED
    with tempfile.TemporaryDirectory() as directory:
        streams = make_streams(pathlib.Path(sys.argv[2]).resolve(), sys.argv[3:], pathlib.Path(directory))
        for check in checks:
            before = len(problems)
            check(streams)
            print(f"{check.__name__}: {'ok' if len(problems) == before else 'FAILED'}")
    for problem in problems:
        print(f"  {problem}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(run_checks(*RECEIVERS[sys.argv[1]], Streams))
