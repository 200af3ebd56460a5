"""h265/sei.h: the records of SEI messages, ITU-T H.265 clause 7.3.5 and Annex D."""

from ctypes import c_int, c_ubyte, c_ushort

from .vanc import afd_t, caption_t
from .xtypes import INT64, UINT, UINT64, Record, array

H265_PIC_TIMING_DECODING_UNITS = 510  # decoding units kept
H265_TIME_CODE_CLOCKS = 3
H265_SEI_CAPTIONS = 32


class SEI_message_t(Record):
    """The header of one sei_message( ).

    payload_type wraps at 256. payload_size counts bytes. payload_index is that of the payload's first byte in
    the data behind the NAL unit header, emulation prevention bytes removed.
    """

    _fields_ = [
        ("payload_type", c_ubyte),
        ("payload_size", UINT),
        ("payload_index", UINT),
    ]


class sei_h265_pic_timing_t(Record):
    """pic_timing( ), clause D.2.3. What is present depends on the VUI of the active SPS.

    pic_struct (Table D.2), source_scan_type (0 interlaced, 1 progressive, 2 unknown) and duplicate_flag are
    there with frame_field_info_present_flag; the delays with CpbDpbDelaysPresentFlag; the decoding units, of
    which 510 are kept, with sub_pic_cpb_params_in_pic_timing_sei_flag.
    """

    _fields_ = [
        ("pic_struct", c_ubyte),
        ("source_scan_type", c_ubyte),
        ("duplicate_flag", c_int),
        ("au_cpb_removal_delay_minus1", UINT64),
        ("pic_dpb_output_delay", UINT64),
        ("pic_dpb_output_du_delay", UINT64),
        ("num_decoding_units_minus1", UINT64),
        ("du_common_cpb_removal_delay_flag", c_int),
        ("du_common_cpb_removal_delay_increment_minus1", UINT64),
        ("num_nalus_in_du_minus1", array(UINT64, H265_PIC_TIMING_DECODING_UNITS)),
        ("du_cpb_removal_delay_increment_minus1", array(UINT64, H265_PIC_TIMING_DECODING_UNITS)),
    ]


class sei_h265_time_code_t(Record):
    """time_code( ), clause D.2.27.

    Entry i describes clock timestamp i, for i < num_clocks_ts; the rest of it is there with
    clock_timestamp_flag[i]. counting_type is that of Table D.9. full_timestamp_flag implies the flags of
    seconds, minutes and hours.
    """

    _fields_ = [
        ("num_clocks_ts", c_ubyte),
        ("clock_timestamp_flag", array(c_int, H265_TIME_CODE_CLOCKS)),
        ("units_field_based_flag", array(c_int, H265_TIME_CODE_CLOCKS)),
        ("counting_type", array(c_ubyte, H265_TIME_CODE_CLOCKS)),
        ("full_timestamp_flag", array(c_int, H265_TIME_CODE_CLOCKS)),
        ("discontinuity_flag", array(c_int, H265_TIME_CODE_CLOCKS)),
        ("cnt_drop_flag", array(c_int, H265_TIME_CODE_CLOCKS)),
        ("n_frames", array(c_ushort, H265_TIME_CODE_CLOCKS)),
        ("seconds_value", array(c_ubyte, H265_TIME_CODE_CLOCKS)),
        ("minutes_value", array(c_ubyte, H265_TIME_CODE_CLOCKS)),
        ("hours_value", array(c_ubyte, H265_TIME_CODE_CLOCKS)),
        ("seconds_flag", array(c_int, H265_TIME_CODE_CLOCKS)),
        ("minutes_flag", array(c_int, H265_TIME_CODE_CLOCKS)),
        ("hours_flag", array(c_int, H265_TIME_CODE_CLOCKS)),
        ("time_offset_length", array(c_ubyte, H265_TIME_CODE_CLOCKS)),
        ("time_offset_value", array(INT64, H265_TIME_CODE_CLOCKS)),
    ]


class SEI_cc_data_t(Record):
    """The head of cc_data( ), CTA-708 (ATSC A/53).

    The first cc_count entries of cc_bytes are in use; marker_bits are the 8 bits behind them, 0xFF.
    """

    _fields_ = [
        ("process_cc_data_flag", c_int),
        ("cc_count", c_ubyte),
        ("marker_bits", c_ubyte),
    ]


class SEI_cc_t(Record):
    """Closed captions in registered user data, clause D.2.6.

    user_identifier is "GA94" as a big-endian number, 0x47413934; header that of the message they were found
    in.
    """

    _fields_ = [
        ("itu_t_t35_country_code", c_ubyte),
        ("itu_t_t35_provider_code", c_ushort),
        ("user_identifier", UINT64),
        ("user_data_type_code", c_ubyte),
        ("cc_data", SEI_cc_data_t),
        ("cc_bytes", array(caption_t, H265_SEI_CAPTIONS)),
        ("header", SEI_message_t),
    ]


class SEI_afd_t(Record):
    """Active format description in registered user data, clause D.2.6.

    user_identifier is "DTG1" as a big-endian number, 0x44544731; header that of the message it was found in.
    """

    _fields_ = [
        ("itu_t_t35_country_code", c_ubyte),
        ("itu_t_t35_provider_code", c_ushort),
        ("user_identifier", UINT64),
        ("afd_data", afd_t),
        ("header", SEI_message_t),
    ]
