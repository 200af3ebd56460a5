// H265Lib_DetermineSEIType with positions that a caller may hand it: one call, whatever they are, stays
// within the NAL unit.

#include "h265.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    ForEachNalUnit(
        data, size, {kPrefixSeiNut, kSuffixSeiNut}, GenerateSei, [](const Bytes &nal, FuzzInput *input) {
            const DiscardedTrace trace(input);
            ExactBuffer buffer(nal);
            const auto header = AnyRecord<SEI_message_t>(input);
            int payload_offset = input->Flag() ? 0 : static_cast<int>(input->Number());
            int nal_type_offset = static_cast<int>(input->Flag() ? input->Below(6) : input->Number());
            int suid = -1;
            BOOL more = -1;
            const BOOL found = H265Lib_DetermineSEIType(buffer.data(), buffer.length(), &payload_offset,
                                                        &nal_type_offset, header.get(), &suid, &more);
            FUZZ_CHECK(more == FALSE || (found && more == TRUE));
            if (found) {
                FUZZ_CHECK(header->payload_index + uint64_t{header->payload_size} <= nal.size());
                FUZZ_CHECK(static_cast<uint64_t>(payload_offset) ==
                           header->payload_index + uint64_t{header->payload_size});
            }
        });
    return 0;
}
