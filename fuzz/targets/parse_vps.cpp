// H265Lib_Parse_vps_nal, then H265Lib_Display_vps. Records that were not
// parsed are left to display_records: they can have hundreds of thousands of lines.

#include "h265.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    ForEachNalUnit(data, size, {kVpsNut}, GenerateVps, [](const Bytes &nal, FuzzInput *input) {
        const DiscardedTrace trace(input);
        const auto vps = AnyRecord<vps_h265_t>(input);
        ExactBuffer buffer(nal);
        if (H265Lib_Parse_vps_nal(buffer.data(), buffer.size(), vps.get()))
            H265Lib_Display_vps(vps.get());
    });
    return 0;
}
