// What predicted reference picture sets are derived from, ITU-T H.265 clause 7.4.8. The records keep the
// syntax as coded: the counts of a predicted set are found here alone.

#ifndef H265D_PARSING_DERIVED_REF_PIC_SETS_H
#define H265D_PARSING_DERIVED_REF_PIC_SETS_H

#include "h265/sps.h"

// The pictures of one set: POC differences, nearest picture first.
struct DerivedRefPicSet {
    int NumNegativePics;
    int NumPositivePics;
    int32_t DeltaPocS0[H265_RPS_PICTURES];
    int32_t DeltaPocS1[H265_RPS_PICTURES];
};

// The sets of an SPS so far, in order.
struct DerivedRefPicSets {
    unsigned long count;
    DerivedRefPicSet sets[H265_SPS_SHORT_TERM_REF_PIC_SETS];
};

inline int NumDeltaPocs(const DerivedRefPicSet &set) {
    return set.NumNegativePics + set.NumPositivePics;
}

// The set that a predicted one refers to; null when it is none of the sets so far that stand in front of it.
const DerivedRefPicSet *ReferenceSet(const DerivedRefPicSets &sets, unsigned long StRpsIndex,
                                     UINT64 delta_idx_minus1);

// The pictures of an explicit set. Counts beyond what a record holds are cut.
void DeriveExplicitSet(const short_term_ref_pic_set_t &strps, DerivedRefPicSet *set);

// Equations 7-61 and 7-62: the pictures of the reference set, moved by deltaRps, that the flags keep, and the
// picture at deltaRps itself. The reference set has less than H265_RPS_PICTURES pictures.
void DerivePredictedSet(const short_term_ref_pic_set_t &strps, const DerivedRefPicSet &ref,
                        DerivedRefPicSet *set);

#endif
