#include "h265d/parsing/scaling_list.h"

#include "common/read.h"

int _parse_scaling_list(bitbuffer_t *sps_nalu_bb, scaling_list_data_t *sl) {
    // What the delta, the DC coefficient and every coefficient of a list are reported as.
    static constexpr char kUnreadable[] = "cannot parse scaling_list_pred_matrix_id_delta[%d][%d].\n";

    if (sps_nalu_bb == nullptr || sl == nullptr)
        return -1;
    TRACE(kFunction, "Called.\n");

    BitReader bb(sps_nalu_bb);
    for (int sizeId = 0; sizeId < H265_SCALING_LIST_SIZES; sizeId++) {
        for (int matrixId = 0; matrixId < H265_SCALING_LIST_MATRICES;
             matrixId += ScalingListMatrixStep(sizeId)) {
            READ_FLAG(bb, sl, scaling_list_pred_mode_flag, sizeId, matrixId);
            if (!sl->scaling_list_pred_mode_flag[sizeId][matrixId]) {
                READ_UE(bb, sl, scaling_list_pred_matrix_id_delta, sizeId, matrixId);
                continue;
            }
            INT64 nextCoef = 8;
            if (sizeId > 1) {
                READ_SE_AS(bb, sl->scaling_list_dc_coef_minus8[sizeId - 2][matrixId], kUnreadable, sizeId,
                           matrixId);
                nextCoef = sl->scaling_list_dc_coef_minus8[sizeId - 2][matrixId] + 8;
            }
            for (int i = 0; i < ScalingListCoefNum(sizeId); i++) {
                READ_SE_AS(bb, sl->scaling_list_delta_coef, kUnreadable, sizeId, matrixId);
                nextCoef = NextScalingListCoef(nextCoef, sl->scaling_list_delta_coef);
                sl->ScalingList[sizeId][matrixId][i] = nextCoef;
            }
        }
    }
    TRACE(kFunction, "Done.\n");
    return 0;
}
