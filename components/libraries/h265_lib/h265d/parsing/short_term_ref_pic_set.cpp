#include "h265d/parsing/short_term_ref_pic_set.h"

#include "common/read.h"

int _parse_short_term_ref_pic_set(bitbuffer_t *sps_nalu_bb, unsigned long NumShortTermRefPicSets,
                                  unsigned long StRpsIndex, short_term_ref_pic_set_t *strps,
                                  DerivedRefPicSets *derived_sets) {
    if (sps_nalu_bb == nullptr || strps == nullptr || derived_sets == nullptr ||
        StRpsIndex >= H265_SPS_SHORT_TERM_REF_PIC_SETS)
        return -1;
    TRACE(kFunction, "Called.\n");
    TRACE(kInformation, "--- short_term_ref_pic_set[%d] ---\n", static_cast<int>(StRpsIndex));

    BitReader bb(sps_nalu_bb);
    // for index 0 the flag is not coded: the record's value counts
    if (StRpsIndex != 0)
        READ_FLAG(bb, strps, inter_ref_pic_set_prediction_flag);
    else
        derived_sets->count = 0;
    DerivedRefPicSet *const set = &derived_sets->sets[StRpsIndex];
    if (strps->inter_ref_pic_set_prediction_flag) {
        // coded in slice headers only; in an SPS the record's value counts
        if (StRpsIndex == NumShortTermRefPicSets)
            READ_UE(bb, strps, delta_idx_minus1);
        READ_FLAG(bb, strps, delta_rps_sign);
        READ_UE(bb, strps, abs_delta_rps_minus1);

        const DerivedRefPicSet *const ref = ReferenceSet(*derived_sets, StRpsIndex, strps->delta_idx_minus1);
        const int last = ref != nullptr ? NumDeltaPocs(*ref) : 0;
        for (int j = 0; j <= last; j++) {
            if (ref == nullptr || j >= H265_RPS_PICTURES) {
                ReportUnreadable(TRACE_SITE, "used_by_current_pic_flag", j);
                return -1;
            }
            READ_FLAG(bb, strps, used_by_current_pic_flag, j);
            if (!strps->used_by_current_pic_flag[j])
                READ_FLAG(bb, strps, used_delta_flag, j);
        }
        DerivePredictedSet(*strps, *ref, set);
    } else {
        READ_UE_MAX(bb, H265_RPS_PICTURES, strps, num_negative_pics);
        const int num_negative_pics = static_cast<int>(strps->num_negative_pics);
        TRACE(kFunction, "After num_negative_pics:%d, CurrentBitOffset:%d.\n", num_negative_pics,
              bb.offset());
        READ_UE_MAX(bb, H265_RPS_PICTURES, strps, num_positive_pics);
        const int num_positive_pics = static_cast<int>(strps->num_positive_pics);

        for (int i = 0; i < num_negative_pics; i++) {
            READ_UE(bb, strps, delta_poc_s0_minus1, i);
            READ_FLAG(bb, strps, used_by_current_pic_s0_flag, i);
        }
        for (int i = 0; i < num_positive_pics; i++) {
            // reported under the name of its s0 sibling
            READ_UE_AS(bb, strps->delta_poc_s1_minus1[i], "cannot parse delta_poc_s0_minus1[%d].\n", i);
            READ_FLAG(bb, strps, used_by_current_pic_s1_flag, i);
        }
        DeriveExplicitSet(*strps, set);
    }
    derived_sets->count = StRpsIndex + 1;
    TRACE(kFunction, "Done.\n");
    return 0;
}
