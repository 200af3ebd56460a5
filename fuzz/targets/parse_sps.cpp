// H265Lib_Parse_sps_nal, then H265Lib_Display_sps.

#include "h265.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    ForEachNalUnit(data, size, {kSpsNut}, GenerateSps, [](const Bytes &nal, FuzzInput *input) {
        const DiscardedTrace trace(input);
        const auto sps = AnyRecord<sps_h265_t>(input);
        ExactBuffer buffer(nal);
        H265Lib_Parse_sps_nal(buffer.data(), buffer.size(), sps.get());
        H265Lib_Display_sps(sps.get());
    });
    return 0;
}
