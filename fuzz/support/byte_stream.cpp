#include "support/byte_stream.h"

namespace fuzz {

size_t StartCodeLength(const Bytes &bytes) {
    if (bytes.size() < 3 || bytes[0] != 0 || bytes[1] != 0)
        return 0;
    if (bytes[2] == 1)
        return 3;
    return bytes.size() >= 4 && bytes[2] == 0 && bytes[3] == 1 ? 4 : 0;
}

int NalUnitType(const Bytes &nal) {
    const size_t header = StartCodeLength(nal);
    return header != 0 && header < nal.size() ? nal[header] >> 1 & 0x3F : 0;
}

std::vector<Bytes> Split(const Bytes &stream) {
    constexpr size_t kShortest = 3;  // a start code alone keeps its zero bytes
    std::vector<Bytes> units;
    Bytes before;  // what stands in front of the first start code
    for (size_t i = 0; i < stream.size(); i++) {
        Bytes &last = units.empty() ? before : units.back();
        const bool is_start_code =
            i + 3 <= stream.size() && stream[i] == 0 && stream[i + 1] == 0 && stream[i + 2] == 1;
        if (!is_start_code) {
            last.push_back(stream[i]);
            continue;
        }
        const bool has_zero_byte =
            !last.empty() && last.back() == 0 && (units.empty() || last.size() > kShortest);
        if (has_zero_byte)
            last.pop_back();
        units.push_back(has_zero_byte ? Bytes{0, 0, 0, 1} : Bytes{0, 0, 1});
        i += 2;
    }
    return units;
}

Bytes Decapsulated(const Bytes &payload) {
    Bytes sodb;
    int zeros = 0;
    for (const unsigned char byte : payload) {
        if (zeros >= 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        sodb.push_back(byte);
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return sodb;
}

Bytes Sodb(const Bytes &nal) {
    const size_t start_code = StartCodeLength(nal);
    const size_t payload = start_code + kNalUnitHeaderSize;
    if (start_code == 0 || nal.size() < payload)
        return {};
    return Decapsulated(Bytes(nal.begin() + static_cast<std::ptrdiff_t>(payload), nal.end()));
}

void SetBits(Bytes *bytes, size_t position, unsigned int n, unsigned int value) {
    for (; n > 0; n--, position++) {
        unsigned char &byte = (*bytes)[position / 8];
        const unsigned int mask = 0x80U >> position % 8;
        byte = static_cast<unsigned char>((value >> (n - 1) & 1) != 0 ? byte | mask : byte & ~mask);
    }
}

}  // namespace fuzz
