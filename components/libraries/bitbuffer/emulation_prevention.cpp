// Insertion of emulation prevention bytes, ITU-T H.265 clause 7.4.2.

#include <bit>

#include "byte_blocks.h"
#include "missing.h"

namespace {

using namespace byte_blocks;

constexpr unsigned char kEmulationPreventionByte = 0x03;

constexpr auto kIsEmulating = [](Vector third) { return third <= 3; };
constexpr auto kIsEmulatingInWord = [](uint64_t third) { return third & 0xFCFCFCFCFCFCFCFCU; };

// The positions in a block at which two zero bytes begin that need the byte behind them. It ends their row:
// the position that follows such a one is none.
uint64_t FindPatterns(const unsigned char *block) {
    uint64_t triplets = FindTriplets(block, kIsEmulating);
    uint64_t patterns = 0;
    for (; triplets != 0; triplets &= triplets - 1) {
        const uint64_t first = triplets & -triplets;
        patterns |= first;
        triplets &= ~(first << 1);
    }
    return patterns;
}

// Writes the encapsulated form of the source, byte by byte; a null destination: only measures it. Returns its
// length.
size_t EncapsulateBytes(const unsigned char *source, size_t length, unsigned char *destination) {
    size_t inserted = 0;
    unsigned int zeros = 0;
    for (size_t i = 0; i < length; i++) {
        if (zeros == 2 && source[i] <= 3) {
            if (destination != nullptr)
                destination[i + inserted] = kEmulationPreventionByte;
            inserted++;
            zeros = 0;
        }
        if (destination != nullptr)
            destination[i + inserted] = source[i];
        zeros = source[i] == 0 ? zeros + 1 : 0;
    }
    return length + inserted;
}

// The same. The short ones have a function of their own, with next to no registers to save.
[[gnu::noinline]] size_t EncapsulateLong(const unsigned char *source, size_t length,
                                         unsigned char *destination) {
    const unsigned char *in = source;
    const unsigned char *const end = source + length;
    size_t inserted = 0;
    const auto out = [&] {
        return destination != nullptr ? destination + (in - source) + inserted : nullptr;
    };
    while (end - in > static_cast<ptrdiff_t>(kBlock)) {
        const Block block(in);
        if (!block.HasZeroPair()) {
            if (destination != nullptr)
                block.CopyTo(out());
            in += kBlock;
            continue;
        }
        // What is written too much, the bytes behind it overwrite.
        if (end - in < static_cast<ptrdiff_t>(2 * kBlock))
            break;
        const uint64_t patterns = FindPatterns(in);
        if (destination != nullptr) {
            unsigned char *place = out();
            CopyBlockInPieces(patterns, &in, &place, [](const unsigned char **, unsigned char **byte) {
                *(*byte)++ = kEmulationPreventionByte;
            });
        } else {
            in += kBlock + (patterns >> 63);  // the last one's bytes end behind the block
        }
        inserted += static_cast<size_t>(std::popcount(patterns));
    }
    while (end - in >= static_cast<ptrdiff_t>(kTriplets)) {
        const Places triplets = TripletPlaces(in, kIsEmulating);
        unsigned char *const place = out();
        if (destination != nullptr)
            Store(place, Load(in));
        if (triplets.none()) {
            in += kVector;
            continue;
        }
        const size_t clean = triplets.first();
        if (destination != nullptr) {
            place[clean + 1] = 0;  // which the vector may not have had
            place[clean + 2] = kEmulationPreventionByte;
        }
        in += clean + 2;
        inserted++;
    }
    const size_t rest = static_cast<size_t>(end - in);
    // Together with bytes in front of it that went over as they were: nothing is inserted among a vector's
    // bytes when no pattern begins two bytes in front of it or later.
    if (TripletPlaces(end - kTriplets, kIsEmulating).none()) {
        if (destination != nullptr) {
            if (rest > kVector)
                *out() = *in;
            Store(out() + rest - kVector, Load(end - kVector));
        }
        return length + inserted;
    }
    return static_cast<size_t>(in - source) + inserted + EncapsulateBytes(in, rest, out());
}

size_t Encapsulate(const unsigned char *source, size_t length, unsigned char *destination) {
    if (length >= kTriplets)
        return EncapsulateLong(source, length, destination);
    if (destination != nullptr && CopyShort(source, length, destination, kIsEmulatingInWord))
        return length;
    return EncapsulateBytes(source, length, destination);
}

}  // namespace

int RBSP_encapsulation_within_NAL(const unsigned char *source, int source_length, unsigned char *destination,
                                  int destination_capacity) {
    if (MISSING(source) || MISSING(destination))
        return 0;
    if (source_length <= 0 || destination_capacity < source_length)
        return 0;
    const size_t length = static_cast<size_t>(source_length);
    const size_t capacity = static_cast<size_t>(destination_capacity);
    const size_t longest = length + length / 2;  // one byte more for every two zero bytes
    if (capacity < longest && capacity < Encapsulate(source, length, nullptr))
        return 0;
    return static_cast<int>(Encapsulate(source, length, destination));
}

int RBSP_encapsulation_within_NAL_Ex(const unsigned char *source, int source_length,
                                     unsigned char *destination, int destination_capacity, int mode) {
    if (mode != RBSP_ENCAPSULATION_MODE_BYTES) {
        _DoAssert("mode == RBSP_ENCAPSULATION_MODE_BYTES", __func__, __FILE_NAME__, __LINE__);
        return 0;
    }
    if (MISSING(source) || MISSING(destination))
        return 0;
    return RBSP_encapsulation_within_NAL(source, source_length, destination, destination_capacity);
}
