"""The sources: free of warnings, documented and annotated; and what the README shows."""

import importlib
import inspect
import pkgutil
import re
import subprocess
import sys
import tempfile
import unittest
import warnings
from collections.abc import Iterator
from pathlib import Path
from types import ModuleType

import h265
from samples import SOURCE, inspected

PACKAGE = Path(h265.__file__).parent


def modules() -> Iterator[ModuleType]:
    yield h265
    for module in pkgutil.walk_packages(h265.__path__, "h265."):
        yield importlib.import_module(module.name)


def documented(owner: ModuleType | type) -> Iterator[tuple[str, object]]:
    """The public classes and functions that are defined there, and those inside of them."""
    for name, member in vars(owner).items():
        if name.startswith("_"):
            continue
        if isinstance(member, (classmethod, property)):
            yield name, member.__func__ if isinstance(member, classmethod) else member.fget
        elif inspect.isclass(member) or inspect.isfunction(member):
            module = owner.__name__ if inspect.ismodule(owner) else owner.__module__
            if member.__module__ == module and member.__name__ == name:
                yield name, member
                if inspect.isclass(member):
                    yield from documented(member)


class Sources(unittest.TestCase):

    def test_sources_compile_without_warnings(self) -> None:
        sources = [*PACKAGE.rglob("*.py"), *Path(__file__).parent.glob("*.py")]
        self.assertGreater(len(sources), 20)
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            for path in sources:
                compile(path.read_text(), path, "exec")

    def test_everything_public_is_documented_and_annotated(self) -> None:
        for module in modules():
            self.assertTrue(module.__doc__, module.__name__)
            for name, member in documented(module):
                with self.subTest(module=module.__name__, name=name):
                    self.assertTrue(member.__doc__)
                    if inspect.isfunction(member):
                        parameters = set(inspect.signature(member).parameters) - {"self", "cls"}
                        self.assertEqual(set(member.__annotations__), parameters | {"return"})

    def test_everything_exported_is_there(self) -> None:
        self.assertEqual(h265.__all__, sorted(h265.__all__))
        for name in h265.__all__:
            self.assertTrue(hasattr(h265, name), name)


class Readme(unittest.TestCase):

    def test_script_does_what_it_says(self) -> None:
        script, = re.findall(r"\n```python\n(.*?)```", (SOURCE / "README.md").read_text(), re.DOTALL)
        self.assertLessEqual(len(script.splitlines()), 20)
        printed = re.findall(r"print\(.*# (.*)", script)
        with tempfile.TemporaryDirectory() as work:
            (Path(work) / "tests").symlink_to(SOURCE / "tests")
            run = subprocess.run([sys.executable, "-B", "-W", "error", "-"], input=script, cwd=work,
                                 check=True, capture_output=True, text=True)
            self.assertEqual(run.stdout.splitlines(), printed)
            before = inspected(SOURCE / "tests" / "samples" / "progressive-hrd-vui.hevc")
            after = inspected(Path(work) / "out.hevc")
        added = [unit for unit in after if any("afd" in message for message in unit.get("sei", []))]
        self.assertEqual([message["afd"]["afd_data"]["active_format"] for message in added[0]["sei"]], [10])
        self.assertEqual(len(after), len(before) + len(added))
        time_scales = [[unit["sps"]["vui"]["vui_time_scale"] for unit in units if "sps" in unit]
                       for units in (before, after)]
        self.assertEqual([2 * time_scale for time_scale in time_scales[0]], time_scales[1])


if __name__ == "__main__":
    unittest.main()
