#include "h265d/display/show.h"
#include "h265d/display/sub_structures.h"

namespace {

constexpr int kLevel = kInformation;

}  // namespace

int _display_short_term_ref_pic_set(const short_term_ref_pic_set_t *strps, UINT64 StRpsIndex,
                                    UINT64 NumShortTermRefPicSets, DerivedRefPicSets *derived_sets) {
    ASSERT_ARGUMENT(strps != NULL);
    ASSERT_ARGUMENT(StRpsIndex <= NumShortTermRefPicSets);
    if (strps == nullptr || derived_sets == nullptr || StRpsIndex >= H265_SPS_SHORT_TERM_REF_PIC_SETS)
        return 0;
    if (StRpsIndex == 0)
        derived_sets->count = 0;
    DerivedRefPicSet *const set = &derived_sets->sets[StRpsIndex];

    TRACE(kFunction, "Called.\n");
    SHOW("--- short_term_ref_pic_set[%d] ---\n", AS_D(StRpsIndex));
    SHOW_FLAG(strps, inter_ref_pic_set_prediction_flag);
    if (strps->inter_ref_pic_set_prediction_flag) {
        if (StRpsIndex == NumShortTermRefPicSets)
            SHOW_U(strps, delta_idx_minus1);
        SHOW_FLAG(strps, delta_rps_sign);
        SHOW_U(strps, abs_delta_rps_minus1);
        const DerivedRefPicSet *const ref = ReferenceSet(*derived_sets, StRpsIndex, strps->delta_idx_minus1);
        const int flags =
            ref != nullptr ? Shown(static_cast<UINT64>(NumDeltaPocs(*ref)) + 1, H265_RPS_PICTURES) : 0;
        for (int j = 0; j < flags; j++) {
            SHOW_FLAG(strps, used_by_current_pic_flag, j);
            if (!strps->used_by_current_pic_flag[j])
                SHOW_FLAG(strps, used_delta_flag, j);
        }
        if (ref != nullptr && NumDeltaPocs(*ref) < H265_RPS_PICTURES)
            DerivePredictedSet(*strps, *ref, set);
        else
            *set = {};
    } else {
        SHOW_U(strps, num_negative_pics);
        SHOW_U(strps, num_positive_pics);
        for (int i = 0; i < Shown(strps->num_negative_pics, H265_RPS_PICTURES); i++) {
            SHOW_U(strps, delta_poc_s0_minus1, i);
            SHOW_FLAG(strps, used_by_current_pic_s0_flag, i);
        }
        for (int i = 0; i < Shown(strps->num_positive_pics, H265_RPS_PICTURES); i++) {
            SHOW_U(strps, delta_poc_s1_minus1, i);
            SHOW_FLAG(strps, used_by_current_pic_s1_flag, i);
        }
        DeriveExplicitSet(*strps, set);
    }
    derived_sets->count = StRpsIndex + 1;
    TRACE(kFunction, "Done.\n");
    return 0;
}
