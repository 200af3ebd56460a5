/**
 * @struct SEI_time_code_info_t
 * What H265Lib_format_sei_time_code_nal makes a time code message from, besides the
 * VITC record.
 */
#ifndef H265_TIME_CODE_INFO_H
#define H265_TIME_CODE_INFO_H

#include "../xtypes.h"
#include "sps.h"

/** @addtogroup sei_building */ /** @{ */

/** A time of day. */
typedef struct SEI_COMMERCIALTC {
    unsigned char n_frames; /**< from 0 on */
    unsigned char seconds;  /**< 0 to 59 */
    unsigned char minutes;  /**< 0 to 59 */
    unsigned char hours;    /**< 0 to 23 */
} SEI_COMMERCIALTC;

/** How a time of day that comes from a system clock is counted at 29.97 and 59.94 Hz. */
typedef enum enSystemTCCountingMode {
    /** SMPTE ST 12-1 drop-frame */
    SYSTEM_TC_SMPTE12M_1_COUNT_MODE = 0,
    /** converted from UTC: unspecified numbers of counts are dropped */
    SYSTEM_TC_UTC_CONVERSION_COUNT_MODE = 1
} enSystemTCCountingMode;

/** Where a time of day comes from. */
typedef enum enTimeSource {
    UNKNOWN_TIME_CODE = 0,       /**< not known: a system clock */
    NTP_SERVER = 1,              /**< a system clock that a time server sets */
    EMBEDDED_TIME_CODE = 2,      /**< VITC or LTC of the video input */
    MISB605_DOUBLE_TIME_CODE = 3 /**< MISB ST 0605; counted like a system clock */
} enTimeSource;

typedef struct SEI_time_code_info_t {
    SEI_COMMERCIALTC WallTime;     /**< in; overwritten from a VITC record when one is given */
    int FrameRate;                 /**< frames per second times 1000: 29970 for 29.97 Hz */
    int enSystemTCCountingMode;    /**< an enSystemTCCountingMode */
    unsigned char scan_type;       /**< traced only */
    unsigned char BottomFieldFlag; /**< traced only */
    int enTimeSource;              /**< an enTimeSource */
    /** The active SPS: field_seq_flag, frame_field_info_present_flag, vui_num_units_in_tick of its VUI. */
    const sps_h265_t *pParsedSps;
} SEI_time_code_info_t;

/** @} */

#endif
