// H265Lib_modify_vps_NAL: exactly the three source flags change, or nothing.

#include <memory>

#include "h265.h"
#include "support/byte_stream.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/nal_unit.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

namespace {

using fuzz::Bytes;
using fuzz::ExactBuffer;
using fuzz::FuzzInput;

// The NAL unit with the flags of an interlaced source; as it was where that does not fit.
Bytes Interlaced(const Bytes &nal, const vps_h265_t &vps) {
    const auto position = static_cast<size_t>(vps.ptl.general_scantype_bitoffset);
    Bytes sodb = fuzz::Sodb(nal);
    fuzz::SetBits(&sodb, position, 2, 0b01);   // progressive, interlaced
    fuzz::SetBits(&sodb, position + 3, 1, 0);  // frame-only constraint
    const Bytes payload = test::Encapsulated(sodb);
    const size_t header = fuzz::StartCodeLength(nal) + fuzz::kNalUnitHeaderSize;
    Bytes modified = nal;
    if (header + payload.size() <= nal.size())
        std::copy(payload.begin(), payload.end(), modified.begin() + static_cast<std::ptrdiff_t>(header));
    return modified;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::ForEachNalUnit(
        data, size, {fuzz::kVpsNut}, fuzz::GenerateVps, [](const Bytes &nal, FuzzInput *input) {
            const fuzz::DiscardedTrace trace(input);
            ExactBuffer buffer(nal);
            const auto vps = std::make_unique<vps_h265_t>();
            vps->cprms_present_flag[0] = 1;
            const BOOL parsed = H265Lib_Parse_vps_nal(buffer.data(), buffer.size(), vps.get());
            const BOOL modified = H265Lib_modify_vps_NAL(buffer.data(), buffer.unsigned_length());
            FUZZ_CHECK(modified == parsed);
            FUZZ_CHECK(buffer.Content() == (modified ? Interlaced(nal, *vps) : nal));
        });
    return 0;
}
