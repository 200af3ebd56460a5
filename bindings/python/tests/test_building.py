"""What is built is found again by the SEI walk, with the values that it was built from."""

import unittest

import h265
from samples import SAMPLES, first_sps, units_of

PRECISION_TIME_UUID = bytes.fromhex("a8687dd4d7593758a5cef0338b6545f1")


class Captions(unittest.TestCase):

    def test_captions_are_found_again(self) -> None:
        captions = [h265.caption_t(flag=1, type=cc_type, data1=0x94, data2=cc_type) for cc_type in range(4)]
        nal = h265.build_captions(captions, 20)
        self.assertEqual(nal.nal_unit_type, h265.NalUnitType.PREFIX_SEI_NUT)
        message, = h265.sei_messages(nal)
        self.assertEqual((message.payload_type, message.suid), (4, h265.Suid.SUID_CLOSED_CAPTION))
        parsed = h265.Captions.parse(nal)
        self.assertEqual(parsed.user_identifier, int.from_bytes(b"GA94", "big"))
        self.assertEqual([bytes(construct) for construct in parsed.constructs],
                         [bytes(caption) for caption in captions] + [b"\0\2\0\0"] * 16)

    def test_captions_that_do_not_fit_are_refused(self) -> None:
        captions = [h265.caption_t(flag=1)] * 32
        self.assertEqual(len(h265.Captions.parse(h265.build_captions(captions[:31], 31)).constructs), 31)
        with self.assertRaisesRegex(ValueError, "32 captions, but the message carries 31"):
            h265.build_captions(captions, 31)
        with self.assertRaises(h265.H265Error):
            h265.build_captions([], 20)


class ActiveFormat(unittest.TestCase):

    def test_active_format_is_found_again(self) -> None:
        nal = h265.build_active_format(10)
        message, = h265.sei_messages(nal)
        self.assertEqual((message.payload_type, message.suid), (4, h265.Suid.SUID_AFD))
        afd = h265.ActiveFormat.parse(nal).afd_data
        self.assertEqual((afd.active_format_flag, afd.active_format), (1, 10))

    def test_no_active_format_is_found_again(self) -> None:
        afd = h265.ActiveFormat.parse(h265.build_active_format(None)).afd_data
        self.assertEqual((afd.active_format_flag, afd.active_format), (0, 0))

    def test_more_than_four_bits_are_refused(self) -> None:
        with self.assertRaisesRegex(ValueError, "16 is no number of 4 bits"):
            h265.build_active_format(16)


class TimeCode(unittest.TestCase):

    def setUp(self) -> None:
        self.sps = first_sps("interlaced-field-hrd.hevc")

    def parsed(self, nal: h265.NalUnit) -> h265.TimeCode:
        message, = h265.sei_messages(nal)
        self.assertEqual((message.payload_type, message.suid), (136, h265.Suid.SUID_TIME_CODE))
        return h265.TimeCode.parse(nal, message)

    def assert_time(self, time_code: h265.TimeCode, *time: int) -> None:
        self.assertEqual((time_code.num_clocks_ts, time_code.full_timestamp_flag[0]), (1, 1))
        self.assertEqual((time_code.hours_value[0], time_code.minutes_value[0], time_code.seconds_value[0],
                          time_code.n_frames[0]), time)

    def test_embedded_time_code_is_found_again(self) -> None:
        time_code = self.parsed(h265.build_time_code(self.sps, 29970, h265.vitc(12, 34, 56, 23, True)))
        self.assert_time(time_code, 12, 34, 56, 23)
        self.assertEqual(time_code.counting_type[0], 4)

    def test_time_of_day_is_found_again(self) -> None:
        time = h265.SEI_COMMERCIALTC(hours=23, minutes=59, seconds=58, n_frames=57)
        with self.assertLogs("h265", "ERROR") as logs:
            nal = h265.build_time_code(self.sps, 59940, time, h265.TimeSource.NTP_SERVER,
                                       h265.CountingMode.SYSTEM_TC_UTC_CONVERSION_COUNT_MODE)
        self.assertIn("Assertion failed: pVitcData != NULL", logs.output[0])
        time_code = self.parsed(nal)
        self.assert_time(time_code, 23, 59, 58, 57)
        self.assertEqual(time_code.counting_type[0], 6)

    def test_what_is_no_time_is_refused(self) -> None:
        for time in ((24, 0, 0, 0), (0, 60, 0, 0), (0, 0, 60, 0), (0, 0, 0, 86), (-1, 0, 0, 0)):
            with self.assertRaisesRegex(ValueError, "no time of day"):
                h265.vitc(*time)


class PictureTiming(unittest.TestCase):

    def test_messages_of_a_stream_are_built_again(self) -> None:
        vui = first_sps("interlaced-field-hrd.hevc").vui
        built = 0
        for nal in units_of(SAMPLES / "interlaced-field-hrd.hevc", h265.NalUnitType.PREFIX_SEI_NUT):
            for message in h265.sei_messages(nal):
                if message.suid == h265.Suid.SUID_PICTURE_TIMING:
                    built += 1
                    self.assertEqual(h265.build_pic_timing(vui, h265.PicTiming.parse(nal, message, vui)), nal)
        self.assertEqual(built, 16)


class PrecisionTime(unittest.TestCase):

    def test_microseconds_are_found_again(self) -> None:
        for microseconds in (0, 1_700_000_000_123_456, 2**63 - 1):
            nal = h265.build_precision_time(microseconds, 0x9F)
            message, = h265.sei_messages(nal)
            payload = message.payload(nal)
            self.assertEqual(message.payload_type, 5)
            self.assertEqual(payload[:17], PRECISION_TIME_UUID + b"\x9f")
            pairs = [payload[index:index + 2] for index in range(17, 28, 3)]
            self.assertEqual(int.from_bytes(b"".join(pairs), "big"), microseconds)

    def test_bad_arguments_are_refused(self) -> None:
        with self.assertRaisesRegex(h265.H265Error, "StatusByte:0, .* should be 0x1f!"):
            h265.build_precision_time(0, 0)
        for microseconds, status in ((-1, 0x1F), (2**63, 0x1F), (0, 0x11F)):
            with self.assertRaises(ValueError):
                h265.build_precision_time(microseconds, status)


class Delimiters(unittest.TestCase):

    def test_delimiters_are_built(self) -> None:
        for pic_type in range(3):
            aud = h265.build_access_unit_delimiter(pic_type)
            self.assertEqual(aud.nal_unit_type, h265.NalUnitType.AUD_NUT)
            self.assertEqual(aud.sodb[0] >> 5, pic_type)
        self.assertEqual(h265.build_end_of_sequence(), b"\0\0\1\x48\1")

    def test_delimiter_with_its_header_in_the_payload_is_parsed(self) -> None:
        aud = h265.AccessUnitDelimiter.parse(b"\0\0\1\x46\1\x46\1\1\0")
        self.assertEqual((aud.nal_type, aud.pic_type), (35, 2))
        with self.assertRaisesRegex(h265.H265Error, "Failed to parse aud NAL!"):
            h265.AccessUnitDelimiter.parse(h265.build_access_unit_delimiter(2))


if __name__ == "__main__":
    unittest.main()
