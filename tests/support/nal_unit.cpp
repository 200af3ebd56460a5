#include "support/nal_unit.h"

namespace test {

Bytes Encapsulated(const Bytes &rbsp) {
    Bytes payload;
    int zeros = 0;
    for (const unsigned char byte : rbsp) {
        if (zeros == 2 && byte <= 3) {
            payload.push_back(3);
            zeros = 0;
        }
        payload.push_back(byte);
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return payload;
}

Bytes NalUnit(int nal_unit_type, const Bytes &rbsp, int start_code_length) {
    Bytes nal(static_cast<size_t>(start_code_length) - 1, 0);
    nal.push_back(1);
    nal.push_back(static_cast<unsigned char>(nal_unit_type << 1));
    nal.push_back(1);
    const Bytes payload = Encapsulated(rbsp);
    nal.insert(nal.end(), payload.begin(), payload.end());
    return nal;
}

}  // namespace test
