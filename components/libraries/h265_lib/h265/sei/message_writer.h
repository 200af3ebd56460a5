// Writing one sei_message( ) of which the size is known only at its end: type, a place for the size, payload;
// then alignment, the size, and the trailing bits of the NAL unit. ITU-T H.265 clause 7.3.5.

#ifndef H265_SEI_MESSAGE_WRITER_H
#define H265_SEI_MESSAGE_WRITER_H

#include "bitbuffer.h"
#include "common/trace.h"

// Both return 0, or -1 when something cannot be written; failures are reported in the name of `site`.

// Writes the payload type and a placeholder for the size, whose position it gives.
int BeginSeiMessage(const TraceSite &site, bitbuffer_t *bb, int payload_type, unsigned int *size_position);

// Completes the payload to whole bytes, writes its size to its place and the trailing bits behind it.
int EndSeiMessage(const TraceSite &site, bitbuffer_t *bb, unsigned int size_position);

#endif
