#!/usr/bin/env python3
"""Shows what the tests notice: changes one condition, constant or text of the libraries' sources at a time and runs
the unit tests, and those of the entry points, on each of these mutants.

    scripts/mutation.py [--count N] [--seed N] [--jobs N] [--build-dir DIR] [FILE...]

takes N mutants (300) at random from the lines that the compiler sees of the libraries, or of the files given, and
prints those that survive, with what was changed. The same seed gives the same mutants of the same sources. The tests
come from DIR (build/debug), where both test programs have been built; only the libraries are compiled here, in
build/mutation. Interrupted, it says what it has found so far. The exit status is 0 whatever survives: a survivor is a
place to look at.
"""

import argparse
import collections
import os
import pathlib
import queue
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import threading

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutation"
SOURCES = "components/libraries"
TESTS = ["unit_tests", "entry_point_tests"]
TIMEOUT = 120  # seconds that a test program may take: a mutant that loops is noticed

# What stands in the way of a meaningful mutant: text that is no code, and code that no run depends on.
SKIPPED_LINE = re.compile(r"^\s*(//|#|static_assert|using |namespace |typedef )|GCOVR_EXCL|\[\[(un)?likely\]\]\s*$")
COMMENT = re.compile(r"//.*$")
STRING = re.compile(r'"(?:[^"\\]|\\.)*"')

LINE_MARKER = re.compile(r'# (\d+) "([^"]*)"')

OPERATORS = [
    (re.compile(r"(?<![=!<>])==(?!=)"), ["!="]),
    (re.compile(r"!=(?!=)"), ["=="]),
    (re.compile(r"(?<![<=\-])>=(?!=)"), [">", "<"]),
    (re.compile(r"(?<![<>])<=(?!=)"), ["<", ">"]),
    (re.compile(r"(?<= )<(?= )"), ["<=", ">="]),
    (re.compile(r"(?<= )>(?= )"), [">=", "<="]),
    (re.compile(r"&&(?= )"), ["||"]),
    (re.compile(r"\|\|"), ["&&"]),
    (re.compile(r"(?<=[( ])!(?=[\w(])"), [""]),
    (re.compile(r"(?<= )\+(?= )"), ["-"]),
    (re.compile(r"(?<= )-(?= )"), ["+"]),
    (re.compile(r"\btrue\b"), ["false"]),
    (re.compile(r"\bfalse\b"), ["true"]),
    (re.compile(r"\bTRUE\b"), ["FALSE"]),
    (re.compile(r"\bFALSE\b"), ["TRUE"]),
]
NUMBER = re.compile(r"(?<![\w.])(0[xX][0-9A-Fa-f]+|\d+)(?=U?L?\b)(?![\w.]*[.x])")


def mutants_of(path, compiled_lines):
    """Yields (line index, start, end, replacement) for a file of the libraries."""
    for index, line in enumerate(path.read_text().splitlines()):
        if index + 1 not in compiled_lines or SKIPPED_LINE.search(line):
            continue
        code = COMMENT.sub("", line)
        strings = [match.span() for match in STRING.finditer(code)]

        def in_string(place, strings=strings):
            return any(start <= place < end for start, end in strings)

        for start, end in strings:
            letters = [i for i in range(start + 1, end - 1) if code[i].isalpha() and code[i - 1] not in "\\%"]
            if letters and "__" not in code[start:end]:
                place = letters[len(letters) // 2]
                yield index, place, place + 1, code[place].swapcase()
        for pattern, replacements in OPERATORS:
            for match in pattern.finditer(code):
                if not in_string(match.start()):
                    for replacement in replacements:
                        yield index, match.start(), match.end(), replacement
        for match in NUMBER.finditer(code):
            if not in_string(match.start()):
                yield index, match.start(), match.end(), str(int(match.group(1), 0) + 1)


def run(command, **options):
    # a mutant may print what is no UTF-8
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
                          **options)


class Build:
    """How the build in a directory compiles the libraries and links the tests."""

    def __init__(self, directory):
        self.directory = directory
        self.compile = {}
        self.link = {}
        for line in run(["ninja", "-C", str(directory), "-t", "commands", *TESTS]).stdout.splitlines():
            words = shlex.split(line.split("&&")[1] if line.startswith(":") else line)
            source = words[-1]
            out = pathlib.Path(words[words.index("-o") + 1]) if "-o" in words else None
            if "-c" in words and f"/{SOURCES}/" in source:
                self.compile[pathlib.Path(source).relative_to(ROOT)] = words
            elif out and out.name in TESTS:
                self.link[out.name] = words
        if not self.compile or any(not (directory / "tests" / name).exists() for name in TESTS):
            sys.exit(f"mutation.py: {directory} lacks {' or '.join(TESTS)}; build them first")

    def compiled_lines(self):
        """The numbers of the lines of each file that are left when the preprocessor is through."""
        lines = collections.defaultdict(set)
        for words in self.compile.values():
            only_preprocess = ["-E" if word == "-c" else word for word in words]
            only_preprocess[words.index("-o") + 1] = "-"
            output = subprocess.run(only_preprocess, cwd=self.directory, stdout=subprocess.PIPE, text=True, check=True)
            path, number = None, 0
            for line in output.stdout.splitlines():
                marker = LINE_MARKER.match(line)
                if marker:
                    number, path = int(marker[1]), os.path.normpath(self.directory / marker[2])
                    continue
                if line.strip():
                    lines[path].add(number)
                number += 1
        return lines


