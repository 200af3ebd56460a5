#include "json/put.h"

namespace h265tool {

// scaling_list_data( ) of an SPS, clause 7.3.4.
Json ToJson(const scaling_list_data_t &scaling_list) {
    Json json;
    for (int sizeId = 0; sizeId < H265_SCALING_LIST_SIZES; sizeId++) {
        for (int matrixId = 0; matrixId < H265_SCALING_LIST_MATRICES;
             matrixId += ScalingListMatrixStep(sizeId)) {
            PUT(json, scaling_list, scaling_list_pred_mode_flag, sizeId, matrixId);
            if (!scaling_list.scaling_list_pred_mode_flag[sizeId][matrixId]) {
                PUT(json, scaling_list, scaling_list_pred_matrix_id_delta, sizeId, matrixId);
                continue;
            }
            if (sizeId > 1)
                PUT(json, scaling_list, scaling_list_dc_coef_minus8, sizeId - 2, matrixId);
            PUT(json, scaling_list, scaling_list_delta_coef);  // the last of all
            for (int i = 0; i < ScalingListCoefNum(sizeId); i++)
                PUT(json, scaling_list, ScalingList, sizeId, matrixId, i);
        }
    }
    return json;
}

}  // namespace h265tool
