// Plain instances of the structures that parameter sets nest, for the tests of those that nest them.

#ifndef TESTS_SUPPORT_NESTED_SYNTAX_H
#define TESTS_SUPPORT_NESTED_SYNTAX_H

#include "h265.h"
#include "support/syntax.h"

namespace test {

// profile_tier_level( 1, maxNumSubLayersMinus1 ), reported as such: profile 1, sub-layers with neither
// profile nor level.
void AddProfileTierLevel(Syntax *syntax, profile_tier_level_t *ptl, int maxNumSubLayersMinus1);

// hrd_parameters( ) into `hrd`, or nowhere when it is null: with a common part or without, with a NAL HRD of
// one CPB or without (a common part says that there is one; without it the record does). The sub-layers have
// a fixed picture rate; the record's low_delay_hrd_flag must be 0.
void AddHrd(Syntax *syntax, hrd_h265_t *hrd, bool common, bool cpb, int maxNumSubLayersMinus1);

// vui_parameters( ), reported as such: timing and NAL HRD, nothing else; the record's low_delay_hrd_flag must
// be 0.
void AddVui(Syntax *syntax, vui_h265_t *vui, int sps_max_sub_layers_minus1);

}  // namespace test

#endif