class Worker:
    """A copy of the libraries' sources, their objects, and the tests linked with those."""

    def __init__(self, number, build):
        self.build = build
        self.place = WORK / str(number)
        shutil.rmtree(self.place, ignore_errors=True)
        shutil.copytree(ROOT / "components", self.place / "components")
        self.objects = {source: self.place / "objects" / f"{source.as_posix().replace('/', '_')}.o"
                        for source in build.compile}
        (self.place / "objects").mkdir()
        for source, out in self.objects.items():
            if not self.compile(source, out):
                sys.exit(f"mutation.py: {source} does not compile")
        self.includes = {source: {os.path.normpath(file) for file in
                                  pathlib.Path(f"{out}.d").read_text().replace("\\\n", " ").split()}
                         for source, out in self.objects.items()}
        if not all(self.link(name, self.objects) for name in TESTS):
            sys.exit("mutation.py: the tests do not link")

    def compile(self, source, out):
        words = [word.replace(str(ROOT / "components"), str(self.place / "components"))
                 for word in self.build.compile[source]]
        for flag, value in (("-o", out), ("-MF", f"{out}.d"), ("-MT", out)):
            words[words.index(flag) + 1] = str(value)
        return run([word for word in words if word != "-Werror"], cwd=self.build.directory).returncode == 0

    def link(self, name, objects):
        words = [word for word in self.build.link[name] if not word.endswith(".a") or "components/" not in word]
        words[words.index("-o") + 1] = str(self.place / name)
        return run(words + [str(out) for out in objects.values()], cwd=self.build.directory).returncode == 0

    def objects_with(self, path):
        """All objects, those anew that include the file; None if it does not compile."""
        changed = str(self.place / path)
        objects = dict(self.objects)
        for source, files in self.includes.items():
            if changed in files:
                objects[source] = self.objects[source].with_suffix(".mutant.o")
                if not self.compile(source, objects[source]):
                    return None
        return objects

    def pass_tests(self, name):
        tests = [str(self.place / name), "--gtest_fail_fast", "--gtest_brief=1"]
        try:
            return run(tests, cwd=self.place, timeout=TIMEOUT).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def outcome(self, path, mutant):
        """'killed', 'survived' or 'not compiled'."""
        index, start, end, replacement = mutant
        place = self.place / path
        original = place.read_text()
        lines = original.splitlines(keepends=True)
        lines[index] = lines[index][:start] + replacement + lines[index][end:]
        place.write_text("".join(lines))
        objects = self.objects_with(path)
        place.write_text(original)
        if objects is None:
            return "not compiled"
        survived = all(self.link(name, objects) and self.pass_tests(name) for name in TESTS)
        return "survived" if survived else "killed"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--build-dir", type=pathlib.Path, default=ROOT / "build" / "debug")
    parser.add_argument("files", nargs="*", type=pathlib.Path)
    arguments = parser.parse_args()

    files = [path.resolve().relative_to(ROOT) for path in arguments.files] or sorted(
        path.relative_to(ROOT) for path in (ROOT / SOURCES).rglob("*") if path.suffix in (".cpp", ".h"))
    build = Build(arguments.build_dir.resolve())
    compiled_lines = build.compiled_lines()
    every = [(path, mutant) for path in files for mutant in mutants_of(ROOT / path, compiled_lines[str(ROOT / path)])]
    chosen = random.Random(arguments.seed).sample(every, min(arguments.count, len(every)))
    todo = queue.Queue()
    for mutant in chosen:
        todo.put(mutant)
    counts = {"killed": 0, "survived": 0, "not compiled": 0}
    lock = threading.Lock()
    interrupted = threading.Event()
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, lambda *_: interrupted.set())

    def work(number):
        worker = Worker(number, build)
        while not interrupted.is_set():
            try:
                path, mutant = todo.get_nowait()
            except queue.Empty:
                return
            outcome = worker.outcome(path, mutant)
            with lock:
                if interrupted.is_set():
                    return
                counts[outcome] += 1
                if outcome == "survived":
                    index, start, end, replacement = mutant
                    line = (ROOT / path).read_text().splitlines()[index]
                    print(f"{path}:{index + 1}: {line.strip()}\n    with {line[start:end]!r} at {start + 1} "
                          f"as {replacement!r}", flush=True)

    threads = [threading.Thread(target=work, args=(number,)) for number in range(arguments.jobs)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    tried = counts["killed"] + counts["survived"]
    print(f"{tried} mutants tried of {len(every)}: {counts['killed']} killed, {counts['survived']} survived "
          f"({counts['not compiled']} more did not compile)")


if __name__ == "__main__":
    main()
