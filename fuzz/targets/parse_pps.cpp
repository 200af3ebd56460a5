// H265Lib_Parse_pps_nal, then H265Lib_Display_pps.

#include "h265.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    ForEachNalUnit(data, size, {kPpsNut}, GeneratePps, [](const Bytes &nal, FuzzInput *input) {
        const DiscardedTrace trace(input);
        const auto pps = AnyRecord<pps_h265_t>(input);
        ExactBuffer buffer(nal);
        H265Lib_Parse_pps_nal(buffer.data(), buffer.length(), pps.get());
        H265Lib_Display_pps(pps.get());
    });
    return 0;
}
