/**
 * @struct short_term_ref_pic_set_t
 * st_ref_pic_set( stRpsIdx ), ITU-T H.265 clause 7.3.7.
 *
 * The syntax as coded: a set that is predicted from another (inter_ref_pic_set_prediction_flag) has its
 * prediction fields filled, and neither its counts nor its deltas.
 */
#ifndef H265_SHORT_TERM_REF_PIC_SET_H
#define H265_SHORT_TERM_REF_PIC_SET_H

#include "../xtypes.h"

/** @addtogroup parsing */ /** @{ */

#define H265_RPS_PICTURES 16 /**< pictures of one set */

typedef struct short_term_ref_pic_set_t {
    int inter_ref_pic_set_prediction_flag; /**< u(1), from the second set of an SPS on */

    /* A predicted set. */
    UINT64 delta_idx_minus1;                         /**< ue(v), never coded in an SPS: keep it 0 */
    int delta_rps_sign;                              /**< u(1) */
    UINT64 abs_delta_rps_minus1;                     /**< ue(v) */
    int used_by_current_pic_flag[H265_RPS_PICTURES]; /**< u(1) */
    int used_delta_flag[H265_RPS_PICTURES];          /**< u(1), where the flag above is 0 */

    /* An explicit set. */
    UINT64 num_negative_pics;                           /**< ue(v), at most 16 */
    UINT64 num_positive_pics;                           /**< ue(v), at most 16 */
    UINT64 delta_poc_s0_minus1[H265_RPS_PICTURES];      /**< ue(v) */
    int used_by_current_pic_s0_flag[H265_RPS_PICTURES]; /**< u(1) */
    UINT64 delta_poc_s1_minus1[H265_RPS_PICTURES];      /**< ue(v) */
    int used_by_current_pic_s1_flag[H265_RPS_PICTURES]; /**< u(1) */
} short_term_ref_pic_set_t;

/** @} */

#endif
