// The end of sequence NAL unit, ITU-T H.265 clause 7.3.2.6.

#include <cstring>

#include "common/trace.h"

int H265Lib_format_end_of_sequence_nalu(unsigned char *buffer, unsigned int len) {
    constexpr unsigned char kEndOfSequence[] = {0x00, 0x00, 0x01, 0x48, 0x01};

    if (buffer == nullptr || len < sizeof kEndOfSequence) {
        TRACE(kError, "ERROR - buffer:%p should not be NULL or len:%d, should be greater than 5!\n",
              static_cast<void *>(buffer), len);
        return -1;
    }
    std::memcpy(buffer, kEndOfSequence, sizeof kEndOfSequence);
    return sizeof kEndOfSequence;
}
