#include "h265d/framing/parse_frame.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "h265d/framing/nal_type_offset.h"

namespace {

constexpr int64_t kShortestLength = 5;  // anything shorter is refused unseen
constexpr size_t kHeapReserve = 32;     // bytes of a heap scratch beyond the length of the NAL unit

bool IsLongEnough(const ParseInput &input, const ParseFrameTexts &texts) {
    if (input.length >= kShortestLength || texts.too_small == nullptr)
        return true;
    TraceAt(input.site, kError, texts.too_small, static_cast<int>(input.length));
    return false;
}

// Longer SODBs have more bits than a cursor counts.
constexpr int64_t kLongestSodb = UINT_MAX / 8;

// The steps behind the length test. Of the NAL unit, `prefix` bytes are de-encapsulated.
[[gnu::always_inline]] inline const unsigned char *FillScratch(const ParseInput &input,
                                                               const ParseFrameTexts &texts,
                                                               unsigned char *scratch, unsigned int capacity,
                                                               bitbuffer_t *bb, int64_t prefix) {
    int offset = 0;
    const int searched = static_cast<int>(std::min<int64_t>(input.length, INT_MAX));
    if (!_GetNALTypeOffset(input.nal, searched, &offset)) {
        TraceAt(input.site, kError, texts.no_start_code, static_cast<const void *>(input.nal));
        return nullptr;
    }
    const unsigned char *header = input.nal + offset;
    const int64_t length = std::min<int64_t>({input.length - offset, prefix, UINT_MAX});
    const int sodb_length =
        H265Lib_SODB_deencapsulation_from_NAL(header, static_cast<unsigned int>(length), scratch, capacity);
    if (sodb_length < 1) {
        TraceAt(input.site, kError, texts.no_sodb);
        return nullptr;
    }
    unsigned int num_bits = 0;
    if (__builtin_mul_overflow(static_cast<unsigned int>(sodb_length), 8U, &num_bits) ||
        __DoInitBitBuffer(bb, scratch, num_bits, input.site.function, input.site.file, input.site.line) !=
            0) {
        TraceAt(input.site, kError, "Failed to init Bitbuffer.\n");
        return nullptr;
    }
    return header;
}

}  // namespace

const unsigned char *OpenSodb(const ParseInput &input, const ParseFrameTexts &texts, unsigned char *scratch,
                              unsigned int capacity, bitbuffer_t *bb) {
    if (!IsLongEnough(input, texts))
        return nullptr;
    return FillScratch(input, texts, scratch, capacity, bb, INT64_MAX);
}

const unsigned char *OpenSodbOnHeap(const ParseInput &input, const ParseFrameTexts &texts,
                                    const char *no_memory, unsigned char **scratch, bitbuffer_t *bb,
                                    int64_t prefix) {
    if (!IsLongEnough(input, texts))
        return nullptr;
    // Not cleared, which would take as long as the NAL unit is: nothing behind what is filled is read.
    const size_t capacity = static_cast<size_t>(std::max<int64_t>(input.length, 0)) + kHeapReserve;
    *scratch = static_cast<unsigned char *>(std::malloc(capacity));
    if (*scratch == nullptr) {
        TraceAt(input.site, kError, no_memory, static_cast<int>(capacity));
        return nullptr;
    }
    if (TraceLetsThrough(kFunction) || input.length > kLongestSodb)
        prefix = INT64_MAX;
    const unsigned char *header =
        FillScratch(input, texts, *scratch, static_cast<unsigned int>(capacity), bb, prefix);
    if (header == nullptr) {
        std::free(*scratch);
        return nullptr;
    }
    if (TraceLetsThrough(kFunction))
        TraceAt(input.site, kFunction,
                "SODB deencapsulation was successful NAL unit length:%d, SODB length:%d.\n",
                static_cast<int>(input.length), static_cast<int>(bb->num_bits / 8));
    return header;
}
