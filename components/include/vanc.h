/**
 * @file
 * vanc.h - ancillary data taken from the vertical ancillary space (SMPTE ST 291) of the video input, as
 * callers hand it to the SEI builders.
 */
#ifndef VANC_H
#define VANC_H

#include "xtypes.h"

/** @addtogroup ancillary_data */ /** @{ */

/** The kinds of SEI messages and of ancillary data: penSUID of H265Lib_DetermineSEIType, vanc_t.suid. */
enum {
    SUID_UNKNOWN = 0,        /**< none of the others */
    SUID_CLOSED_CAPTION = 2, /**< ATSC A/53 cc_data: user identifier "GA94", user data type code 3 */
    SUID_AFD = 3,            /**< ETSI TS 101 154 / ATSC A/53 active format: user identifier "DTG1" */
    SUID_TIME_CODE = 4,      /**< time code SEI message, payload type 136 */
    SUID_PICTURE_TIMING = 7  /**< picture timing SEI message, payload type 1 */
};

/** One caption construct, CTA-708 cc_data_pkt. */
typedef struct caption_t {
    unsigned char flag; /**< bit 0: cc_valid */
    /** Bits 0 and 1: cc_type; 0 and 1 CEA-608 field 1 and 2, 2 and 3 DTVCC data and start. */
    unsigned char type;
    unsigned char data1; /**< cc_data_1 */
    unsigned char data2; /**< cc_data_2 */
} caption_t;

/** Active format description, ATSC A/53 clause 6.2.4. */
typedef struct afd_t {
    int active_format_flag;      /**< bit 0: active_format is there */
    unsigned char active_format; /**< 4 bits */
} afd_t;

/** The binary groups (user bits) of a time code, 4 bits each. */
typedef struct vitc_bg_t {
    unsigned char BinaryGroup1; /**< first group */
    unsigned char BinaryGroup2; /**< second group */
    unsigned char BinaryGroup3; /**< third group */
    unsigned char BinaryGroup4; /**< fourth group */
    unsigned char BinaryGroup5; /**< fifth group */
    unsigned char BinaryGroup6; /**< sixth group */
    unsigned char BinaryGroup7; /**< seventh group */
    unsigned char BinaryGroup8; /**< eighth group */
} vitc_bg_t;

/** A decoded VITC or LTC time code, SMPTE ST 12-1. Digits are numbers 0 to 9, not characters. */
typedef struct vitc_t {
    UINT TimeStampAssociated;  /**< the caller's; not used by the library */
    unsigned char FrameUnits;  /**< frames, last digit */
    unsigned char FrameTens;   /**< frames, first digit */
    unsigned char Flag1;       /**< bit 0: drop-frame */
    unsigned char SecondUnits; /**< seconds, last digit */
    unsigned char SecondTens;  /**< seconds, first digit */
    unsigned char Flag2;       /**< not used by the library */
    unsigned char MinuteUnits; /**< minutes, last digit */
    unsigned char MinuteTens;  /**< minutes, first digit */
    unsigned char Flag3;       /**< not used by the library */
    unsigned char HourUnits;   /**< hours, last digit */
    unsigned char HourTens;    /**< hours, first digit */
    unsigned char Flag4;       /**< not used by the library */
    unsigned char VitcCrc;     /**< with VitcCrcErr: the line the time code was found on, for traces */
    unsigned char VitcCrcErr;  /**< with VitcCrc */
    vitc_bg_t BinaryGroups;    /**< not used by the library */
} vitc_t;

/** One service of a caption service descriptor, ATSC A/65 clause 6.9.2. */
typedef struct caption_service_t {
    unsigned char language[3];            /**< ISO 639.2/B, characters */
    unsigned char digital_cc;             /**< 1: DTVCC service, 0: CEA-608 captions */
    unsigned char line21_field;           /**< of CEA-608 captions: 0 first, 1 second field */
    unsigned char caption_service_number; /**< of a DTVCC service: 1 to 63 */
    unsigned char easy_reader;            /**< 0 or 1 */
    unsigned char wide_aspect_ratio;      /**< 0 or 1 */
} caption_service_t;

#define VANC_CAPTION_SERVICES 16 /**< entries of csd_t.services */

/** Caption service descriptor: the service information of a caption distribution packet, SMPTE ST 334-2. */
typedef struct csd_t {
    unsigned char number_of_services;                  /**< entries of `services` in use, at most 16 */
    caption_service_t services[VANC_CAPTION_SERVICES]; /**< the services */
} csd_t;

#define VANC_USER_DATA_WORDS 255 /**< user data words of an ancillary data packet, ST 291 */

/** KLV metadata in ancillary data, SMPTE RP 214. */
typedef struct klv_t {
    unsigned char message_id;                 /**< tells packets of different KLV messages apart */
    unsigned short packet_sequence_number;    /**< from 1 on, within a message */
    unsigned char length;                     /**< bytes of `data` in use */
    unsigned char data[VANC_USER_DATA_WORDS]; /**< the words' low eight bits */
} klv_t;

/** An SCTE 104 message, or part of one, in ancillary data, SMPTE ST 2010. */
typedef struct scte104_t {
    unsigned char payload_descriptor;         /**< version, continued, following and duplicate flags */
    unsigned char length;                     /**< bytes of `data` in use */
    unsigned char data[VANC_USER_DATA_WORDS]; /**< the words' low eight bits */
} scte104_t;

/** One ancillary data packet. */
typedef struct vanc_t {
    int channel;         /**< the caller's number of the input; not used by the library */
    UINT uiTimestamp;    /**< the caller's; not used by the library */
    UINT64 nTimeStamp64; /**< the caller's; not used by the library */
    UINT suid;           /**< what it is, a SUID_ value: it tells which member of the union is filled */
    /** The data itself. */
    union {
        caption_t caption;      /**< SUID_CLOSED_CAPTION */
        csd_t csd_data;         /**< caption service descriptor; not used by the library */
        afd_t afd_data;         /**< SUID_AFD */
        vitc_t timecode;        /**< SUID_TIME_CODE; the time code builder takes a vitc_t of its own */
        klv_t klv_data;         /**< KLV metadata; not used by the library */
        scte104_t scte104_data; /**< SCTE 104; not used by the library */
    } vanc_data;
} vanc_t;

/** @} */

#endif
