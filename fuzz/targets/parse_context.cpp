// H265Lib_Parse_sps_nal_ex and H265Lib_Parse_pps_nal_ex: a row of parameter sets, some of them again, through
// one context. What is remembered is what a parse into the same record gave.

#include <cstring>
#include <memory>

#include "h265.h"
#include "support/byte_stream.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

namespace {

using fuzz::Bytes;
using fuzz::ExactBuffer;
using fuzz::FuzzInput;

template <typename Record>
void CheckSame(const Record &record, const Record &other) {
    FUZZ_CHECK(std::memcmp(&record, &other, sizeof(Record)) == 0);
}

// Into a cleared record each time, or right into the context.
void ParseSps(const Bytes &nal, bool in_place, H265D_PARSE_CONTEXT *context) {
    ExactBuffer buffer(nal);
    const auto cleared = std::make_unique<sps_h265_t>();
    if (in_place) {
        H265Lib_Parse_sps_nal_ex(buffer.data(), buffer.size(), context, &context->last_parsed_sps);
        return;
    }
    if (!H265Lib_Parse_sps_nal_ex(buffer.data(), buffer.size(), context, cleared.get()))
        return;
    const auto again = std::make_unique<sps_h265_t>();
    FUZZ_CHECK(H265Lib_Parse_sps_nal_ex(buffer.data(), buffer.size(), context, again.get()));
    CheckSame(*cleared, *again);
}

void ParsePps(const Bytes &nal, bool in_place, H265D_PARSE_CONTEXT *context) {
    ExactBuffer buffer(nal);
    const auto cleared = std::make_unique<pps_h265_t>();
    const unsigned int length = buffer.unsigned_length();
    if (in_place) {
        H265Lib_Parse_pps_nal_ex(buffer.data(), length, context, &context->last_parsed_pps);
        return;
    }
    if (!H265Lib_Parse_pps_nal_ex(buffer.data(), length, context, cleared.get()))
        return;
    const auto again = std::make_unique<pps_h265_t>();
    FUZZ_CHECK(H265Lib_Parse_pps_nal_ex(buffer.data(), length, context, again.get()));
    CheckSame(*cleared, *again);
}

void ParseAll(const std::vector<Bytes> &units, FuzzInput *input, H265D_PARSE_CONTEXT *context) {
    constexpr size_t kMostParses = 16;
    for (size_t parses = 0; parses < kMostParses && !input->IsUsedUp(); parses++) {
        const Bytes &nal = units[input->Below(static_cast<uint32_t>(units.size()))];
        const bool in_place = input->Below(8) == 0;
        if (input->Flag())
            ParseSps(nal, in_place, context);
        else
            ParsePps(nal, in_place, context);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const Bytes bytes(data, data + size);
    const bool is_stream = fuzz::StartCodeLength(bytes) != 0;
    FuzzInput input = is_stream ? FuzzInput::Random(size) : FuzzInput(data, size);
    const fuzz::DiscardedTrace trace(&input);
    // a context that was not zeroed must be survived; what it remembers is anything then
    const auto context = fuzz::AnyRecord<H265D_PARSE_CONTEXT>(&input);
    const std::vector<Bytes> units =
        is_stream ? fuzz::Split(bytes)
                  : std::vector<Bytes>{fuzz::GenerateSps(&input), fuzz::GeneratePps(&input)};
    ParseAll(units, &input, context.get());
    return 0;
}
