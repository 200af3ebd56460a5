#include "h265d/parsing/derived_ref_pic_sets.h"

#include <algorithm>

namespace {

// POC differences come from the stream, or from a record that holds anything: 32 bits that wrap.
int32_t Sum(int32_t a, UINT64 b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

int32_t Difference(int32_t a, UINT64 b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

}  // namespace

const DerivedRefPicSet *ReferenceSet(const DerivedRefPicSets &sets, unsigned long StRpsIndex,
                                     UINT64 delta_idx_minus1) {
    const int32_t RefRpsIdx = Difference(static_cast<int32_t>(StRpsIndex), delta_idx_minus1 + 1);
    if (RefRpsIdx < 0 || static_cast<unsigned long>(RefRpsIdx) >= std::min(sets.count, StRpsIndex))
        return nullptr;
    return &sets.sets[RefRpsIdx];
}

void DeriveExplicitSet(const short_term_ref_pic_set_t &strps, DerivedRefPicSet *set) {
    set->NumNegativePics = static_cast<int>(std::min<UINT64>(strps.num_negative_pics, H265_RPS_PICTURES));
    set->NumPositivePics = static_cast<int>(std::min<UINT64>(strps.num_positive_pics, H265_RPS_PICTURES));
    int32_t poc = 0;
    for (int i = 0; i < set->NumNegativePics; i++)
        set->DeltaPocS0[i] = poc = Difference(poc, strps.delta_poc_s0_minus1[i] + 1);
    poc = 0;
    for (int i = 0; i < set->NumPositivePics; i++)
        set->DeltaPocS1[i] = poc = Sum(poc, strps.delta_poc_s1_minus1[i] + 1);
}

void DerivePredictedSet(const short_term_ref_pic_set_t &strps, const DerivedRefPicSet &ref,
                        DerivedRefPicSet *set) {
    const UINT64 magnitude = strps.abs_delta_rps_minus1 + 1;
    const int32_t deltaRps = strps.delta_rps_sign ? Difference(0, magnitude) : Sum(0, magnitude);
    const auto use_delta = [&strps](int j) {
        return strps.used_by_current_pic_flag[j] || strps.used_delta_flag[j];
    };

    int i = 0;
    for (int j = ref.NumPositivePics - 1; j >= 0; j--) {
        const int32_t dPoc = Sum(ref.DeltaPocS1[j], static_cast<uint32_t>(deltaRps));
        if (dPoc < 0 && use_delta(ref.NumNegativePics + j))
            set->DeltaPocS0[i++] = dPoc;
    }
    if (deltaRps < 0 && use_delta(NumDeltaPocs(ref)))
        set->DeltaPocS0[i++] = deltaRps;
    for (int j = 0; j < ref.NumNegativePics; j++) {
        const int32_t dPoc = Sum(ref.DeltaPocS0[j], static_cast<uint32_t>(deltaRps));
        if (dPoc < 0 && use_delta(j))
            set->DeltaPocS0[i++] = dPoc;
    }
    set->NumNegativePics = i;

    i = 0;
    for (int j = ref.NumNegativePics - 1; j >= 0; j--) {
        const int32_t dPoc = Sum(ref.DeltaPocS0[j], static_cast<uint32_t>(deltaRps));
        if (dPoc > 0 && use_delta(j))
            set->DeltaPocS1[i++] = dPoc;
    }
    if (deltaRps > 0 && use_delta(NumDeltaPocs(ref)))
        set->DeltaPocS1[i++] = deltaRps;
    for (int j = 0; j < ref.NumPositivePics; j++) {
        const int32_t dPoc = Sum(ref.DeltaPocS1[j], static_cast<uint32_t>(deltaRps));
        if (dPoc > 0 && use_delta(ref.NumNegativePics + j))
            set->DeltaPocS1[i++] = dPoc;
    }
    set->NumPositivePics = i;
}
