// Removal of emulation prevention bytes, ITU-T H.265 clause 7.3.1.1.

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>

#include "byte_blocks.h"
#include "common/trace.h"
#include "words.h"

namespace {

using namespace byte_blocks;

constexpr unsigned int kNalHeaderSize = 2;

constexpr int kManyPieces = 8;  // of a block, beyond which single bytes are quicker

constexpr ptrdiff_t kFillAVector = kVector * 3 / 2;  // as many bytes leave a vector's, whatever is left out

constexpr auto kIsThree = [](Vector third) { return third == 3; };
constexpr auto kIsThreeInWord = [](uint64_t third) { return third ^ 0x0303030303030303U; };

// Copies byte by byte, up to `stop` or a byte or two behind it, but not behind `end`: no pattern begins in
// the two bytes in front of that.
void CopyBytesWithout(const unsigned char *stop, const unsigned char *end, const unsigned char **source,
                      unsigned char **destination) {
    const unsigned char *in = *source;
    unsigned char *out = *destination;
    while (in < stop && end - in > 3) {
        if (bitbuffer::LoadHalfWord(in) >> 8 == 0x000003) {
            *out++ = 0;
            *out++ = 0;
            in += 3;
        } else {
            *out++ = *in++;
        }
    }
    while (in < stop) {
        const bool pattern = end - in > 2 && in[0] == 0 && in[1] == 0 && in[2] == 3;
        *out++ = *in++;
        if (pattern) {
            *out++ = 0;
            in += 2;
        }
    }
    *source = in;
    *destination = out;
}

// Copies the source without the third byte of every 00 00 03. Returns the number of bytes written. The short
// ones have a function of their own, with next to no registers to save.
[[gnu::noinline]] size_t RemoveFromLong(const unsigned char *source, size_t length,
                                        unsigned char *destination) {
    const unsigned char *in = source;
    const unsigned char *const end = source + length;
    unsigned char *out = destination;
    // Through copies, so that the pointers themselves can stay in registers.
    const auto copy_bytes_up_to = [&in, &out, end](const unsigned char *stop) {
        const unsigned char *from = in;
        unsigned char *to = out;
        CopyBytesWithout(stop, end, &from, &to);
        in = from;
        out = to;
    };
    const unsigned char *const last_block = length > kBlock ? end - kBlock : source;
    while (in < last_block) {
        const Block block(in);
        if (!block.HasZeroPair()) {
            block.CopyTo(out);
            in += kBlock;
            out += kBlock;
            continue;
        }
        // What is written too much, the bytes behind it overwrite: there are enough of them in another block.
        if (end - in < static_cast<ptrdiff_t>(2 * kBlock))
            break;
        const uint64_t triplets = FindTriplets(in, kIsThree);
        if (std::popcount(triplets) > kManyPieces)
            copy_bytes_up_to(in + std::min<ptrdiff_t>(4 * kBlock, end - in));
        else
            CopyBlockInPieces(triplets, &in, &out,
                              [](const unsigned char **third, unsigned char **) { ++*third; });
    }
    while (end - in >= static_cast<ptrdiff_t>(kTriplets)) {
        const Places triplets = TripletPlaces(in, kIsThree);
        if (triplets.none()) {
            Store(out, Load(in));
            in += kVector;
            out += kVector;
            continue;
        }
        const size_t clean = triplets.first();
        if (end - in >= kFillAVector)
            Store(out, Load(in));
        else
            std::memcpy(out, in, clean);
        out[clean] = out[clean + 1] = 0;  // which the vector may not have had
        in += clean + 3;
        out += clean + 2;
    }
    const size_t rest = static_cast<size_t>(end - in);
    // Together with bytes in front of it that went over as they were: none of a vector's bytes is left out
    // when no pattern begins two bytes in front of it or later.
    if (TripletPlaces(end - kTriplets, kIsThree).none()) {
        if (rest > kVector)
            *out = *in;
        Store(out + rest - kVector, Load(end - kVector));
        return static_cast<size_t>(out - destination) + rest;
    }
    if (CopyShort(in, rest, out, kIsThreeInWord))
        return static_cast<size_t>(out - destination) + rest;
    copy_bytes_up_to(end);
    return static_cast<size_t>(out - destination);
}

size_t RemoveEmulationPrevention(const unsigned char *source, size_t length, unsigned char *destination) {
    if (length >= kTriplets)
        return RemoveFromLong(source, length, destination);
    if (CopyShort(source, length, destination, kIsThreeInWord))
        return length;
    const unsigned char *in = source;
    unsigned char *out = destination;
    CopyBytesWithout(source + length, source + length, &in, &out);
    return static_cast<size_t>(out - destination);
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
