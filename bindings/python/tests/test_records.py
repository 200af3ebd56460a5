"""The records are those of the C headers: names, order, types, sizes, offsets; so are the functions."""

import ctypes
import importlib
import inspect
import os
import pkgutil
import re
import shlex
import subprocess
import tempfile
import unittest
from collections.abc import Iterator
from enum import IntEnum
from pathlib import Path

import h265
import h265.records
from h265._functions import PROTOTYPES
from h265.records import Alternatives, Record, afd_t, vanc_t
from samples import SOURCE

INCLUDE = SOURCE / "components" / "include"

C_TYPES = {
    ctypes.c_uint8: "uint8_t",
    ctypes.c_uint16: "uint16_t",
    ctypes.c_int32: "int32_t",
    ctypes.c_uint32: "uint32_t",
    ctypes.c_int64: "int64_t",
    ctypes.c_uint64: "uint64_t",
    ctypes.c_size_t: "size_t",
    ctypes.c_char_p: "const char *",
    ctypes.POINTER(h265.records.sps_h265_t): "const sps_h265_t *",
}

MODULES = [importlib.import_module(f"h265.records.{module.name}")
           for module in pkgutil.iter_modules(h265.records.__path__)]
RECORDS = [member for module in MODULES for member in vars(module).values()
           if inspect.isclass(member) and issubclass(member, (Record, Alternatives))
           and member not in (Record, Alternatives) and member.__module__ == module.__name__]


def c_name(record: type) -> str:
    return f"{'union' if issubclass(record, ctypes.Union) else 'struct'} {record.__name__}"


def has_c_name(record: type) -> bool:
    return "." not in record.__qualname__


def headers() -> str:
    """All public headers, without comments."""
    text = "\n".join(path.read_text() for path in sorted(INCLUDE.rglob("*.h")))
    return re.sub(r"/\*.*?\*/|//[^\n]*", "", text, flags=re.DOTALL)


class LayoutProgram:
    """A C program that prints what the compiler makes of the records, a line for each check."""

    def __init__(self) -> None:
        self.expected: list[str] = []
        self.lines: list[str] = []
        for record in RECORDS:
            self._check(f"sizeof({c_name(record)})", ctypes.sizeof(record))
            self._check_fields(record, record, "")

    def _check(self, expression: str, expected: int) -> None:
        text = expression.replace('"', '\\"')
        self.expected.append(f"{expression} {expected}")
        self.lines.append(f'    printf("%s %zu\\n", "{text}", (size_t)({expression}));')

    def _check_fields(self, owner: type, record: type, path: str) -> None:
        for name, field_type in record._fields_:
            place = path + name
            lvalue = f"(({c_name(owner)} *)0)->{place}"
            self._check(f"offsetof({c_name(owner)}, {place})",
                        (getattr(owner, path[:-1]).offset if path else 0) + getattr(record, name).offset)
            while True:  # an array, then its elements
                self._check(f"sizeof({lvalue})", ctypes.sizeof(field_type))
                if not issubclass(field_type, ctypes.Array):
                    break
                lvalue += "[0]"
                field_type = field_type._type_
            if not issubclass(field_type, (Record, Alternatives)):
                self._check(f"_Generic({lvalue}, {C_TYPES[field_type]}: 1, default: 0)", 1)
            elif has_c_name(field_type):
                self._check(f"_Generic({lvalue}, {c_name(field_type)}: 1, default: 0)", 1)
            else:
                self._check_fields(owner, field_type, place + ".")

    def printed(self) -> list[str]:
        source = "\n".join([
            "#include <stdio.h>", '#include "h265.h"', "int main(void) {", *self.lines, "    return 0;", "}"
        ])
        with tempfile.TemporaryDirectory() as work:
            program = Path(work) / "layouts"
            compiler = shlex.split(os.environ["CC"])
            subprocess.run([*compiler, "-std=c11", "-w", f"-I{INCLUDE}", "-x", "c", "-", "-o", program],
                           input=source, text=True, check=True)
            return subprocess.run([program], check=True, capture_output=True, text=True).stdout.splitlines()


