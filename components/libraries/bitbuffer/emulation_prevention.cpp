// Insertion of emulation prevention bytes, ITU-T H.265 clause 7.4.2.

#include <algorithm>

#include "bits.h"
#include "clean_prefix.h"

namespace {

constexpr unsigned char kEmulationPreventionByte = 0x03;

// Writes the encapsulated form of the source; a null destination: only measures it. Returns its length.
size_t Encapsulate(const unsigned char *source, size_t length, unsigned char *destination) {
    size_t in = 0;
    size_t out = 0;
    unsigned int zeros = 0;  // zero bytes written last
    const auto write = [&](unsigned char byte) {
        if (destination != nullptr)
            destination[out] = byte;
        out++;
    };
    while (in < length) {
        // A stretch that continues zeros written before it has to be looked at byte by byte. One that was
        // copied leaves no zeros to continue: behind a zero at its end stands another byte.
        if (zeros == 0) {
            const size_t clean = emulation_prevention::CopyCleanPrefix(
                source + in, length - in, destination != nullptr ? destination + out : nullptr);
            in += clean;
            out += clean;
        }
        const size_t stop = std::min(length, in + emulation_prevention::kBytesAfterStretch);
        for (; in < stop; in++) {
            if (zeros == 2 && source[in] <= 3) {
                write(kEmulationPreventionByte);
                zeros = 0;
            }
            write(source[in]);
            zeros = source[in] == 0 ? zeros + 1 : 0;
        }
    }
    return out;
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
