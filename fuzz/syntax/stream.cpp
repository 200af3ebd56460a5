// Generated slices, NAL units of any type, and streams of them.

#include "support/nal_unit.h"
#include "syntax/nal_units.h"

namespace fuzz {

Bytes GenerateSlice(FuzzInput *input) {
    return test::NalUnit(static_cast<int>(input->Below(32)), input->Take(1 + input->Below(40)), 3);
}

Bytes GenerateNalUnit(FuzzInput *input) {
    switch (input->Below(6)) {
        case 0:
            return GenerateVps(input);
        case 1:
            return GenerateSps(input);
        case 2:
            return GeneratePps(input);
        case 3:
            return GenerateSlice(input);
        case 4:
            return GenerateSei(input);
        default:
            return test::NalUnit(static_cast<int>(input->Below(64)), input->Take(input->Below(64)), 3);
    }
}

Bytes GenerateStream(FuzzInput *input) {
    Bytes stream;
    for (uint32_t count = 1 + input->Below(10); count > 0; count--) {
        const Bytes unit = GenerateNalUnit(input);
        stream.insert(stream.end(), unit.begin(), unit.end());
    }
    return stream;
}

}  // namespace fuzz
