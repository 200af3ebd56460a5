#include "edit/rewrite_sps.h"

#include <vector>

#include "edit/rewriting_result.h"
#include "json/difference.h"
#include "json/json.h"
#include "reading/rbsp.h"
#include "unit_error.h"

namespace h265tool {
namespace {

// Among what edits change.
bool EqualOutsideVui(const sps_h265_t &a, const sps_h265_t &b) {
    const auto equal = [&](auto... fields) { return ((a.*fields == b.*fields) && ...); };
    const auto equal_in_ptl = [&](auto... fields) { return ((a.ptl.*fields == b.ptl.*fields) && ...); };
    return equal_in_ptl(&profile_tier_level_t::general_progressive_source_flag,
                        &profile_tier_level_t::general_interlaced_source_flag,
                        &profile_tier_level_t::general_frame_only_constraint_flag) &&
           equal(&sps_h265_t::pic_width_in_luma_samples, &sps_h265_t::pic_height_in_luma_samples,
                 &sps_h265_t::conf_win_left_offset, &sps_h265_t::conf_win_right_offset,
                 &sps_h265_t::conf_win_top_offset, &sps_h265_t::conf_win_bottom_offset);
}

struct ReleaseSpsBuffer {
    void operator()(unsigned char *buffer) const { H265Lib_Release_sps_buffer(buffer); }
};

NalUnit CallLibrary(const NalUnit &unit, const sps_h265_t &edited, bool vui_alone, Diagnostics *diagnostics) {
    unsigned char *buffer = nullptr;
    UINT length = 0;
    const auto rewrite = vui_alone ? H265Lib_Set_sps_vui_parameters_NAL : H265Lib_modify_sps_NAL;
    diagnostics->Clear();
    if (!rewrite(unit.head.data(), static_cast<unsigned int>(unit.head.size()), &edited, &buffer, &length))
        throw UnitError(diagnostics->FirstError());
    const std::unique_ptr<unsigned char, ReleaseSpsBuffer> owner(buffer);
    return Rewritten(unit, {buffer, length});
}

// From sps_extension_present_flag to the stop bit.
std::vector<bool> Tail(const NalUnit &unit, const sps_h265_t &sps) {
    const std::vector<unsigned char> rbsp = Rbsp(unit);
    std::vector<bool> bits;
    for (size_t i = static_cast<size_t>(sps.sps_extension_present_offset); i < rbsp.size() * 8; i++)
        bits.push_back((rbsp[i / 8] >> (7 - i % 8) & 1) != 0);
    while (!bits.empty() && !bits.back())
        bits.pop_back();
    return bits;
}

}  // namespace

RewrittenSps RewriteSps(const NalUnit &unit, const sps_h265_t &sps, const sps_h265_t &edited,
                        Diagnostics *diagnostics) {
    if (!FirstDifference(ToJson(sps), ToJson(edited)))
        return {unit, std::make_unique<sps_h265_t>(sps)};
    const bool vui_alone = EqualOutsideVui(sps, edited);
    const auto expected = std::make_unique<sps_h265_t>(edited);
    expected->vui_parameters_present_flag = 1;
    if (!vui_alone) {
        expected->ptl.general_non_packed_constraint_flag = 0;
        expected->ptl.general_frame_only_constraint_flag = 0;
    }

    RewrittenSps rewritten = {CallLibrary(unit, *expected, vui_alone, diagnostics),
                              std::make_unique<sps_h265_t>()};
    diagnostics->Clear();
    if (!H265Lib_Parse_sps_nal(rewritten.unit.head.data(), rewritten.unit.head.size(), rewritten.sps.get()))
        throw UnitError("rewriting failed: " + diagnostics->FirstError());
    // the record keeps the last bit of extension data, which may be padding
    expected->sps_extension_data_flag = rewritten.sps->sps_extension_data_flag;
    CheckRewritten(ToJson(*expected), ToJson(*rewritten.sps));
    if (Tail(unit, sps) != Tail(rewritten.unit, *rewritten.sps))
        throw UnitError("rewriting failed: what follows the VUI changed");
    return rewritten;
}

}  // namespace h265tool
