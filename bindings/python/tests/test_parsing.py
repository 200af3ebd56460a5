"""What is parsed is what h265tool says of every sample."""

import unittest
from collections import Counter

import h265
from h265.records import H265D_PARSE_CONTEXT
from samples import SAMPLES, STREAMS, UNITS, differences, first_sps, inspected, run_tool, units_of

PARSED_SEI = {
    "time_code": h265.TimeCode.parse,
    "captions": lambda nal, _message: h265.Captions.parse(nal),
    "afd": lambda nal, _message: h265.ActiveFormat.parse(nal),
}


class Samples(unittest.TestCase):

    def test_streams_are_split_where_the_tool_does(self) -> None:
        for path in STREAMS + UNITS:
            with self.subTest(sample=path.name):
                data = path.read_bytes()
                units = h265.split(data)
                expected = inspected(path)
                self.assertEqual(len(units), len(expected))
                for unit, json in zip(units, expected):
                    self.assertEqual(unit, data[json["offset"]:json["offset"] + json["size"]])
                    self.assertEqual(unit.payload_offset, json["start_code"] + 2)
                    self.assertEqual(unit.nal_unit_type, json["nal_unit_type"])
                    self.assertEqual(unit.type_name, json["nal_unit_name"])
                    self.assertEqual(unit.nuh_layer_id, json["nuh_layer_id"])
                    self.assertEqual(unit.nuh_temporal_id_plus1 - 1, json["temporal_id"])
                    self.assertEqual(unit.is_slice, "slice" in json)

    def test_parameter_sets_and_slices_have_the_values_of_the_tool(self) -> None:
        compared: Counter[str] = Counter()
        for path in STREAMS + UNITS:
            sets: dict[str, dict[int, h265.Sps | h265.Pps]] = {"sps": {}, "pps": {}}
            for unit, json in zip(h265.split(path.read_bytes()), inspected(path)):
                self.assertFalse(json.keys() & {"error", "not_parsed"})
                if "vps" in json:
                    record = h265.Vps.parse(unit)
                elif "sps" in json:
                    record = h265.Sps.parse(unit)
                    sets["sps"][record.seq_parameter_set_id] = record
                elif "pps" in json:
                    record = h265.Pps.parse(unit)
                    sets["pps"][record.pps_pic_parameter_set_id] = record
                elif "slice" in json:
                    pps = sets["pps"][json["slice"]["slice_pic_parameter_set_id"]]
                    record = h265.SliceHeader.parse(unit, sets["sps"][pps.pps_seq_parameter_set_id], pps)
                else:
                    continue
                kind, = json.keys() & {"vps", "sps", "pps", "slice"}
                compared[kind] += 1
                with self.subTest(sample=path.name, offset=json["offset"]):
                    self.assertEqual(list(differences(json[kind], record, kind)), [])
        self.assertGreaterEqual(min(compared[kind] for kind in ("vps", "sps", "pps")), len(STREAMS))
        self.assertGreater(compared["slice"], 100)

    def test_sei_messages_have_the_values_of_the_tool(self) -> None:
        compared: Counter[str] = Counter()
        for path in STREAMS + UNITS:
            sps = None
            for unit, json in zip(h265.split(path.read_bytes()), inspected(path)):
                if "sps" in json:
                    sps = h265.Sps.parse(unit)
                if "sei" not in json:
                    continue
                messages = list(h265.sei_messages(unit))
                self.assertEqual(len(messages), len(json["sei"]))
                for message, expected in zip(messages, json["sei"]):
                    with self.subTest(sample=path.name, offset=json["offset"]):
                        self.assertEqual(message.payload_type, expected["payload_type"])
                        self.assertEqual(message.payload_size, expected["payload_size"])
                        self.assertEqual(message.payload_index, expected["payload_index"])
                        for kind, parse in PARSED_SEI.items():
                            if kind in expected:
                                compared[kind] += 1
                                record = parse(unit, message)
                                self.assertEqual(list(differences(expected[kind], record, kind)), [])
                        if "pic_timing" in expected:
                            compared["pic_timing"] += 1
                            record = h265.PicTiming.parse(unit, message, sps.vui)
                            self.assertEqual(list(differences(expected["pic_timing"], record)), [])
        self.assertEqual(compared.keys(), {*PARSED_SEI, "pic_timing"})

    def test_unit_with_several_messages_is_walked(self) -> None:
        unit, = h265.split((SAMPLES / "units" / "sei-multiple.nal").read_bytes())
        messages = list(h265.sei_messages(unit))
        self.assertEqual([message.payload_type for message in messages], [1, 136, 4, 4, 5])
        self.assertEqual([message.suid for message in messages],
                         [h265.Suid.SUID_PICTURE_TIMING, h265.Suid.SUID_TIME_CODE,
                          h265.Suid.SUID_CLOSED_CAPTION, h265.Suid.SUID_AFD, h265.Suid.SUID_UNKNOWN])
        self.assertEqual(messages[0].payload(unit), b"\x31")
        self.assertEqual(messages[3].payload(unit), b"\xb5\0\x31DTG1\x41\xf8")
        self.assertEqual(len(h265.Captions.parse(unit).constructs), 20)
        self.assertEqual(h265.ActiveFormat.parse(unit).afd_data.active_format, 8)


