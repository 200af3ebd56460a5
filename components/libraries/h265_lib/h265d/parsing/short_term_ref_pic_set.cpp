#include "h265d/parsing/short_term_ref_pic_set.h"

#include "common/read.h"
#include "h265/sps.h"

namespace {

// The pictures of one set as clause 7.4.8 derives them: POC differences, nearest picture first.
struct DerivedSet {
    int NumNegativePics;
    int NumPositivePics;
    int32_t DeltaPocS0[H265_RPS_PICTURES];
    int32_t DeltaPocS1[H265_RPS_PICTURES];

    int NumDeltaPocs() const { return NumNegativePics + NumPositivePics; }
};

// The sets read so far by the SPS parse that runs on this thread.
struct DerivedSets {
    unsigned long count;
    DerivedSet sets[H265_SPS_SHORT_TERM_REF_PIC_SETS];
};

thread_local DerivedSets derived_sets;

// POC differences come from the stream: sums wrap instead of overflowing.
int32_t Sum(int32_t a, INT64 b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

// Equations 7-61 and 7-62: the pictures of the reference set, moved by deltaRps, that the flags keep, and
// the picture at deltaRps itself.
void DerivePredictedSet(const short_term_ref_pic_set_t &strps, const DerivedSet &ref, DerivedSet *set) {
    const INT64 magnitude = static_cast<INT64>(strps.abs_delta_rps_minus1) + 1;
    const int32_t deltaRps = Sum(0, strps.delta_rps_sign ? -magnitude : magnitude);
    const auto use_delta = [&strps](int j) {
        return strps.used_by_current_pic_flag[j] || strps.used_delta_flag[j];
    };

    int i = 0;
    for (int j = ref.NumPositivePics - 1; j >= 0; j--) {
        const int32_t dPoc = Sum(ref.DeltaPocS1[j], deltaRps);
        if (dPoc < 0 && use_delta(ref.NumNegativePics + j))
            set->DeltaPocS0[i++] = dPoc;
    }
    if (deltaRps < 0 && use_delta(ref.NumDeltaPocs()))
        set->DeltaPocS0[i++] = deltaRps;
    for (int j = 0; j < ref.NumNegativePics; j++) {
        const int32_t dPoc = Sum(ref.DeltaPocS0[j], deltaRps);
        if (dPoc < 0 && use_delta(j))
            set->DeltaPocS0[i++] = dPoc;
    }
    set->NumNegativePics = i;

    i = 0;
    for (int j = ref.NumNegativePics - 1; j >= 0; j--) {
        const int32_t dPoc = Sum(ref.DeltaPocS0[j], deltaRps);
        if (dPoc > 0 && use_delta(j))
            set->DeltaPocS1[i++] = dPoc;
    }
    if (deltaRps > 0 && use_delta(ref.NumDeltaPocs()))
        set->DeltaPocS1[i++] = deltaRps;
    for (int j = 0; j < ref.NumPositivePics; j++) {
        const int32_t dPoc = Sum(ref.DeltaPocS1[j], deltaRps);
        if (dPoc > 0 && use_delta(ref.NumNegativePics + j))
            set->DeltaPocS1[i++] = dPoc;
    }
    set->NumPositivePics = i;
}

// The set that a predicted one refers to; null when it lies outside the sets read so far.
const DerivedSet *ReferenceSet(unsigned long StRpsIndex, UINT64 delta_idx_minus1) {
    const int32_t RefRpsIdx =
        Sum(static_cast<int32_t>(StRpsIndex), -(static_cast<INT64>(delta_idx_minus1) + 1));
    if (RefRpsIdx < 0 || static_cast<unsigned long>(RefRpsIdx) >= derived_sets.count)
        return nullptr;
    return &derived_sets.sets[RefRpsIdx];
}

}  // namespace

int _parse_short_term_ref_pic_set(bitbuffer_t *sps_nalu_bb, unsigned long NumShortTermRefPicSets,
                                  unsigned long StRpsIndex, short_term_ref_pic_set_t *strps) {
    bitbuffer_t *const bb = sps_nalu_bb;
    if (bb == nullptr || strps == nullptr || StRpsIndex >= H265_SPS_SHORT_TERM_REF_PIC_SETS)
        return -1;
    TRACE(kFunction, "Called.\n");
    TRACE(kInformation, "--- short_term_ref_pic_set[%d] ---\n", static_cast<int>(StRpsIndex));

    // for index 0 the flag is not coded: the record's value counts
    if (StRpsIndex != 0)
        READ_FLAG(bb, strps, inter_ref_pic_set_prediction_flag);
    else
        derived_sets.count = 0;
    DerivedSet *const set = &derived_sets.sets[StRpsIndex];
    if (strps->inter_ref_pic_set_prediction_flag) {
        // coded in slice headers only; in an SPS the record's value counts
        if (StRpsIndex == NumShortTermRefPicSets)
            READ_UE(bb, strps, delta_idx_minus1);
        READ_FLAG(bb, strps, delta_rps_sign);
        READ_UE(bb, strps, abs_delta_rps_minus1);

        const DerivedSet *const ref = ReferenceSet(StRpsIndex, strps->delta_idx_minus1);
        const int last = ref != nullptr ? ref->NumDeltaPocs() : 0;
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
              bb->bit_offset);
        READ_UE_MAX(bb, static_cast<uint32_t>(H265_RPS_PICTURES - num_negative_pics), strps,
                    num_positive_pics);
        const int num_positive_pics = static_cast<int>(strps->num_positive_pics);

        int32_t poc = 0;
        for (int i = 0; i < num_negative_pics; i++) {
            READ_UE(bb, strps, delta_poc_s0_minus1, i);
            READ_FLAG(bb, strps, used_by_current_pic_s0_flag, i);
            set->DeltaPocS0[i] = poc = Sum(poc, -(static_cast<INT64>(strps->delta_poc_s0_minus1[i]) + 1));
        }
        poc = 0;
        for (int i = 0; i < num_positive_pics; i++) {
            // reported under the name of its s0 sibling
            READ_UE_AS(bb, strps->delta_poc_s1_minus1[i], "cannot parse delta_poc_s0_minus1[%d].\n", i);
            READ_FLAG(bb, strps, used_by_current_pic_s1_flag, i);
            set->DeltaPocS1[i] = poc = Sum(poc, static_cast<INT64>(strps->delta_poc_s1_minus1[i]) + 1);
        }
        set->NumNegativePics = num_negative_pics;
        set->NumPositivePics = num_positive_pics;
    }
    derived_sets.count = StRpsIndex + 1;
    TRACE(kFunction, "Done.\n");
    return 0;
}
