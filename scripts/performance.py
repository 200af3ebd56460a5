#!/usr/bin/env python3
"""Runs the benchmarks of a build directory and compares them with what they are to reach; scripts/performance.sh builds
that directory and runs this.

    scripts/performance.py [--quick] BUILD_DIR

Prints the comparison and writes it to docs/performance.md. The exit status says whether everything could be run, not
whether every target was met: that depends on the machine, and on what else it does.
"""

import argparse
import dataclasses
import datetime
import json
import os
import pathlib
import platform
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "performance.md"
PEERS = {"ffmpeg": "FFmpeg", "gstreamer": "GStreamer"}
OTHERS = {"memcpy": "memcpy", "byte_loop": "byte loop"}
BYTES = {"1KiB": 2**10, "32KiB": 2**15, "1MiB": 2**20, "32MiB": 2**25}


@dataclasses.dataclass
class Line:
    """A line of the table."""
    work: str
    ours: str
    other: str
    ratio: str
    target: str
    met: bool | None  # None: not measured


class Times:
    """The best time of each operation, in nanoseconds."""

    def __init__(self, reports):
        self.best = {}
        for report in reports:
            for run in report["benchmarks"]:
                if run.get("run_type") != "iteration":
                    continue
                if run.get("error_occurred"):
                    sys.exit(f"performance.py: {run['name']}: {run['error_message']}")
                # two threads take real time; for one, that of the other processes of the machine is left out
                name = re.sub("/real_time$", "", run["run_name"])
                time = run["real_time" if name != run["run_name"] else "cpu_time"]
                self.best[name] = min(time, self.best.get(name, time))

    def of(self, case, who="ours"):
        return self.best.get(f"{case}/{who}")

    def best_peer(self, case):
        """(time, name), or None when no peer was built."""
        times = [(self.of(case, who), name) for who, name in PEERS.items() if self.of(case, who)]
        return min(times) if times else None


def nanoseconds(time):
    return f"{time:.3g} ns" if time < 1000 else f"{time:,.0f} ns"


def speed_line(times, work, case, limit, least):
    """Bytes a second, at least some part of the limit's."""
    size = BYTES[case.rsplit("_", 1)[1]]
    ours, other = times.of(case), times.of(case, limit)
    ratio = other / ours
    return Line(work, f"{size / ours:.3g} GB/s", f"{OTHERS[limit]} {size / other:.3g} GB/s", f"{ratio:.2f}",
                f"at least {least:g}", ratio >= least)


def time_line(times, work, case, divisor, only=None, who="ours"):
    """Time, at most some part of the best peer's."""
    peer = (times.of(case, only), PEERS[only]) if only else times.best_peer(case)
    ours, target = times.of(case, who), f"at most 1/{divisor}"
    if peer is None or peer[0] is None:
        return Line(work, nanoseconds(ours), "", "", target, None)
    ratio = ours / peer[0]
    return Line(work, nanoseconds(ours), f"{peer[1]} {nanoseconds(peer[0])}", f"1/{1 / ratio:.1f}", target,
                ratio <= 1 / divisor)


def copy_line(times, work, case):
    """Time, at most that of a copy and a little."""
    ours, copy = times.of(case), times.of(case, "memcpy")
    return Line(work, nanoseconds(ours), f"memcpy {nanoseconds(copy)}", f"{ours / copy:.2f}", "at most 1.1, and 20 ns",
                ours <= 1.1 * copy + 20)


def flat_line(times, work, cases):
    ours = [times.of(case) for case in cases]
    ratio = max(ours) / min(ours)
    return Line(work, nanoseconds(max(ours)), f"the fastest {nanoseconds(min(ours))}", f"{ratio:.2f}", "at most 1.2",
                ratio <= 1.2)


def threads_line(times):
    """What two threads get done, as a multiple of one."""
    def gain(work):
        return 2 * times.of(f"threads/{work}_one") / times.of(f"threads/{work}_two")
    return Line("Two threads, beside one", f"{gain('picture'):.2f} x", f"arithmetic alone {gain('arithmetic'):.2f} x",
                f"{gain('picture'):.2f}", "at least 1.95", gain("picture") >= 1.95)


