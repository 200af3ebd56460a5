// The frame that all parse entry points share: length test, scratch, start code, removal of emulation
// prevention, cursor. What differs between them is their texts and their scratch. In line, since a slice
// header is parsed in little more time than it would take to hand all of that over.

#ifndef H265D_FRAMING_PARSE_FRAME_H
#define H265D_FRAMING_PARSE_FRAME_H

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "bitbuffer.h"
#include "common/trace.h"
#include "h265d/framing/nal_type_offset.h"

// How an entry point reports: in whose name, and the texts, each with the arguments of its format. A
// constant, so that nothing of it is put together where there is nothing to report.
struct ParseFrameTexts {
    TraceSite site;
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
    const unsigned char *nal;  // the NAL unit, from its start code on; null has none
    int64_t length;            // its length in bytes, as the caller gave it
};

inline bool IsLongEnough(const ParseInput &input, const ParseFrameTexts &texts) {
    constexpr int64_t kShortestLength = 5;  // anything shorter is refused unseen
    if (input.length >= kShortestLength || texts.too_small == nullptr)
        return true;
    TraceAt(texts.site, kError, texts.too_small, static_cast<int>(input.length));
    return false;
}

// The steps behind the length test. Of the NAL unit, `prefix` bytes are de-encapsulated.
[[gnu::always_inline]] inline const unsigned char *FillScratch(const ParseInput &input,
                                                               const ParseFrameTexts &texts,
                                                               unsigned char *scratch, unsigned int capacity,
                                                               bitbuffer_t *bb, int64_t prefix) {
    int offset = 0;
    const int searched = static_cast<int>(std::min<int64_t>(input.length, INT_MAX));
    if (!_GetNALTypeOffset(input.nal, searched, &offset)) {
        TraceAt(texts.site, kError, texts.no_start_code, static_cast<const void *>(input.nal));
        return nullptr;
    }
    const unsigned char *header = input.nal + offset;
    const int64_t length = std::min<int64_t>({input.length - offset, prefix, UINT_MAX});
    const int sodb_length =
        H265Lib_SODB_deencapsulation_from_NAL(header, static_cast<unsigned int>(length), scratch, capacity);
    if (sodb_length < 1) {
        TraceAt(texts.site, kError, texts.no_sodb);
        return nullptr;
    }
    unsigned int num_bits = 0;
    if (__builtin_mul_overflow(static_cast<unsigned int>(sodb_length), 8U, &num_bits) ||
        __DoInitBitBuffer(bb, scratch, num_bits, texts.site.function, texts.site.file, texts.site.line) !=
            0) {
        TraceAt(texts.site, kError, "Failed to init Bitbuffer.\n");
        return nullptr;
    }
    return header;
}

// De-encapsulates the NAL unit into a scratch of the entry point's own and opens a cursor over the result.
// Returns the NAL unit header, or null when the failure has been reported.
[[gnu::always_inline]] inline const unsigned char *OpenSodb(const ParseInput &input,
                                                            const ParseFrameTexts &texts,
                                                            unsigned char *scratch, unsigned int capacity,
                                                            bitbuffer_t *bb) {
    if (!IsLongEnough(input, texts))
        return nullptr;
    return FillScratch(input, texts, scratch, capacity, bb, INT64_MAX);
}

// For readers that stop early: how many bytes of a NAL unit, its header included, to de-encapsulate for one
// that reads at most so many bytes behind the header. At most every third byte is left out.
constexpr int64_t PrefixOfNal(int64_t bytes_read) {
    return 2 + bytes_read + bytes_read / 2 + 2;
}

// The same as OpenSodb with a scratch from the heap that every length fits, to be released with std::free
// after success. `no_memory` is the text for a failed allocation (%d: its size). The reader sees no more of
// the NAL unit than `prefix` bytes need hold; the whole length is only looked at where a trace tells it.
[[gnu::always_inline]] inline const unsigned char *OpenSodbOnHeap(const ParseInput &input,
                                                                  const ParseFrameTexts &texts,
                                                                  const char *no_memory,
                                                                  unsigned char **scratch, bitbuffer_t *bb,
                                                                  int64_t prefix = INT64_MAX) {
    constexpr int64_t kHeapReserve = 32;            // bytes beyond the length of the NAL unit
    constexpr int64_t kLongestSodb = UINT_MAX / 8;  // longer ones have more bits than a cursor counts
    if (!IsLongEnough(input, texts))
        return nullptr;
    // Not cleared, which would take as long as the NAL unit is: nothing behind what is filled is read.
    const int64_t capacity = input.length + kHeapReserve;
    *scratch =
        capacity < 0 ? nullptr : static_cast<unsigned char *>(std::malloc(static_cast<size_t>(capacity)));
    if (*scratch == nullptr) {
        TraceAt(texts.site, kError, no_memory, static_cast<int>(capacity));
        return nullptr;
    }
    const bool traced = TraceLetsThrough(kFunction);
    if (traced || input.length > kLongestSodb)
        prefix = INT64_MAX;
    const unsigned char *header =
        FillScratch(input, texts, *scratch, static_cast<unsigned int>(capacity), bb, prefix);
    if (header == nullptr) {
        std::free(*scratch);
        return nullptr;
    }
    if (traced)
        TraceAt(texts.site, kFunction,
                "SODB deencapsulation was successful NAL unit length:%d, SODB length:%d.\n",
                static_cast<int>(input.length), static_cast<int>(bb->num_bits / 8));
    return header;
}

#endif
