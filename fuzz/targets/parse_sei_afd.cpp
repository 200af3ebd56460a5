// H265Lib_Parse_sei_afd_nal: what fails leaves the record as it was.

#include <cstring>

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
    ForEachNalUnit(data, size, {kPrefixSeiNut, kSuffixSeiNut}, GenerateSei,
                   [](const Bytes &nal, FuzzInput *input) {
                       const DiscardedTrace trace(input);
                       const auto record = AnyRecord<SEI_afd_t>(input);
                       const SEI_afd_t before = *record;
                       ExactBuffer buffer(nal);
                       if (!H265Lib_Parse_sei_afd_nal(buffer.data(), buffer.length(), record.get()))
                           FUZZ_CHECK(std::memcmp(record.get(), &before, sizeof before) == 0);
                       FUZZ_CHECK(buffer.Content() == nal);
                   });
    return 0;
}