def operation_lines(times):
    for work, name, cases in (
            ("removal", "Removal of emulation prevention",
             (("1KiB", 0.35), ("32KiB", 0.35), ("1MiB", 0.7), ("32MiB", 0.7))),
            ("insertion", "Insertion", (("1MiB", 0.5),))):
        for size, least in cases:
            yield speed_line(times, f"{name}, clean, {size[:-3]} {size[-3:]}", f"{work}/clean_{size}", "memcpy", least)
        patterns = (("every16", "00 00 03 in every 16 bytes", 2), ("densest", "nothing but 00 00 03", 1))
        for pattern, text, least in patterns if work == "removal" else patterns[:1]:
            for size in ("1KiB", "1MiB"):
                yield speed_line(times, f"{name}, {text}, {size[:-3]} {size[-3:]}", f"{work}/{pattern}_{size}",
                                 "byte_loop", least)
    yield time_line(times, "VPS parse", "vps/plain", 4)
    yield time_line(times, "SPS parse, plain", "sps/plain", 4)
    yield time_line(times, "SPS parse, HRD", "sps/hrd", 4)
    yield time_line(times, "SPS parse, 32 reference picture sets, scaling lists, HRD", "sps/heavy", 4)
    yield time_line(times, "PPS parse", "pps/plain", 4)
    yield copy_line(times, "SPS unchanged, by parse context", "unchanged_sps/hrd")
    yield copy_line(times, "PPS unchanged, by parse context", "unchanged_pps/plain")
    sizes = [f"slice_header/{size}B" for size in (176, 2145, 65536, 3899651)]
    for case, size in zip(sizes, ("176 B", "2.1 kB", "66 kB", "3.9 MB")):
        yield time_line(times, f"Slice header, NAL unit of {size}", case, 3)
    yield flat_line(times, "Slice header, the slowest of these four", sizes)
    yield time_line(times, "Slice header, weighted prediction", "slice_header/weighted_prediction", 3)
    yield time_line(times, "Slice header, many references", "slice_header/long_references", 3)
    yield time_line(times, "SEI scan and parse, picture timing", "sei_parse/picture_timing", 3)
    yield time_line(times, "SEI scan and parse, time code", "sei_parse/time_code", 3)
    yield time_line(times, "SEI scan and parse, captions", "sei_parse/captions", 3)
    yield time_line(times, "SEI build, time code", "sei_build/time_code", 8, "gstreamer")
    yield time_line(times, "SEI build, captions", "sei_build/captions", 8, "gstreamer")
    yield time_line(times, "SEI build, active format", "sei_build/active_format", 8, "gstreamer")
    yield time_line(times, "SPS rewriting, parse included, HRD", "sps_rewrite/hrd", 10, "ffmpeg")
    yield time_line(times, "SPS rewriting, parse included, as heavy as above", "sps_rewrite/heavy", 10, "ffmpeg")
    yield time_line(times, "SPS rewriting alone, HRD", "sps_rewrite/hrd", 10, "ffmpeg", "ours_parse_left_out")
    yield time_line(times, "SPS rewriting alone, as heavy as above", "sps_rewrite/heavy", 10, "ffmpeg",
                    "ours_parse_left_out")
    yield threads_line(times)


def measure(program, repetitions):
    """The reports of two runs: what one thread does, and what two do, whose rounds are short."""
    for choice, times_as_often in (("-^threads/", 1), ("^threads/", 5)):
        with tempfile.NamedTemporaryFile("r") as report:
            subprocess.run([program, f"--benchmark_filter={choice}", "--benchmark_min_time=0.005",
                            f"--benchmark_repetitions={repetitions * times_as_often}",
                            "--benchmark_enable_random_interleaving=true", "--benchmark_out_format=json",
                            f"--benchmark_out={report.name}"],
                           check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            yield json.load(report)


# ---- whole files

def make_stream(path, picture, frames, options, size):
    """An encoded stream, repeated until it has about `size` bytes."""
    if path.exists():
        return
    path.parent.mkdir(exist_ok=True)
    with tempfile.TemporaryDirectory() as work:
        pictures, once = f"{work}/pictures.y4m", pathlib.Path(work, "once.hevc")
        subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-bitexact", "-f", "lavfi", "-i", picture,
                        "-frames:v", str(frames), "-pix_fmt", "yuv420p", "-strict", "-1", "-f", "yuv4mpegpipe",
                        pictures], check=True)
        subprocess.run(["x265", "--input", pictures, "--output", str(once), "--no-info", "--frame-threads", "1",
                        "--preset", "ultrafast", "--repeat-headers", "--aud", "--no-progress", "--log-level", "error",
                        *options], check=True)
        stream = once.read_bytes()
    unfinished = path.with_suffix(".part")
    with open(unfinished, "wb") as out:
        for _ in range(round(size / len(stream))):
            out.write(stream)
    unfinished.rename(path)


