// The frame that all parse entry points share: length test, scratch, start code, removal of emulation
// prevention, cursor. What differs between them is their texts and their scratch.

#ifndef H265D_FRAMING_PARSE_FRAME_H
#define H265D_FRAMING_PARSE_FRAME_H

#include "bitbuffer.h"
#include "common/trace.h"

// The texts of one entry point, each with the arguments of its format.
struct ParseFrameTexts {
    const char *too_small;      // %d: length of the NAL unit; null: its length is not tested
    const char *no_start_code;  // %p: the NAL unit
    const char *no_sodb;
};

inline constexpr char kBufferLenTooSmall[] = "buffer_len:%d is too small. Malformed NAL.\n";
inline constexpr char kCapitalBufferLenTooSmall[] = "BufferLen:%d is too small. Malformed NAL.\n";
inline constexpr char kNoSodbFromRbsp[] = "Failed to get SODB from RBSP. Output buffer is too small.\n";
inline constexpr char kNoSodbFromNal[] = "Failed to deencapsulate SODB from NAL.\n";
inline constexpr char kNoMemoryForNalSodbBuffer[] =
    "Failed to allocate memory for pNalSodbBuffer. Size requested:%d.\n";

// What a parse entry point works on.
struct ParseInput {
    const unsigned char *nal;  // the NAL unit, from its start code on; not null
    int64_t length;            // its length in bytes, as the caller gave it
    TraceSite site;            // the entry point, in whose name failures are reported
};

// De-encapsulates the NAL unit into a scratch of the entry point's own and opens a cursor over the result.
// Returns the NAL unit header, or null when the failure has been reported.
const unsigned char *OpenSodb(const ParseInput &input, const ParseFrameTexts &texts, unsigned char *scratch,
                              unsigned int capacity, bitbuffer_t *bb);

// For readers that stop early: how many bytes of a NAL unit, its header included, to de-encapsulate for one
// that reads at most so many bytes behind the header. At most every third byte is left out.
constexpr int64_t PrefixOfNal(int64_t bytes_read) {
    return 2 + bytes_read + bytes_read / 2 + 2;
}

// The same with a scratch from the heap that every length fits, to be released with std::free after success.
// `no_memory` is the text for a failed allocation (%d: its size). The reader sees no more of the NAL unit
// than `prefix` bytes need hold; the whole length is only looked at where a trace tells it.
const unsigned char *OpenSodbOnHeap(const ParseInput &input, const ParseFrameTexts &texts,
                                    const char *no_memory, unsigned char **scratch, bitbuffer_t *bb,
                                    int64_t prefix = INT64_MAX);

#endif
