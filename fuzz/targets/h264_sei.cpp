// The sibling library: parse_sei_cc_nal and parse_sei_afd_nal on SEI NAL units of either standard, and
// H26XLib_Release_sps_buffer.

#include <cstdlib>

#include "h264.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

namespace {

fuzz::Bytes GenerateEitherSei(fuzz::FuzzInput *input) {
    return input->Flag() ? fuzz::GenerateH264Sei(input) : fuzz::GenerateSei(input);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    ForEachNalUnit(data, size, {}, GenerateEitherSei, [](const Bytes &nal, FuzzInput *input) {
        const DiscardedTrace trace(input);
        ExactBuffer buffer(nal);
        parse_sei_cc_nal(buffer.data(), buffer.length(), AnyRecord<SEI_cc_t>(input).get());
        parse_sei_afd_nal(buffer.data(), buffer.length(), AnyRecord<SEI_afd_t>(input).get());
        H26XLib_Release_sps_buffer(input->Flag() ? std::calloc(1, 1 + input->Below(64)) : nullptr);
    });
    return 0;
}