def cpu_seconds(command):
    """User and system time of a program that writes to nowhere."""
    null = os.open(os.devnull, os.O_WRONLY)
    pid = os.posix_spawn(command[0], command, os.environ, file_actions=[(os.POSIX_SPAWN_DUP2, null, 1)])
    os.close(null)
    _, status, usage = os.wait4(pid, 0)
    if status != 0:
        sys.exit(f"performance.py: {command[0]} fails")
    return usage.ru_utime + usage.ru_stime


def file_lines(build, repetitions):
    large, small = build / "streams" / "large.hevc", build / "streams" / "small.hevc"
    make_stream(large, "testsrc2=s=1920x1080:r=25,noise=alls=80:allf=t:all_seed=11", 3, ["--qp", "2"], 217e6)
    make_stream(small, "testsrc2=s=352x288:r=30000/1001", 30,
                ["--ctu", "16", "--slices", "9", "--qp", "38", "--keyint", "10", "--hash", "3"], 40e6)
    commands = {"inspect": [str(build / "tools/h265tool/h265tool"), "inspect"],
                "scan": [str(build / "bench/scan_start_codes")], "cat": ["/bin/cat"]}
    best = {}
    for _ in range(repetitions):
        for name, command in commands.items():
            for stream in (large, small):
                seconds = cpu_seconds([*command, str(stream)])
                best[name, stream] = min(seconds, best.get((name, stream), seconds))

    def line(text, stream, target, met):
        ours, scan, cat = (best[name, stream] for name in commands)
        counted = subprocess.run([*commands["scan"], str(stream)], stdout=subprocess.PIPE, text=True, check=True).stdout
        units = int(counted.split()[0])
        return Line(f"Whole file, h265tool inspect, {text}: {stream.stat().st_size / 1e6:.0f} MB, {units:,} NAL units",
                    f"{ours:.3f} CPU s", f"memmem scan {scan:.3f}, cat {cat:.3f} CPU s", f"{ours / scan:.2f}", target,
                    met(ours, scan))
    yield line("large NAL units", large, "at most the scan's", lambda ours, scan: ours <= scan)
    yield line("small NAL units", small, "at most 0.05 CPU s", lambda ours, scan: ours <= 0.05)


# ---- instructions

COUNTED = ["vps", "sps", "pps", "unchanged_sps", "unchanged_pps", "slice_header/176B", "slice_header/2145B",
           "slice_header/weighted_prediction", "slice_header/long_references", "sei_parse", "sei_build", "sps_rewrite"]


def count_instructions(program, times):
    """The instructions of each operation: what 3 * times have more than `times`."""
    # string instructions would count once a byte
    tunables = "glibc.cpu.x86_rep_movsb_threshold=2000000000:glibc.cpu.x86_rep_stosb_threshold=2000000000"
    with tempfile.TemporaryDirectory() as work:
        run = subprocess.run(["valgrind", "-q", "--tool=callgrind", "--dump-before=Mark",
                              f"--callgrind-out-file={work}/dump",
                              program, "--count-instructions", str(times), *COUNTED],
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=True,
                             env=os.environ | {"GLIBC_TUNABLES": tunables})
        dumps = {int(path.suffix[1:]): int(re.search(r"^totals: (\d+)", path.read_text(), re.M)[1])
                 for path in pathlib.Path(work).glob("dump.*")}
    counts = {}
    for i, name in enumerate(run.stdout.split()):
        case, who = name.rsplit("/", 1)
        # three dumps an operation: what came before it, once, three times
        counts.setdefault(case, {})[who] = round((dumps[3 * i + 3] - dumps[3 * i + 2]) / (2 * times))
    return counts


# ---- the page

def table(heads, lines):
    yield "| " + " | ".join(heads) + " |"
    yield "|" + "---|" * len(heads)
    for line in lines:
        yield "| " + " | ".join(line) + " |"


def rows(table_lines):
    return "\n".join(table_lines)


def comparison(lines):
    verdict = {True: "yes", False: "**no**", None: "not measured"}
    return table(["Work", "Ours", "Peer or limit", "Ratio", "Target", "Met"],
                 ([line.work, line.ours, line.other, line.ratio, line.target, verdict[line.met]] for line in lines))


