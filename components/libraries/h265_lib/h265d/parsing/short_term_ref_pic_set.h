// st_ref_pic_set( stRpsIdx ), ITU-T H.265 clause 7.3.7.

#ifndef H265D_PARSING_SHORT_TERM_REF_PIC_SET_H
#define H265D_PARSING_SHORT_TERM_REF_PIC_SET_H

#include "bitbuffer.h"
#include "h265/short_term_ref_pic_set.h"
#include "h265d/parsing/derived_ref_pic_sets.h"

extern "C" {

// Reads one set; the sets of an SPS are read in order, from index 0 on. A predicted set takes its count from
// an earlier one: what that needs is kept in derived_sets, the caller's, which one SPS parse shares between
// its calls and which index 0 starts anew. Returns 0, or -1 at the first element that cannot be read.
int _parse_short_term_ref_pic_set(bitbuffer_t *sps_nalu_bb, unsigned long NumShortTermRefPicSets,
                                  unsigned long StRpsIndex, short_term_ref_pic_set_t *strps,
                                  DerivedRefPicSets *derived_sets);

}  // extern "C"

#endif
