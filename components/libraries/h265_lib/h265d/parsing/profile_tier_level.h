// profile_tier_level( 1, maxNumSubLayersMinus1 ), ITU-T H.265 clause 7.3.3.

#ifndef H265D_PARSING_PROFILE_TIER_LEVEL_H
#define H265D_PARSING_PROFILE_TIER_LEVEL_H

#include "bitbuffer.h"
#include "h265/profile_tier_level.h"

extern "C" {

// Returns 0, or -1 at the first element that cannot be read.
int _parse_profile_tier_level(bitbuffer_t *sps_nalu_bb, unsigned char maxNumSubLayersMinus1,
                              profile_tier_level_t *ptl);

}  // extern "C"

#endif
