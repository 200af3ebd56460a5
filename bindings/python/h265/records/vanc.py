"""vanc.h: ancillary data taken from the vertical ancillary space (SMPTE ST 291) of the video input."""

from ctypes import c_int, c_ubyte, c_ushort
from enum import IntEnum

from .xtypes import UINT, UINT64, Alternatives, Record, array

VANC_CAPTION_SERVICES = 16
VANC_USER_DATA_WORDS = 255  # user data words of an ancillary data packet, ST 291


class Suid(IntEnum):
    """The kinds of SEI messages and of ancillary data: the SUID_ values."""

    SUID_UNKNOWN = 0
    SUID_CLOSED_CAPTION = 2
    """ATSC A/53 cc_data: user identifier "GA94", user data type code 3"""
    SUID_AFD = 3
    """ETSI TS 101 154 / ATSC A/53 active format: user identifier "DTG1\""""
    SUID_TIME_CODE = 4
    """time code SEI message, payload type 136"""
    SUID_PICTURE_TIMING = 7
    """picture timing SEI message, payload type 1"""


class caption_t(Record):
    """One caption construct, CTA-708 cc_data_pkt.

    Bit 0 of flag is cc_valid; bits 0 and 1 of type are cc_type: 0 and 1 for CEA-608 field 1 and 2, 2 and 3
    for DTVCC data and start. data1 and data2 are cc_data_1 and cc_data_2.
    """

    _fields_ = [
        ("flag", c_ubyte),
        ("type", c_ubyte),
        ("data1", c_ubyte),
        ("data2", c_ubyte),
    ]


class afd_t(Record):
    """Active format description, ATSC A/53 clause 6.2.4.

    active_format, 4 bits, is there when bit 0 of active_format_flag is set.
    """

    _fields_ = [
        ("active_format_flag", c_int),
        ("active_format", c_ubyte),
    ]


class vitc_bg_t(Record):
    """The binary groups (user bits) of a time code, 4 bits each."""

    _fields_ = [
        ("BinaryGroup1", c_ubyte),
        ("BinaryGroup2", c_ubyte),
        ("BinaryGroup3", c_ubyte),
        ("BinaryGroup4", c_ubyte),
        ("BinaryGroup5", c_ubyte),
        ("BinaryGroup6", c_ubyte),
        ("BinaryGroup7", c_ubyte),
        ("BinaryGroup8", c_ubyte),
    ]


class vitc_t(Record):
    """A decoded VITC or LTC time code, SMPTE ST 12-1; see h265.vitc, which makes one from numbers.

    Digits are numbers 0 to 9, not characters. Bit 0 of Flag1 is the drop-frame flag. VitcCrc and VitcCrcErr
    are the line that the time code was found on, for traces.
    """

    _fields_ = [
        ("TimeStampAssociated", UINT),
        ("FrameUnits", c_ubyte),
        ("FrameTens", c_ubyte),
        ("Flag1", c_ubyte),
        ("SecondUnits", c_ubyte),
        ("SecondTens", c_ubyte),
        ("Flag2", c_ubyte),
        ("MinuteUnits", c_ubyte),
        ("MinuteTens", c_ubyte),
        ("Flag3", c_ubyte),
        ("HourUnits", c_ubyte),
        ("HourTens", c_ubyte),
        ("Flag4", c_ubyte),
        ("VitcCrc", c_ubyte),
        ("VitcCrcErr", c_ubyte),
        ("BinaryGroups", vitc_bg_t),
    ]


class caption_service_t(Record):
    """One service of a caption service descriptor, ATSC A/65 clause 6.9.2.

    language holds the three characters of ISO 639.2/B. digital_cc is 1 for a DTVCC service, whose
    caption_service_number is 1 to 63, and 0 for CEA-608 captions, of the first or second field as
    line21_field says (0 or 1).
    """

    _fields_ = [
        ("language", array(c_ubyte, 3)),
        ("digital_cc", c_ubyte),
        ("line21_field", c_ubyte),
        ("caption_service_number", c_ubyte),
        ("easy_reader", c_ubyte),
        ("wide_aspect_ratio", c_ubyte),
    ]


class csd_t(Record):
    """Caption service descriptor: the service information of a caption distribution packet, SMPTE ST 334-2.

    The first number_of_services entries are in use, at most 16.
    """

    _fields_ = [
        ("number_of_services", c_ubyte),
        ("services", array(caption_service_t, VANC_CAPTION_SERVICES)),
    ]


class klv_t(Record):
    """KLV metadata in ancillary data, SMPTE RP 214; the first `length` bytes of data are in use."""

    _fields_ = [
        ("message_id", c_ubyte),
        ("packet_sequence_number", c_ushort),
        ("length", c_ubyte),
        ("data", array(c_ubyte, VANC_USER_DATA_WORDS)),
    ]


class scte104_t(Record):
    """An SCTE 104 message, or part of one, in ancillary data, SMPTE ST 2010.

    The first `length` bytes of data are in use.
    """

    _fields_ = [
        ("payload_descriptor", c_ubyte),
        ("length", c_ubyte),
        ("data", array(c_ubyte, VANC_USER_DATA_WORDS)),
    ]


class vanc_t(Record):
    """One ancillary data packet: suid, a Suid, tells which member of vanc_data is filled.

    channel, uiTimestamp and nTimeStamp64 are the caller's. The SEI builders look at caption and afd_data.
    """

    class VancData(Alternatives):
        """What the packet holds."""

        _fields_ = [
            ("caption", caption_t),
            ("csd_data", csd_t),
            ("afd_data", afd_t),
            ("timecode", vitc_t),
            ("klv_data", klv_t),
            ("scte104_data", scte104_t),
        ]

    _fields_ = [
        ("channel", c_int),
        ("uiTimestamp", UINT),
        ("nTimeStamp64", UINT64),
        ("suid", UINT),
        ("vanc_data", VancData),
    ]