class Layouts(unittest.TestCase):

    def test_compiler_lays_out_the_records_alike(self) -> None:
        program = LayoutProgram()
        self.assertGreater(len(program.expected), 1000)
        self.assertEqual(program.printed(), program.expected)

    def test_every_record_of_the_headers_is_there(self) -> None:
        declared = re.findall(r"\b(?:struct|union) (\w+) \{", headers())
        # the cursor of the bit buffer service is no part of this interface
        self.assertEqual({record.__name__ for record in RECORDS if has_c_name(record)},
                         set(declared) - {"bitbuffer_t"})

    def test_fields_have_the_names_and_the_order_of_the_headers(self) -> None:

        def names(record: type) -> Iterator[str]:
            for name, field_type in record._fields_:
                if issubclass(field_type, Alternatives) and not has_c_name(field_type):
                    yield from names(field_type)
                yield name

        text = headers()
        for record in filter(has_c_name, RECORDS):
            with self.subTest(record=record.__name__):
                body = re.search(rf"{c_name(record)} \{{(.*?)\n\}}", text, re.DOTALL)
                declared = re.findall(r"(\w+)(?:\s*\[[^\]]*\])*;", body[1])
                self.assertEqual(list(names(record)), declared)

    def test_constants_have_the_values_of_the_headers(self) -> None:
        text = headers()
        constants = {name: value for module in MODULES for name, value in vars(module).items()
                     if name.startswith(("H265_", "VANC_"))}
        defined = dict(re.findall(r"#define (H265_(?!VERSION_)\w+|VANC_\w+) (\d+)\b", text))
        self.assertEqual(constants, {name: int(value) for name, value in defined.items()})

        enumerators = {member.name: member.value for module in MODULES for enum in vars(module).values()
                       if inspect.isclass(enum) and issubclass(enum, IntEnum) for member in enum}
        bodies = " ".join(re.findall(r"enum[^{;]*\{([^}]*)\}", text))
        declared = re.findall(r"(\w+)\s*=\s*(\d+)", bodies)
        self.assertEqual(enumerators, {name: int(value) for name, value in declared})


class Functions(unittest.TestCase):

    def test_every_function_is_declared_with_its_parameters(self) -> None:
        text = (INCLUDE / "h265.h").read_text()
        text = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
        declared = {}
        for result, name, parameters in re.findall(r"^([\w ]+[ *])(\w+)\(([^)]*)\);", text, re.MULTILINE):
            declared[name] = (result.strip() == "void", len(parameters.split(",")))
        described = {name: (result is None, len(parameters))
                     for name, (result, parameters) in PROTOTYPES.items()}
        del described["DbgTraceSetSink"]  # which another header declares
        self.assertEqual(described, declared)


class Checks(unittest.TestCase):

    def test_names_that_are_no_fields_are_refused(self) -> None:
        sps = h265.Sps()
        with self.assertRaisesRegex(AttributeError, "vui_h265_t has no field fieldseq_flag"):
            sps.vui.fieldseq_flag = 1
        with self.assertRaises(AttributeError):
            h265.caption_t(date1=1)

    def test_numbers_that_do_not_fit_are_refused(self) -> None:
        afd = afd_t(active_format=3)
        with self.assertRaisesRegex(OverflowError, "256 does not fit active_format of afd_t"):
            afd.active_format = 256
        self.assertEqual(afd.active_format, 3)
        with self.assertRaises(OverflowError):
            h265.Sps().seq_parameter_set_id = -1

    def test_members_of_a_union_share_their_place(self) -> None:
        vanc = vanc_t()
        vanc.vanc_data.caption.flag = 1
        self.assertEqual(vanc.vanc_data.afd_data.active_format_flag, 1)


if __name__ == "__main__":
    unittest.main()
