// The records as JSON objects: every syntax element that the stream carries under the name of its record
// field, present exactly where the syntax has it. Arrays keep their indices: null stands for an entry that
// the syntax skips. The functions read like the syntax tables.

#ifndef H265TOOL_JSON_JSON_H
#define H265TOOL_JSON_JSON_H

#include <nlohmann/json.hpp>

#include "h265.h"
#include "nal_unit.h"
#include "reading/unit_reader.h"

namespace h265tool {

using Json = nlohmann::ordered_json;

// Parts of other records.
Json ToJson(const profile_tier_level_t &ptl, int max_sub_layers_minus1);
Json ToJson(const hrd_h265_t &hrd, bool common_inf_present, int max_sub_layers_minus1);
Json ToJson(const scaling_list_data_t &scaling_list);
Json ToJson(const vui_h265_t &vui, int max_sub_layers_minus1);

// strps: all short-term reference picture sets of the SPS.
Json ShortTermRefPicSetsToJson(const sps_h265_t &sps);

// What a NAL unit holds.
Json ToJson(const vps_h265_t &vps);
Json ToJson(const sps_h265_t &sps);
Json ToJson(const pps_h265_t &pps);
Json ToJson(const Slice &slice);
Json ToJson(const aud_h265_t &aud);
Json ToJson(const SeiMessage &message);
Json ToJson(const sei_h265_time_code_t &time_code);
Json ToJson(const SEI_cc_t &captions);
Json ToJson(const SEI_afd_t &afd);

// A NAL unit with its place in the stream.
Json ToJson(const NalUnit &unit, const UnitContent &content);

// The matrices of a size in scaling_list_data( ), clause 7.3.4: sizeId 3 has 0 and 3 only.
constexpr int ScalingListMatrixStep(int sizeId) {
    return sizeId == 3 ? 3 : 1;
}

constexpr int ScalingListCoefNum(int sizeId) {
    return sizeId == 0 ? 16 : H265_SCALING_LIST_COEFFICIENTS;
}

}  // namespace h265tool

#endif
