// Removal of emulation prevention bytes, ITU-T H.265 clause 7.3.1.1.

#include <algorithm>
#include <climits>
#include <cstring>

#include "clean_prefix.h"
#include "common/trace.h"

namespace {

constexpr unsigned int kNalHeaderSize = 2;

// Copies the source without the third byte of every 00 00 03. Returns the number of bytes written.
size_t RemoveEmulationPrevention(const unsigned char *source, size_t length, unsigned char *destination) {
    using emulation_prevention::CopyCleanPrefix;
    using emulation_prevention::kBytesAfterStretch;

    size_t in = 0;
    size_t out = 0;
    while (length - in > 2) {
        const size_t clean = CopyCleanPrefix(source + in, length - in, destination + out);
        in += clean;
        out += clean;
        // No pattern starts in the last two bytes, of which the stretch may have taken the first.
        const size_t stop = std::min(length - 2, in + kBytesAfterStretch);
        while (in < stop) {
            const bool pattern = source[in] == 0 && source[in + 1] == 0 && source[in + 2] == 3;
            destination[out++] = source[in++];
            if (pattern) {
                destination[out++] = 0;
                in += 2;
            }
        }
    }
    std::memcpy(destination + out, source + in, length - in);
    return out + (length - in);
}

}  // namespace

int H265Lib_SODB_deencapsulation_from_NAL(const unsigned char *input_buf, unsigned int inbuf_len,
                                          unsigned char *output_buf, unsigned int outbuf_len) {
    static LastLogged last_logged{0};

    ASSERT_ARGUMENT(input_buf != NULL);
    ASSERT_ARGUMENT(output_buf != NULL);
    if (input_buf == nullptr || output_buf == nullptr)
        return -1;
    if (inbuf_len > outbuf_len) {
        if (IsDue(last_logged, 10))
            TRACE(kError,
                  "Deencapsulation cannot be done as InputBufferLength:%d is longer than "
                  "OutputBufferLength:%d.\n",
                  inbuf_len, outbuf_len);
        return -1;
    }
    if (inbuf_len < kNalHeaderSize || inbuf_len > INT_MAX)
        return -1;
    return static_cast<int>(
        RemoveEmulationPrevention(input_buf + kNalHeaderSize, inbuf_len - kNalHeaderSize, output_buf));
}
