#include "edit/rewrite_vps.h"

#include <memory>

#include "edit/rewriting_result.h"
#include "json/json.h"
#include "reading/rbsp.h"
#include "reading/vps.h"
#include "unit_error.h"

namespace h265tool {

NalUnit InterlacedVps(const NalUnit &unit, const vps_h265_t &vps, Diagnostics *diagnostics) {
    Json expected = ToJson(vps);
    const Json before = expected;
    expected["ptl"]["general_progressive_source_flag"] = 0;
    expected["ptl"]["general_interlaced_source_flag"] = 1;
    expected["ptl"]["general_frame_only_constraint_flag"] = 0;
    if (expected == before)
        return unit;

    NalUnit rewritten = unit;
    diagnostics->Clear();
    if (!H265Lib_modify_vps_NAL(rewritten.head.data(), static_cast<unsigned int>(rewritten.head.size())))
        throw UnitError(diagnostics->FirstError());
    // Where emulation prevention went away, the result is shorter than the buffer, which ends as it did.
    const size_t payload_size = Rbsp(unit).size();
    while (Rbsp(rewritten).size() > payload_size)
        rewritten.head.pop_back();
    rewritten.size = rewritten.head.size();

    const auto actual = std::make_unique<vps_h265_t>();
    if (!ReadVps(rewritten, diagnostics, actual.get()))
        throw UnitError("rewriting failed: " + diagnostics->FirstError());
    CheckRewritten(expected, ToJson(*actual));
    return rewritten;
}

}  // namespace h265tool
