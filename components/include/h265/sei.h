/*
 * The records of SEI messages, ITU-T H.265 clause 7.3.5 and Annex D.
 *
 * The parsers never clear a record: a field whose element the message does not carry keeps the value that
 * the caller's record held, except where its comment says otherwise.
 */
#ifndef H265_SEI_H
#define H265_SEI_H

#include "../vanc.h"
#include "../xtypes.h"

/** @addtogroup sei_reading */ /** @{ */

/** The header of one sei_message( ). */
typedef struct SEI_message_t {
    unsigned char payload_type; /**< sums beyond 255 wrap */
    UINT payload_size;          /**< bytes */
    /** Of the payload's first byte, in the data behind the NAL unit header, emulation prevention bytes
     * removed. */
    UINT payload_index;
} SEI_message_t;

#define H265_PIC_TIMING_DECODING_UNITS 510 /**< decoding units kept */

/** pic_timing( ), clause D.2.3. What is present depends on the VUI of the active SPS. */
typedef struct sei_h265_pic_timing_t {
    /* With frame_field_info_present_flag. */
    unsigned char pic_struct;       /**< u(4), Table D.2 */
    unsigned char source_scan_type; /**< u(2): 0 interlaced, 1 progressive, 2 unknown */
    int duplicate_flag;             /**< u(1) */

    /* With CpbDpbDelaysPresentFlag; the lengths are those of the VUI's HRD. */
    UINT64 au_cpb_removal_delay_minus1; /**< u(v) */
    UINT64 pic_dpb_output_delay;        /**< u(v) */
    UINT64 pic_dpb_output_du_delay;     /**< u(v), with sub_pic_hrd_params_present_flag */

    /* With sub_pic_cpb_params_in_pic_timing_sei_flag. */
    UINT64 num_decoding_units_minus1;                    /**< ue(v), as coded: it may exceed what is kept */
    int du_common_cpb_removal_delay_flag;                /**< u(1) */
    UINT64 du_common_cpb_removal_delay_increment_minus1; /**< u(v), with the common flag */
    UINT64 num_nalus_in_du_minus1[H265_PIC_TIMING_DECODING_UNITS]; /**< ue(v) */
    /** u(v), without the flag */
    UINT64 du_cpb_removal_delay_increment_minus1[H265_PIC_TIMING_DECODING_UNITS];
} sei_h265_pic_timing_t;

#define H265_TIME_CODE_CLOCKS 3 /**< clock timestamps of a message: num_clocks_ts has two bits */

/** time_code( ), clause D.2.27. Entry i describes clock timestamp i, for i < num_clocks_ts. */
typedef struct sei_h265_time_code_t {
    unsigned char num_clocks_ts;                             /**< u(2) */
    int clock_timestamp_flag[H265_TIME_CODE_CLOCKS];         /**< u(1); the rest with this flag */
    int units_field_based_flag[H265_TIME_CODE_CLOCKS];       /**< u(1) */
    unsigned char counting_type[H265_TIME_CODE_CLOCKS];      /**< u(5), Table D.9 */
    int full_timestamp_flag[H265_TIME_CODE_CLOCKS];          /**< u(1) */
    int discontinuity_flag[H265_TIME_CODE_CLOCKS];           /**< u(1) */
    int cnt_drop_flag[H265_TIME_CODE_CLOCKS];                /**< u(1), cnt_dropped_flag */
    unsigned short n_frames[H265_TIME_CODE_CLOCKS];          /**< u(9) */
    unsigned char seconds_value[H265_TIME_CODE_CLOCKS];      /**< u(6) */
    unsigned char minutes_value[H265_TIME_CODE_CLOCKS];      /**< u(6) */
    unsigned char hours_value[H265_TIME_CODE_CLOCKS];        /**< u(5) */
    int seconds_flag[H265_TIME_CODE_CLOCKS];                 /**< u(1), or 1 with full_timestamp_flag */
    int minutes_flag[H265_TIME_CODE_CLOCKS];                 /**< u(1), or 1 with full_timestamp_flag */
    int hours_flag[H265_TIME_CODE_CLOCKS];                   /**< u(1), or 1 with full_timestamp_flag */
    unsigned char time_offset_length[H265_TIME_CODE_CLOCKS]; /**< u(5) */
    INT64 time_offset_value[H265_TIME_CODE_CLOCKS];          /**< i(v), with a length above 0 */
} sei_h265_time_code_t;

/** The head of cc_data( ), CTA-708 (ATSC A/53). */
typedef struct SEI_cc_data_t {
    int process_cc_data_flag;  /**< 1 bit */
    unsigned char cc_count;    /**< 5 bits: entries of cc_bytes in use */
    unsigned char marker_bits; /**< 8 bits behind the entries, 0xFF */
} SEI_cc_data_t;

#define H265_SEI_CAPTIONS 32 /**< entries of SEI_cc_t.cc_bytes: cc_count has five bits */

/** Closed captions in registered user data, clause D.2.6. Written as a whole, by a successful parse only. */
typedef struct SEI_cc_t {
    unsigned char itu_t_t35_country_code;   /**< 0xB5: United States */
    unsigned short itu_t_t35_provider_code; /**< 0x0031: ATSC */
    UINT64 user_identifier;                 /**< "GA94" as a big-endian number: 0x47413934 */
    unsigned char user_data_type_code;      /**< 3: cc_data */
    SEI_cc_data_t cc_data;                  /**< how many captions there are */
    caption_t cc_bytes[H265_SEI_CAPTIONS];  /**< the captions */
    SEI_message_t header;                   /**< of the message they were found in */
} SEI_cc_t;

/** Active format description in registered user data. Written as a whole, by a successful parse only. */
typedef struct SEI_afd_t {
    unsigned char itu_t_t35_country_code;   /**< 0xB5: United States */
    unsigned short itu_t_t35_provider_code; /**< 0x0031: ATSC */
    UINT64 user_identifier;                 /**< "DTG1" as a big-endian number: 0x44544731 */
    afd_t afd_data;                         /**< active_format is 0 without active_format_flag */
    SEI_message_t header;                   /**< of the message it was found in */
} SEI_afd_t;

/** @} */

#endif
