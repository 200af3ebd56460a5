// The end that both SPS rewritings share: a new VUI, and the input's bits behind its old one.

#ifndef H265D_REWRITING_SPS_TAIL_H
#define H265D_REWRITING_SPS_TAIL_H

#include "bitbuffer.h"
#include "h265/sps.h"
#include "h265d/rewriting/rewrite_run.h"

// Writes the VUI of the record, then the input from its sps_extension_present_flag on with its trailing bits,
// and zero bits up to a byte boundary. Returns the length of the new SODB in bytes, or -1.
int FinishSps(bitbuffer_t *reader, int SpsSodbLength, const sps_h265_t *sps, bitbuffer_t *writer,
              BitString *string);

#endif
