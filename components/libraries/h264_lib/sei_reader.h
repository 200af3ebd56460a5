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

// The next byte of the data without emulation prevention bytes. Returns false at the end of the NAL unit.
inline bool RawByte(SeiReader *reader, unsigned char *byte) {
    if (reader->zeros >= 2 && reader->next < reader->end && *reader->next == 3) {
        reader->next++;
        reader->zeros = 0;
    }
    if (reader->next == reader->end)
        return false;
    *byte = *reader->next++;
    reader->zeros = *byte == 0 ? reader->zeros + 1 : 0;
    reader->index++;
    return true;
}

// Reads the next byte of the current message's payload. Returns false behind its last byte.
inline bool NextByte(SeiReader *reader, unsigned char *byte) {
    if (reader->payload_left == 0 || !RawByte(reader, byte))
        return false;
    reader->payload_left--;
    return true;
}

// The same for several bytes; none is taken when they are not all there.
bool NextBytes(SeiReader *reader, unsigned char *bytes, unsigned int count);

// Opens the reader behind the NAL unit header. Returns false when there is no start code or no SEI header.
bool OpenSei(SeiReader *reader, const unsigned char *nal, int length);

// Goes to the next message and gives its header and its whole payload type. Returns false at the end of the
// NAL unit, and when the header or the payload before it does not fit into it.
bool NextMessage(SeiReader *reader, SEI_message_t *header, unsigned int *payload_type);

// Goes behind the current message. Returns false when its payload does not fit into the NAL unit.
bool SkipPayload(SeiReader *reader);

}  // namespace h264

#endif
