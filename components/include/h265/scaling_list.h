/**
 * @struct scaling_list_data_t
 * scaling_list_data( ) of an SPS, ITU-T H.265 clause 7.3.4.
 *
 * The syntax as coded: a predicted list is not filled in. Index [sizeId][matrixId]; sizeId 3 has the
 * matrices 0 and 3 only.
 */
#ifndef H265_SCALING_LIST_H
#define H265_SCALING_LIST_H

#include "../xtypes.h"

/** @addtogroup parsing */ /** @{ */

#define H265_SCALING_LIST_SIZES 4         /**< values of sizeId */
#define H265_SCALING_LIST_MATRICES 6      /**< values of matrixId */
#define H265_SCALING_LIST_COEFFICIENTS 64 /**< of the largest lists */

typedef struct scaling_list_data_t {
    int scaling_list_pred_mode_flag[H265_SCALING_LIST_SIZES][H265_SCALING_LIST_MATRICES]; /**< u(1) */

    /** ue(v), where the flag is 0 */
    UINT64 scaling_list_pred_matrix_id_delta[H265_SCALING_LIST_SIZES][H265_SCALING_LIST_MATRICES];

    /** se(v), where the flag is 1: index [sizeId - 2][matrixId] */
    INT64 scaling_list_dc_coef_minus8[2][H265_SCALING_LIST_MATRICES];

    INT64 scaling_list_delta_coef; /**< se(v): the last one read */

    /** Where the flag is 1: the coefficients, in coded order; 16 of them for sizeId 0, else 64. */
    INT64 ScalingList[H265_SCALING_LIST_SIZES][H265_SCALING_LIST_MATRICES][H265_SCALING_LIST_COEFFICIENTS];
} scaling_list_data_t;

/** @} */

#endif