def instruction_table(counts):
    columns = {"ours": "Ours", **PEERS, "memcpy": "memcpy"}
    peers_best = {case: min((who[peer] for peer in PEERS if peer in who), default=None) for case, who in counts.items()}
    return table(["Operation", *columns.values(), "Ours / best peer"],
                 ([case.replace("_", " "), *(f"{who[name]:,}" if name in who else "" for name in columns),
                   f"{who['ours'] / peers_best[case]:.2f}" if peers_best[case] else ""]
                  for case, who in counts.items() if len(who) > 1))


def first_line(*command):
    run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=True,
                         env=os.environ | {"LC_ALL": "C"})
    return run.stdout.splitlines()[0].strip()


def circumstances(build, context):
    model = re.search(r"^Model name:\s*(.*)$", subprocess.run(
        ["lscpu"], stdout=subprocess.PIPE, text=True, check=True, env=os.environ | {"LC_ALL": "C"}).stdout, re.M)
    compiler = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", (build / "CMakeCache.txt").read_text(), re.M)
    yield "Processor", f"{model[1] if model else platform.machine()}, {os.cpu_count()} cores"
    yield "Compiler", first_line(compiler[1], "--version").removeprefix(compiler[1]) + ", preset `bench`"
    yield "C library", " ".join(platform.libc_ver())
    for name, peer in PEERS.items():
        yield peer, context.get(name, "not there").removeprefix(f"{peer} ")
    yield "x265, for the files", first_line("x265", "--version").rsplit(" ", 1)[1]
    yield "Valgrind", first_line("valgrind", "--version").removeprefix("valgrind-")
    yield "Date", datetime.date.today().isoformat()


def page(around, lines, counts, repetitions):
    met = sum(line.met is True for line in lines)
    measured = sum(line.met is not None for line in lines)
    return f"""# Performance

The library beside independent software that does the same work, FFmpeg's libavcodec and GStreamer's parser of H.265,
and beside what limits both. `scripts/performance.sh` measures it and writes this page.

{rows(table(["Measured with", ""], around))}

## Times

Each figure is the best of {repetitions} repetitions, which take turns in one process and work on the same bytes; compare
figures of one line. Parsing begins with the bytes of a NAL unit, and of several peers the best is shown.

{rows(comparison(lines))}

{met} of {measured} targets are met. What stands in the way of the others, and of what only just meets its target:

- Removal, 1 KiB: memcpy moves up to 64 bytes at a time there. Vectors have 16 here, which every x86-64 and every
  AArch64 has; one code serves both, and from 32 KiB on the difference is gone.
- Heavy SPS: nearly all of its 1,800 bits are elements of one to a few bits. Each goes into a field of its own, and is
  checked and reported under its own name.
- Slice headers: nearly a quarter of the instructions is malloc and free, for the scratch that `h265.h` promises, which
  is as long as the NAL unit. Beyond 1 KiB malloc takes longer, whatever is done with the block.
- SEI: a message is found by one call and parsed by another, each of which starts from the bytes of the NAL unit, and two
  of the three parsers take a heap block. The peer reads all in one pass.
- SEI builder of time codes: 17 elements, each with its check and its report, and what is written bit by bit is read
  again at once, for emulation prevention.
- SPS rewriting with its parse: the parse of the heavy SPS alone takes an eighth of the peer's whole time, with a field
  of the record for each element. A caller has parsed the SPS anyway, to know what to change.
- Two threads: they share the trace channel, which both only read. The figure differs by a hundredth or two from run to
  run.
- Small NAL units: each has its header, a slice header or a message to parse, and a line of text.

## Instructions

Instructions of one operation, counted by callgrind: they come out the same on a busy machine. The operations are those
of `bench/`.

{rows(instruction_table(counts))}
"""


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("build", type=pathlib.Path, metavar="BUILD_DIR")
    arguments = parser.parse_args()
    repetitions = 6 if arguments.quick else 40

    build = arguments.build.resolve()
    program = str(build / "bench" / "bench_h265")
    if not os.access(program, os.X_OK):
        sys.exit(f"performance.py: {program} is not there; scripts/performance.sh builds it")
    reports = list(measure(program, repetitions))
    lines = [*operation_lines(Times(reports)), *file_lines(build, max(5, repetitions // 3))]
    counts = count_instructions(program, 200)
    print(rows(comparison(lines)))
    PAGE.write_text(page(list(circumstances(build, reports[0]["context"])), lines, counts, repetitions))


if __name__ == "__main__":
    main()
