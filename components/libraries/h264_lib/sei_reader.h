// Reads a SEI NAL unit of H.264 or H.265 byte by byte: emulation prevention bytes are passed over on the way,
// so no copy is needed.

#ifndef H264_SEI_READER_H
#define H264_SEI_READER_H

#include "h265/sei.h"

namespace h264 {

struct SeiReader {
    const unsigned char *next;
    const unsigned char *end;   // behind the last byte that is not trailing bits alone
    int zeros;                  // zero bytes right before `next`
    unsigned int index;         // of `next`, in the data without emulation prevention bytes
    unsigned int payload_left;  // bytes of the current message's payload
};

// Opens the reader behind the NAL unit header. Returns false when there is no start code or no SEI header.
bool OpenSei(SeiReader *reader, const unsigned char *nal, int length);

// Goes to the next message and gives its header and its whole payload type. Returns false at the end of the
// NAL unit, and when the header or the payload before it does not fit into it.
bool NextMessage(SeiReader *reader, SEI_message_t *header, unsigned int *payload_type);

// Reads the next byte of the current message's payload. Returns false behind its last byte.
bool NextByte(SeiReader *reader, unsigned char *byte);

// Goes behind the current message. Returns false when its payload does not fit into the NAL unit.
bool SkipPayload(SeiReader *reader);

}  // namespace h264

#endif
