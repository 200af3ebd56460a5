#include "reading/vps.h"

#include <array>
#include <cstring>

namespace h265tool {
namespace {

// What the common part of hrd_parameters( ) tells about the presence of the rest.
struct CommonPart {
    int nal_hrd_parameters_present_flag;
    int vcl_hrd_parameters_present_flag;
    int sub_pic_hrd_params_present_flag;

    bool IsEmpty() const { return !nal_hrd_parameters_present_flag && !vcl_hrd_parameters_present_flag; }
};

using CommonParts = std::array<CommonPart, H265_VPS_HRDS>;

bool Parse(const NalUnit &unit, const CommonParts &inherited, Diagnostics *diagnostics, vps_h265_t *vps) {
    std::memset(vps, 0, sizeof *vps);
    vps->cprms_present_flag[0] = 1;
    for (size_t i = 0; i < inherited.size(); i++) {
        hrd_h265_t &hrd = vps->vps_hrd_parameters[i];
        hrd.nal_hrd_parameters_present_flag = inherited[i].nal_hrd_parameters_present_flag;
        hrd.vcl_hrd_parameters_present_flag = inherited[i].vcl_hrd_parameters_present_flag;
        hrd.sub_pic_hrd_params_present_flag = inherited[i].sub_pic_hrd_params_present_flag;
    }
    diagnostics->Clear();
    return H265Lib_Parse_vps_nal(unit.head.data(), unit.head.size(), vps) == TRUE;
}

}  // namespace

bool ReadVps(const NalUnit &unit, Diagnostics *diagnostics, vps_h265_t *vps) {
    CommonParts inherited{};
    bool parsed = Parse(unit, inherited, diagnostics, vps);
    if (!vps->vps_timing_info_present_flag)
        return parsed;
    // A parse is right up to the first HRD that had something to inherit; the next pass gives it that.
    for (size_t i = 1; i < inherited.size() && i < vps->vps_num_hrd_parameters; i++) {
        const hrd_h265_t &before = vps->vps_hrd_parameters[i - 1];
        const CommonPart common = {before.nal_hrd_parameters_present_flag,
                                   before.vcl_hrd_parameters_present_flag,
                                   before.sub_pic_hrd_params_present_flag};
        if (vps->cprms_present_flag[i] || common.IsEmpty())
            continue;
        inherited[i] = common;
        parsed = Parse(unit, inherited, diagnostics, vps);
    }
    return parsed;
}

}  // namespace h265tool
