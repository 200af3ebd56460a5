// H265Lib_Parse_sei_cc_nal: what fails leaves the record as it was; what succeeds was there.

#include <cstring>

#include "h265.h"
#include "support/byte_stream.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

namespace {

// A message within the NAL unit, with room for all its captions.
void CheckParsed(const fuzz::Bytes &nal, const SEI_cc_t &captions) {
    constexpr size_t kAroundCaptions = 11;
    const SEI_message_t &header = captions.header;
    FUZZ_CHECK(header.payload_size >= kAroundCaptions + size_t{captions.cc_data.cc_count} * 3);
    FUZZ_CHECK(size_t{header.payload_index} + header.payload_size <= fuzz::Sodb(nal).size());
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    ForEachNalUnit(data, size, {kPrefixSeiNut, kSuffixSeiNut}, GenerateSei,
                   [](const Bytes &nal, FuzzInput *input) {
                       const DiscardedTrace trace(input);
                       const auto record = AnyRecord<SEI_cc_t>(input);
                       const SEI_cc_t before = *record;
                       ExactBuffer buffer(nal);
                       if (H265Lib_Parse_sei_cc_nal(buffer.data(), buffer.length(), record.get()))
                           CheckParsed(nal, *record);
                       else
                           FUZZ_CHECK(std::memcmp(record.get(), &before, sizeof before) == 0);
                       FUZZ_CHECK(buffer.Content() == nal);
                   });
    return 0;
}
