#include "h265/sei/message_writer.h"

#include "common/write.h"

namespace {

constexpr int kMessageHeaderSize = 2;  // payload type and size, a byte each

// Writes a 1, then zeros up to the byte boundary.
int SetStopBitAndZeros(const TraceSite &site, bitbuffer_t *message_bb, const char *no_one,
                       const char *no_zero) {
    BitWriter bb(message_bb);
    const unsigned int zeros = 7 - bb.offset() % 8;
    if (bb.BitsLeft() > zeros) [[likely]] {
        bb.Put(1 + zeros, uint64_t{1} << zeros);
        return 0;
    }
    if (SetFlag(bb, 1) == -1) {
        TraceAt(site, kError, no_one);
        return -1;
    }
    while (SetFlag(bb, 0) == 0) {
    }
    TraceAt(site, kError, no_zero);
    return -1;
}

}  // namespace

int BeginSeiMessage(const TraceSite &site, bitbuffer_t *bb, int payload_type, unsigned int *size_position) {
    if (SetU(bb, 8, static_cast<uint8_t>(payload_type)) == -1) {
        TraceAt(site, kError, "Failed to set payload type:%d.\n", payload_type);
        return -1;
    }
    *size_position = bb->bit_offset;
    if (SetU(bb, 8, 0) == -1) {
        TraceAt(site, kError, "Failed to set last payload size byte.\n");
        return -1;
    }
    return 0;
}

int EndSeiMessage(const TraceSite &site, bitbuffer_t *bb, unsigned int size_position) {
    if (!IsByteAligned(*bb) && SetStopBitAndZeros(site, bb, "Failed to set payload_bit_equal_to_one.\n",
                                                  "Failed to set payload_bit_equal_to_zero.\n") == -1)
        return -1;

    const unsigned int end = bb->bit_offset;
    const int last_payload_size_byte = BytesWritten(*bb) - kMessageHeaderSize;
    bb->bit_offset = size_position;
    if (SetU(bb, 8, static_cast<uint8_t>(last_payload_size_byte)) == -1) {
        TraceAt(site, kError, "Failed to set last_payload_size_byte:%d.\n", last_payload_size_byte);
        return -1;
    }
    if (TraceLetsThrough(kFunction))
        TraceAt(site, kFunction, "last_payload_size_byte:%d, bitoffset before/after:%d/%d.\n",
                last_payload_size_byte, size_position, end);
    bb->bit_offset = end;
    return SetStopBitAndZeros(site, bb, "Failed to set stop bit.\n", "Failed to set padding bit.\n");
}
