// What the readers of SEI payloads share.

#ifndef H265D_SEI_PAYLOAD_H
#define H265D_SEI_PAYLOAD_H

#include <climits>

#include "bitbuffer.h"
#include "xtypes.h"

// Moves the cursor to the payload. An index beyond any buffer moves it behind the end, where reads fail.
inline void AdvanceToPayload(bitbuffer_t *bb, UINT payload_index) {
    AdvanceBitOffset(bb, payload_index <= UINT_MAX / 8 ? payload_index * 8 : UINT_MAX);
}

#endif
