// The syntax structures that parameter sets nest, with drawn values.

#ifndef FUZZ_SYNTAX_SHARED_STRUCTURES_H
#define FUZZ_SYNTAX_SHARED_STRUCTURES_H

#include "syntax/syntax_writer.h"

namespace fuzz {

void WriteProfileTierLevel(SyntaxWriter *w, unsigned int maxNumSubLayersMinus1);

void WriteScalingListData(SyntaxWriter *w);

// num_short_term_ref_pic_sets and the sets: legal ones, predicted from one another.
void WriteShortTermRefPicSets(SyntaxWriter *w);

// `common`: commonInfPresentFlag; without it the common part of `hrd` holds.
struct HrdCommon {
    bool nal = false;
    bool vcl = false;
    bool sub_pic = false;
};
void WriteHrd(SyntaxWriter *w, bool common, unsigned int maxNumSubLayersMinus1, HrdCommon *hrd);

void WriteVui(SyntaxWriter *w, unsigned int sps_max_sub_layers_minus1);

}  // namespace fuzz

#endif
