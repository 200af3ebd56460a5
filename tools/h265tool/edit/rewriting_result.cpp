#include "edit/rewriting_result.h"

#include "json/difference.h"
#include "text.h"
#include "unit_error.h"

namespace h265tool {

NalUnit Rewritten(const NalUnit &unit, std::span<const unsigned char> bytes) {
    // a shorter payload is padded where the longer one ended: such bytes are none of the NAL unit
    while (!bytes.empty() && bytes.back() == 0)
        bytes = bytes.first(bytes.size() - 1);
    if (bytes.size() <= unit.start_code_length + kNalUnitHeaderSize)
        throw UnitError("it is too long when rewritten");
    NalUnit rewritten;
    rewritten.offset = unit.offset;
    rewritten.size = bytes.size();
    rewritten.start_code_length = unit.start_code_length;
    rewritten.head.assign(bytes.begin(), bytes.end());
    return rewritten;
}

void CheckRewritten(const Json &expected, const Json &actual) {
    if (const auto difference = FirstDifference(expected, actual))
        throw UnitError(Text("rewriting failed: ", difference->path, " is ", difference->actual, ", not ",
                             difference->expected));
}

}  // namespace h265tool
