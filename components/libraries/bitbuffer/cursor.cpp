// Opening, moving and showing a cursor.

#include "bitbuffer.h"

namespace {

const HDBG *trace_channel = nullptr;

}  // namespace

int __DoInitBitBuffer(bitbuffer_t *bb, unsigned char *buffer, unsigned int num_bits, const char *function,
                      const char *file, int line) {
    if (bb == nullptr) {
        _DoAssert("bb != NULL", function, file, line);
        return -1;
    }
    if (buffer == nullptr && num_bits > 0) {
        _DoAssert("buffer != NULL", function, file, line);
        return -1;
    }
    *bb = {buffer, 0, num_bits};
    return 0;
}

void AdvanceBitOffset(bitbuffer_t *bb, unsigned int num_bits) {
    if (bb == nullptr) {
        _DoAssert("bb != NULL", __func__, __FILE_NAME__, __LINE__);
        return;
    }
    // A sum that wrapped would put the cursor back into the buffer: it stops at the last position instead.
    if (__builtin_add_overflow(bb->bit_offset, num_bits, &bb->bit_offset))
        bb->bit_offset = UINT32_MAX;
}

void BitBufferSetTraceChannel(const HDBG *phDbg) {
    trace_channel = phDbg;
}

void DisplayBitBuffer(const bitbuffer_t *bb, const char *title) {
    if (bb == nullptr) {
        _DoAssert("bb != NULL", __func__, __FILE_NAME__, __LINE__);
        return;
    }
    if (trace_channel == nullptr || *trace_channel == nullptr)
        return;
    _DoDbgPrintBuffer(*trace_channel, 7, bb->bit_buffer, (size_t{bb->num_bits} + 7) / 8, title, __func__,
                      __FILE_NAME__, __LINE__);
}
