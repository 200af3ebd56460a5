// What the fuzzing engine does to inputs that are streams of NAL units: besides its own changes of bytes it
// changes bits and Exp-Golomb codes of one NAL unit's data, so that emulation prevention stays right and the
// elements behind the change move as a whole; and it repeats, drops and swaps NAL units.

#include <algorithm>

#include "support/bit_string.h"
#include "support/byte_stream.h"
#include "support/nal_unit.h"

extern "C" {

size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t max_size);  // the engine's own
size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size, unsigned int seed);

}  // extern "C"

namespace {

using fuzz::Bytes;
using test::BitString;

class Random {
 public:
    explicit Random(uint64_t seed) : state_(seed) {}
    size_t Below(size_t end) { return fuzz::NextRandom(&state_) % end; }

    // Mostly small, sometimes up to the largest.
    uint32_t Number() {
        const uint64_t number = fuzz::NextRandom(&state_);
        return static_cast<uint32_t>(number & (Below(4) == 0 ? UINT32_MAX : 0xF));
    }

 private:
    uint64_t state_;
};

void AppendBits(const BitString &from, size_t begin, size_t end, BitString *to) {
    for (size_t i = begin; i < end; i++)
        to->U(1, from[i]);
}

BitString BitsOf(const Bytes &bytes) {
    BitString bits;
    for (const unsigned char byte : bytes)
        bits.U(8, byte);
    return bits;
}

// Replaces some bits, or none, by a code word, by some bits, or by nothing.
BitString WithNewElement(const BitString &bits, Random *random) {
    constexpr size_t kHead = 400;  // most elements stand here
    const size_t position =
        random->Below((random->Below(4) > 0 ? std::min(bits.size(), kHead) : bits.size()) + 1);
    const size_t end = std::min(bits.size(), position + random->Below(random->Below(2) > 0 ? 2 : 33));
    BitString changed = bits.Prefix(position);
    switch (random->Below(3)) {
        case 0:
            changed.Ue(random->Number());
            break;
        case 1:
            changed.U(static_cast<unsigned int>(1 + random->Below(32)), random->Number());
            break;
        default:
            break;
    }
    AppendBits(bits, end, bits.size(), &changed);
    return changed;
}

void ChangeElement(Bytes *nal, Random *random) {
    const size_t payload = fuzz::StartCodeLength(*nal) + fuzz::kNalUnitHeaderSize;
    if (nal->size() < payload)
        return;
    const Bytes changed = WithNewElement(BitsOf(fuzz::Sodb(*nal)), random).Bytes();
    nal->resize(payload);
    const Bytes encapsulated = test::Encapsulated(changed);
    nal->insert(nal->end(), encapsulated.begin(), encapsulated.end());
}

void ChangeUnits(std::vector<Bytes> *units, Random *random) {
    const size_t i = random->Below(units->size());
    switch (random->Below(8)) {
        case 0:
            units->push_back(Bytes((*units)[i]));
            break;
        case 1:
            if (units->size() > 1)
                units->erase(units->begin() + static_cast<std::ptrdiff_t>(i));
            break;
        case 2:
            std::swap((*units)[i], (*units)[random->Below(units->size())]);
            break;
        default:
            ChangeElement(&(*units)[i], random);
            break;
    }
}

}  // namespace

size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size, unsigned int seed) {
    Random random(seed);
    const Bytes input(data, data + size);
    if (fuzz::StartCodeLength(input) == 0 || random.Below(3) == 0)
        return LLVMFuzzerMutate(data, size, max_size);
    std::vector<Bytes> units = fuzz::Split(input);
    ChangeUnits(&units, &random);
    size_t length = 0;
    for (const Bytes &unit : units) {
        const size_t count = std::min(unit.size(), max_size - length);
        std::copy_n(unit.begin(), count, data + length);
        length += count;
    }
    return length;
}
