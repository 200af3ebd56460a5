#include "support/nal_cases.h"

#include <algorithm>

#include "support/byte_stream.h"

namespace fuzz {
namespace {

constexpr size_t kMostUnits = 8;  // of a stream, so that a run stays short

uint64_t Checksum(const Bytes &bytes) {
    uint64_t sum = 0xCBF29CE484222325;  // FNV-1a
    for (const unsigned char byte : bytes)
        sum = (sum ^ byte) * 0x100000001B3;
    return sum;
}

// Cuts it, overwrites a byte, appends zero bytes, or leaves it as it is.
void Damage(FuzzInput *input, Bytes *nal) {
    enum Kind { kCut = 0xE0, kOverwrite = 0xE8, kTrailingZeros = 0xF0, kTail = 0xF8 };
    const uint8_t kind = input->Byte();
    if (kind < kCut || nal->empty())
        return;
    if (kind < kOverwrite)
        nal->resize(input->Below(static_cast<uint32_t>(nal->size())));
    else if (kind < kTrailingZeros)
        (*nal)[input->Below(static_cast<uint32_t>(nal->size()))] = input->Byte();
    else
        nal->insert(nal->end(), input->Below(64), kind < kTail ? 0 : input->Byte());
}

}  // namespace

void ForEachNalUnit(const uint8_t *data, size_t size, std::initializer_list<int> wanted,
                    Bytes (*generate)(FuzzInput *), const NalUse &use) {
    const Bytes bytes(data, data + size);
    if (StartCodeLength(bytes) == 0) {
        FuzzInput recipe(data, size);
        Bytes nal = generate(&recipe);
        Damage(&recipe, &nal);
        use(nal, &recipe);
        return;
    }
    std::vector<Bytes> units = {bytes};
    for (const Bytes &unit : Split(bytes)) {
        const bool is_wanted =
            wanted.size() == 0 || std::find(wanted.begin(), wanted.end(), NalUnitType(unit)) != wanted.end();
        if (is_wanted && unit.size() < size && units.size() <= kMostUnits)
            units.push_back(unit);
    }
    for (const Bytes &unit : units) {
        FuzzInput choices = FuzzInput::Random(Checksum(bytes));
        use(unit, &choices);
    }
}

}  // namespace fuzz