class Framing(unittest.TestCase):

    def test_zeros_between_units_belong_to_none(self) -> None:
        self.assertEqual(h265.split(b"\0\0\0\0\1\x46\1\x50\0\0\0\0\0\1\x48\1\0\0"),
                         [b"\0\0\0\1\x46\1\x50", b"\0\0\0\1\x48\1"])
        self.assertEqual(h265.split(b"no start code"), [])
        self.assertEqual(h265.split(b""), [])

    def test_emulation_prevention_is_removed(self) -> None:
        self.assertEqual(h265.NalUnit(b"\0\0\1\x4e\1\0\0\3\1\x80").sodb, b"\0\0\1\x80")
        self.assertEqual(h265.NalUnit(b"\0\0\1\x48\1").sodb, b"")

    def test_what_is_no_unit_has_no_type(self) -> None:
        for data in (b"", b"\0\0\1", b"\0\0\1\x46", b"\x46\1\x50"):
            with self.assertRaisesRegex(ValueError, "no NAL unit with start code and header"):
                h265.NalUnit(data).nal_unit_type

    def test_types_have_the_names_of_the_library(self) -> None:
        for nal_unit_type in h265.NalUnitType:
            unit = h265.NalUnit(bytes([0, 0, 1, nal_unit_type << 1, 1]))
            self.assertEqual(unit.type_name, nal_unit_type.name)


class Contexts(unittest.TestCase):

    def test_unchanged_sets_come_from_the_context(self) -> None:
        context = H265D_PARSE_CONTEXT()
        path = SAMPLES / "repeated-headers.hevc"
        sps_nal, pps_nal = (units_of(path, nal_unit_type)[0]
                            for nal_unit_type in (h265.NalUnitType.SPS_NUT, h265.NalUnitType.PPS_NUT))
        sps, pps = h265.Sps.parse(sps_nal, context), h265.Pps.parse(pps_nal, context)
        self.assertEqual(context.LastSPSLength, len(sps_nal))
        self.assertEqual(context.LastPPSLength, len(pps_nal))
        context.last_parsed_sps.pic_width_in_luma_samples = 1
        context.last_parsed_pps.init_qp_minus26 = -1000
        self.assertEqual(h265.Sps.parse(sps_nal, context).pic_width_in_luma_samples, 1)
        self.assertEqual(h265.Pps.parse(pps_nal, context).init_qp_minus26, -1000)
        self.assertNotIn(1, [sps.pic_width_in_luma_samples, -pps.init_qp_minus26 // 1000])


class Displays(unittest.TestCase):

    def test_texts_are_those_of_the_tool(self) -> None:
        path = SAMPLES / "interlaced-field-hrd.hevc"
        kinds = (("--vps", h265.NalUnitType.VPS_NUT, h265.Vps), ("--sps", h265.NalUnitType.SPS_NUT, h265.Sps),
                 ("--pps", h265.NalUnitType.PPS_NUT, h265.Pps))
        for option, nal_unit_type, record in kinds:
            for level in (5, 6):
                with self.subTest(option=option, level=level):
                    expected = run_tool("show", option, "--level", str(level), path)
                    parsed = record.parse(units_of(path, nal_unit_type)[0])
                    self.assertEqual(parsed.display(level).rstrip("\n"), expected.rstrip("\n"))

    def test_picture_timing_is_displayed(self) -> None:
        vui = first_sps("interlaced-field-hrd.hevc").vui
        text = h265.PicTiming(pic_struct=2, pic_dpb_output_delay=6).display(vui)
        self.assertIn("\npic_struct=2.\n", text)
        self.assertIn("\npic_dpb_output_delay=6.\n", text)


if __name__ == "__main__":
    unittest.main()
