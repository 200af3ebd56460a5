// The frame that both SPS rewritings share: from the input NAL unit to cursors over two SODBs, and from there
// to the new NAL unit on the heap.

#ifndef H265D_REWRITING_SPS_FRAME_H
#define H265D_REWRITING_SPS_FRAME_H

#include "bitbuffer.h"
#include "common/trace.h"
#include "h265d/parsing/sodb_capacity.h"

// Room for any VUI: a new SODB may be that much longer than the input's.
inline constexpr int MIN_VUI_PARAMETERS_SIZE_BYTES = 256;
inline constexpr int NEW_SPS_SODB_CAPACITY = SPS_SODB_CAPACITY + MIN_VUI_PARAMETERS_SIZE_BYTES;

// Rewrites one SODB into another; returns the length of the new one in bytes, or -1.
using RewriteSps = int (*)(bitbuffer_t *sps_bb, int SpsSodbLength, const sps_h265_t *sps,
                           bitbuffer_t *new_sps_bb, int NewSpsSodbLength);

enum class SpsRewriting {
    kRefused,  // the input: no start code (which clears the outputs); too long, or its header alone (which
               // leave them)
    kFailed,   // the rewriting; the outputs are cleared
    kDone,
};

// Runs a rewriting in the name of `site`. *ppNewSpsBuffer and *pNewSPSLength are left alone as long as the
// input has not been accepted, except that a missing start code clears them.
SpsRewriting RewriteSpsNal(const TraceSite &site, const unsigned char *pBuffer, unsigned int buffer_len,
                           const sps_h265_t *pSpsElements, RewriteSps rewrite, unsigned char **ppNewSpsBuffer,
                           UINT *pNewSPSLength);

#endif
