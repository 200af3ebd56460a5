"""Rewriting changes what was asked for, and nothing else."""

import unittest

import h265
from samples import SAMPLES, STREAMS, UNITS, escaped, first_sps, units_of

VPS_SCAN_TYPE = 9  # index of the byte that begins with general_progressive_source_flag


def changed_lines(before: h265.Sps, after: h265.Sps) -> set[str]:
    """The lines of the display that are new."""
    return set(after.display().splitlines()) - set(before.display().splitlines())


class SequenceParameterSets(unittest.TestCase):

    def test_unedited_sets_stay_byte_for_byte(self) -> None:
        rewritten = 0
        for path in STREAMS + UNITS:
            for nal in units_of(path, h265.NalUnitType.SPS_NUT):
                sps = h265.Sps.parse(nal)
                if sps.vui_parameters_present_flag:
                    rewritten += 1
                    self.assertEqual(h265.modify_sps_vui(nal, sps), nal, path.name)
        self.assertGreater(rewritten, len(STREAMS) // 2)

    def test_vui_alone(self) -> None:
        nal = units_of(SAMPLES / "progressive-hrd-vui.hevc", h265.NalUnitType.SPS_NUT)[0]
        sps = h265.Sps.parse(nal)
        sps.vui.vui_num_units_in_tick = 1001
        sps.vui.vui_time_scale = 60000
        sps.pic_width_in_luma_samples = 8  # not looked at
        after = h265.Sps.parse(h265.modify_sps_vui(nal, sps))
        self.assertEqual(changed_lines(h265.Sps.parse(nal), after),
                         {"num_units_in_tick=1001.", "time_scale=60000."})

    def test_flags_and_size_with_the_vui(self) -> None:
        nal = units_of(SAMPLES / "vui-extended-sar.hevc", h265.NalUnitType.SPS_NUT)[0]
        sps = h265.Sps.parse(nal)
        sps.ptl.general_progressive_source_flag = 0
        sps.ptl.general_interlaced_source_flag = 1
        sps.pic_width_in_luma_samples = 1920
        sps.vui.sar_width = 1234
        after = h265.Sps.parse(h265.modify_sps(nal, sps))
        self.assertEqual(
            changed_lines(h265.Sps.parse(nal), after), {
                "general_progressive_source_flag=0.", "general_interlaced_source_flag=1.",
                "general_frame_only_constraint_flag=0.", "pic_width_in_luma_samples=1920.", "sar_width=1234."
            })

    def test_record_of_another_unit_is_refused(self) -> None:
        nal = units_of(SAMPLES / "hdr10.hevc", h265.NalUnitType.SPS_NUT)[0]
        sps = h265.Sps.parse(nal)
        sps.vui_parameters_present_offset = -1
        for modify in (h265.modify_sps, h265.modify_sps_vui):
            with self.assertRaisesRegex(h265.H265Error, "Failed to set vui parameters SPS NAL!"):
                modify(nal, sps)


class VideoParameterSets(unittest.TestCase):

    def setUp(self) -> None:
        self.nal = units_of(SAMPLES / "progressive-hrd-vui.hevc", h265.NalUnitType.VPS_NUT)[0]

    def rewritten(self, scan_type: int) -> tuple[h265.NalUnit, h265.NalUnit]:
        """A VPS with those flags, and what is expected of it."""
        sodb = bytearray(self.nal.sodb)
        header = self.nal[:self.nal.payload_offset]
        sodb[VPS_SCAN_TYPE] = scan_type
        nal = h265.NalUnit(header + escaped(sodb))
        sodb[VPS_SCAN_TYPE] = scan_type & 0x2F | 0x40
        return nal, h265.NalUnit(header + escaped(sodb))

    def test_source_becomes_interlaced(self) -> None:
        nal, expected = self.rewritten(0x90)
        self.assertEqual(nal, self.nal)
        self.assertEqual(h265.modify_vps(nal), expected)
        ptl = h265.Vps.parse(expected).ptl
        self.assertEqual((ptl.general_progressive_source_flag, ptl.general_interlaced_source_flag,
                          ptl.general_frame_only_constraint_flag), (0, 1, 0))

    def test_result_may_be_shorter(self) -> None:
        nal, expected = self.rewritten(0x00)
        self.assertLess(len(expected), len(nal))
        self.assertEqual(h265.modify_vps(nal), expected)

    def test_zeros_behind_the_unit_are_dropped(self) -> None:
        self.assertEqual(h265.modify_vps(self.nal + b"\0\0"), self.rewritten(0x90)[1])

    def test_result_that_does_not_fit_is_refused(self) -> None:
        unescaped = self.nal[:self.nal.payload_offset] + self.nal.sodb
        with self.assertRaisesRegex(h265.H265Error, "H265Lib_modify_vps_NAL"):
            h265.modify_vps(unescaped)


class PictureTiming(unittest.TestCase):

    def setUp(self) -> None:
        self.vui = first_sps("interlaced-field-hrd.hevc").vui

    def test_pic_struct_alone_changes(self) -> None:
        changed = 0
        for nal in units_of(SAMPLES / "interlaced-field-hrd.hevc", h265.NalUnitType.PREFIX_SEI_NUT):
            for message in h265.sei_messages(nal):
                if message.suid != h265.Suid.SUID_PICTURE_TIMING:
                    continue
                changed += 1
                before = h265.PicTiming.parse(nal, message, self.vui)
                nal = h265.modify_pic_timing(nal, message, self.vui, 12)
                after = h265.PicTiming.parse(nal, message, self.vui)
                self.assertEqual(after.pic_struct, 12)
                after.pic_struct = before.pic_struct
                self.assertEqual(bytes(after), bytes(before))
        self.assertEqual(changed, 16)

    def test_room_is_made_for_an_emulation_prevention_byte(self) -> None:
        nal = h265.build_pic_timing(self.vui, h265.PicTiming(pic_struct=1))
        self.assertEqual(nal.hex(" "), "00 00 01 4e 01 01 03 10 00 01 80")
        message, = h265.sei_messages(nal)
        longer = h265.modify_pic_timing(nal, message, self.vui, 0)
        self.assertEqual(longer.hex(" "), "00 00 01 4e 01 01 03 00 00 03 01 80")
        self.assertEqual(h265.modify_pic_timing(longer, message, self.vui, 1), nal)

    def test_message_without_pic_struct_is_refused(self) -> None:
        vui = first_sps("progressive-hrd-vui.hevc").vui
        nal = h265.build_pic_timing(self.vui, h265.PicTiming(pic_struct=1))
        message, = h265.sei_messages(nal)
        with self.assertRaisesRegex(h265.H265Error, "VUI frame_field_info_present_flag should be present."):
            h265.modify_pic_timing(nal, message, vui, 1)


if __name__ == "__main__":
    unittest.main()
