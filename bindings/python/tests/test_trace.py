"""What the library reports is part of the error, or goes to the log."""

import os
import shutil
import subprocess
import sys
import sysconfig
import tempfile
import threading
import unittest
from pathlib import Path

import h265
from h265._functions import channel
from samples import SAMPLES, first_sps, units_of

SPS = units_of(SAMPLES / "hdr10.hevc", h265.NalUnitType.SPS_NUT)[0]
PPS = units_of(SAMPLES / "hdr10.hevc", h265.NalUnitType.PPS_NUT)[0]
VPS = units_of(SAMPLES / "hdr10.hevc", h265.NalUnitType.VPS_NUT)[0]


def run_python(program: str, **environment: str) -> subprocess.CompletedProcess[str]:
    return subprocess.run([sys.executable, "-P", "-B", "-c", program], capture_output=True, text=True,
                          env={**os.environ, **environment})


class Errors(unittest.TestCase):

    def assert_refused(self, text: str, parse: object, *arguments: object) -> h265.H265Error:
        with self.assertRaises(h265.H265Error) as raised:
            parse(*arguments)
        self.assertEqual(str(raised.exception), text)
        return raised.exception

    def test_error_names_the_function_and_its_reasons(self) -> None:
        self.assert_refused(
            "H265Lib_Parse_sps_nal: cannot parse general_profile_compatibility_flag[24]. cannot parse "
            "profile_tier_level. Failed to parse SPS NAL!", h265.Sps.parse, SPS[:12])
        self.assert_refused(
            "H265Lib_DetermineSEIType: Was expecting NAL type:33 to be 39(PREFIX_SEI) or 40(SUFFIX_SEI).",
            list, h265.sei_messages(SPS))
        self.assert_refused(
            "H265Lib_format_au_delimiter_nalu: primary_pic_type:3, should not be greater than 2!",
            h265.build_access_unit_delimiter, 3)
        self.assert_refused("H265Lib_format_sei_cc_nal: no reason was reported", h265.build_captions, [], 20)

    def test_every_parser_refuses_what_is_cut(self) -> None:
        sps, pps = h265.Sps.parse(SPS), h265.Pps.parse(PPS)
        timing = h265.SeiMessage(1, 1, 1000, h265.Suid.SUID_PICTURE_TIMING)
        sei = h265.build_active_format(1)
        vui = first_sps("interlaced-field-hrd.hevc").vui
        for reason, parse, *arguments in (
            ("cannot parse vps_max_layers_minus1", h265.Vps.parse, VPS[:7]),
            ("cannot parse pps_pic_parameter_set_id", h265.Pps.parse, PPS[:6] + b"\0"),
            ("failed to get slice_pic_parameter_set_id", h265.SliceHeader.parse, b"\0\0\1\2\1\0", sps, pps),
            ("cannot parse pic_struct", h265.PicTiming.parse, sei, timing, vui),
            ("Failed to parse sei time_code on line", h265.TimeCode.parse, sei, timing),
            ("No closed caption message in the SEI NAL unit", h265.Captions.parse, sei),
            ("No active format description in the SEI NAL unit", h265.ActiveFormat.parse, sei[:10]),
        ):
            with self.subTest(parse=parse.__qualname__):
                with self.assertRaisesRegex(h265.H265Error, reason):
                    parse(*arguments)

    def test_messages_tell_where_they_come_from(self) -> None:
        error = self.assert_refused("H265Lib_Parse_sps_nal: buffer_len:0 is too small. Malformed NAL.",
                                    h265.Sps.parse, b"")
        self.assertEqual(error.function, "H265Lib_Parse_sps_nal")
        message, = error.messages
        self.assertEqual((message.channel, message.level, message.function),
                         ("H265LIB", 3, "H265Lib_Parse_sps_nal"))
        self.assertRegex(message.file, r"^\w+\.cpp$")
        self.assertGreater(message.line, 0)
        self.assertEqual(message.text, "buffer_len:0 is too small. Malformed NAL.\n")

    def test_context_stays_when_a_parse_fails(self) -> None:
        context = h265.H265D_PARSE_CONTEXT()
        h265.Sps.parse(SPS, context)
        with self.assertRaises(h265.H265Error):
            h265.Sps.parse(SPS[:20], context)
        self.assertEqual(bytes(context.LastSPS[:context.LastSPSLength]), SPS)

    def test_threads_get_their_own_messages(self) -> None:
        rounds = 200
        wrong: list[str] = []

        def work(nal: bytes, reason: str) -> None:
            for _ in range(rounds):
                try:
                    h265.Sps.parse(nal)
                    wrong.append("parsed")
                except h265.H265Error as error:
                    if str(error) != f"H265Lib_Parse_sps_nal: {reason}":
                        wrong.append(str(error))

        threads = [
            threading.Thread(target=work,
                             args=(SPS[:size], f"buffer_len:{size} is too small. Malformed NAL."))
            for size in range(4)
        ]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])


