#!/usr/bin/env python3
"""Shows what the tests notice: changes one condition, constant or text of the libraries' sources at a time and runs
the unit tests on each of these mutants.

    scripts/mutation.py [--count N] [--seed N] [--jobs N] [--build-dir DIR] [FILE...]

takes N mutants (300) at random from the sources of the libraries, or from the files given, and prints those that
survive, with what was changed. The same seed gives the same mutants of the same sources. The tests come from DIR
(build/release), where the target unit_tests has been built; only the libraries are compiled here, in
build/mutation. The exit status is 0 whatever survives: a survivor is a place to look at.
"""

import argparse
import os
import pathlib
import queue
import random
import re
import shlex
import shutil
import subprocess
import sys
import threading

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutation"
SOURCES = "components/libraries"
TIMEOUT = 300  # seconds that the tests may take: a mutant that loops is noticed

# What stands in the way of a meaningful mutant: text that is no code, and code that no run depends on.
SKIPPED_LINE = re.compile(r"^\s*(//|#|static_assert|using |namespace |typedef )|GCOVR_EXCL|\[\[(un)?likely\]\]\s*$")
COMMENT = re.compile(r"//.*$")
STRING = re.compile(r'"(?:[^"\\]|\\.)*"')

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


def mutants_of(path):
    """Yields (line index, start, end, replacement) for a file of the libraries."""
    for index, line in enumerate(path.read_text().splitlines()):
        if SKIPPED_LINE.search(line):
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
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)


class Build:
    """How the build in a directory compiles the libraries and links the tests."""

    def __init__(self, directory):
        commands = run(["ninja", "-C", str(directory), "-t", "commands", "unit_tests"]).stdout.splitlines()
        self.directory = directory
        self.compile = {}
        self.link = None
        for line in commands:
            words = shlex.split(line.split("&&")[1] if line.startswith(":") else line)
            source = words[-1]
            if "-c" in words and f"/{SOURCES}/" in source:
                self.compile[pathlib.Path(source).relative_to(ROOT)] = words
            elif "-o" in words and words[words.index("-o") + 1].endswith("unit_tests"):
                self.link = words
        if not self.compile or self.link is None:
            sys.exit(f"mutation.py: {directory} has no unit_tests; build them first")


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
        for source in build.compile:
            if not self.compile(source):
                sys.exit(f"mutation.py: {source} does not compile")
        if not self.link():
            sys.exit("mutation.py: the tests do not link")

    def compile(self, source):
        words = [word.replace(str(ROOT / "components"), str(self.place / "components"))
                 for word in self.build.compile[source]]
        out = self.objects[source]
        for flag, value in (("-o", out), ("-MF", f"{out}.d"), ("-MT", out)):
            words[words.index(flag) + 1] = str(value)
        return run([word for word in words if word != "-Werror"], cwd=self.build.directory).returncode == 0

    def link(self):
        words = []
        for word in self.build.link:
            if not word.endswith(".a") or "components/" not in word:
                words.append(word)
        words[words.index("-o") + 1] = str(self.place / "unit_tests")
        return run(words + [str(out) for out in self.objects.values()], cwd=self.build.directory).returncode == 0

    def compile_all_that_include(self, path):
        changed = str(self.place / path)
        for source, out in self.objects.items():
            depends = pathlib.Path(f"{out}.d").read_text().replace("\\\n", " ").split()
            if any(os.path.normpath(file) == changed for file in depends) and not self.compile(source):
                return False
        return True

    def outcome(self, path, mutant):
        """'killed', 'survived' or 'not compiled'."""
        index, start, end, replacement = mutant
        place = self.place / path
        original = place.read_text()
        lines = original.splitlines(keepends=True)
        lines[index] = lines[index][:start] + replacement + lines[index][end:]
        place.write_text("".join(lines))
        try:
            if not self.compile_all_that_include(path) or not self.link():
                return "not compiled"
            tests = [str(self.place / "unit_tests"), "--gtest_fail_fast", "--gtest_brief=1"]
            try:
                return "survived" if run(tests, cwd=self.place, timeout=TIMEOUT).returncode == 0 else "killed"
            except subprocess.TimeoutExpired:
                return "killed"
        finally:
            place.write_text(original)
            self.compile_all_that_include(path)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--build-dir", type=pathlib.Path, default=ROOT / "build" / "release")
    parser.add_argument("files", nargs="*", type=pathlib.Path)
    arguments = parser.parse_args()

    files = [path.resolve().relative_to(ROOT) for path in arguments.files] or sorted(
        path.relative_to(ROOT) for path in (ROOT / SOURCES).rglob("*") if path.suffix in (".cpp", ".h"))
    every = [(path, mutant) for path in files for mutant in mutants_of(ROOT / path)]
    chosen = random.Random(arguments.seed).sample(every, min(arguments.count, len(every)))
    build = Build(arguments.build_dir.resolve())
    todo = queue.Queue()
    for mutant in chosen:
        todo.put(mutant)
    counts = {"killed": 0, "survived": 0, "not compiled": 0}
    lock = threading.Lock()

    def work(number):
        worker = Worker(number, build)
        while True:
            try:
                path, mutant = todo.get_nowait()
            except queue.Empty:
                return
            outcome = worker.outcome(path, mutant)
            with lock:
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
