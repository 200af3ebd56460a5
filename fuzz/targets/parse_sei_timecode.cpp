// H265Lib_Parse_sei_timecode_nal with a message header that holds anything.

#include "h265.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    ForEachNalUnit(data, size, {kPrefixSeiNut, kSuffixSeiNut}, GenerateSei,
                   [](const Bytes &nal, FuzzInput *input) {
                       const DiscardedTrace trace(input);
                       const auto header = AnyRecord<SEI_message_t>(input);
                       if (input->Byte() < 192)
                           header->payload_index = input->Below(64);
                       const auto tc = AnyRecord<sei_h265_time_code_t>(input);
                       ExactBuffer buffer(nal);
                       H265Lib_Parse_sei_timecode_nal(buffer.data(), buffer.length(), header.get(), tc.get());
                   });
    return 0;
}