class Log(unittest.TestCase):

    def test_messages_of_good_calls_are_logged(self) -> None:
        level_before = channel.nMaxLevel
        channel.nMaxLevel = 8
        try:
            with self.assertLogs("h265", "DEBUG") as logs:
                h265.Sps.parse(SPS)
        finally:
            channel.nMaxLevel = level_before
        self.assertRegex(logs.output[0], r"^DEBUG:h265:_GetNALTypeOffset \(nal_type_offset.cpp:\d+\): Found ")

    def test_display_leaves_the_level_as_it_was(self) -> None:
        level_before = channel.nMaxLevel
        with self.assertNoLogs("h265"):
            self.assertIn("pic_width_in_luma_samples=208.", h265.Sps.parse(SPS).display())
        self.assertEqual(channel.nMaxLevel, level_before)

    def test_errors_have_reasons_in_a_silent_environment(self) -> None:
        run = run_python("import h265\nh265.Sps.parse(b'')", DBGTRACE_LEVEL="0")
        self.assertEqual(run.returncode, 1)
        self.assertIn("buffer_len:0 is too small", run.stderr)

    def test_unloading_is_traced_behind_the_interpreter(self) -> None:
        run = run_python("import h265", DBGTRACE_LEVEL="8")
        self.assertEqual(run.returncode, 0)
        self.assertIn("_H265LIB_AutoShutdown", run.stderr)


class Loading(unittest.TestCase):

    def test_missing_library_is_an_import_error(self) -> None:
        run = run_python("import h265", H265_LIBRARY="/nowhere/libh265.so.1")
        self.assertEqual(run.returncode, 1)
        self.assertIn("ImportError: the H.265 library cannot be loaded (/nowhere/libh265.so.1: ", run.stderr)

    def test_library_installed_with_the_package_is_found(self) -> None:
        library = Path(os.environ["H265_LIBRARY"])
        for libdir in ("lib", f"lib/{sysconfig.get_config_var('MULTIARCH')}"):
            with self.subTest(libdir=libdir), tempfile.TemporaryDirectory() as prefix:
                packages = Path(prefix) / "lib" / "python3" / "dist-packages"
                shutil.copytree(Path(h265.__file__).parent, packages / "h265")
                installed = Path(prefix) / libdir / "libh265.so.1"
                installed.parent.mkdir(exist_ok=True)
                installed.symlink_to(library)
                run = run_python("from h265._library import library; print(library._name)", H265_LIBRARY="",
                                 PYTHONPATH=str(packages))
                self.assertEqual((run.stdout, run.stderr), (f"{installed}\n", ""))

    def test_dynamic_loader_finds_it(self) -> None:
        directory = Path(os.environ["H265_LIBRARY"]).parent
        run = run_python("import h265", H265_LIBRARY="", LD_LIBRARY_PATH=str(directory))
        self.assertEqual((run.returncode, run.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
