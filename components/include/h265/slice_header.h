/**
 * @struct ssh_h265_t
 * The beginning of slice_segment_header( ), ITU-T H.265 clause 7.3.6.1, up to
 * slice_pic_order_cnt_lsb.
 */
#ifndef H265_SLICE_HEADER_H
#define H265_SLICE_HEADER_H

#include "../xtypes.h"

/** @addtogroup parsing */ /** @{ */

/**
 * Fields without a stated default keep the caller's value when they are not read. A dependent slice
 * segment ends behind slice_segment_address: it takes the rest from the segment before it.
 */
typedef struct ssh_h265_t {
    int first_slice_segment_in_pic_flag; /**< u(1) */
    int no_output_of_prior_pics_flag;    /**< u(1), nal_unit_type 16 to 23 */
    UINT64 slice_pic_parameter_set_id;   /**< ue(v) */
    int dependent_slice_segment_flag;    /**< u(1), not for the first segment; 0 when not read */
    UINT64 slice_segment_address;        /**< u(v), not for the first segment: in CTBs, raster scan */
    UINT64 slice_type;                   /**< ue(v): 0 B, 1 P, 2 I */
    int pic_output_flag;                 /**< u(1); 1 when not read */
    unsigned char colour_plane_id;       /**< u(2), with separate_colour_plane_flag */
    UINT64 slice_pic_order_cnt_lsb;      /**< u(v); 0 for IDR pictures */
} ssh_h265_t;

/** @} */

#endif
