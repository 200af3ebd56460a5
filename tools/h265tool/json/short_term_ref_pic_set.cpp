#include <algorithm>
#include <vector>

#include "json/put.h"

namespace h265tool {
namespace {

using PocDeltas = std::vector<int64_t>;  // of the pictures of one set: S0, then S1, each nearest first

// How many flags a set has that is predicted from `ref`.
int FlagCount(const PocDeltas &ref) {
    return static_cast<int>(std::min<size_t>(ref.size() + 1, H265_RPS_PICTURES));
}

PocDeltas ExplicitSet(const short_term_ref_pic_set_t &set) {
    PocDeltas deltas;
    int64_t delta = 0;
    for (UINT64 i = 0; i < set.num_negative_pics; i++)
        deltas.push_back(delta -= static_cast<int64_t>(set.delta_poc_s0_minus1[i]) + 1);
    delta = 0;
    for (UINT64 i = 0; i < set.num_positive_pics; i++)
        deltas.push_back(delta += static_cast<int64_t>(set.delta_poc_s1_minus1[i]) + 1);
    return deltas;
}

// Equations 7-61 and 7-62: the pictures of the reference set and the one of the reference itself, moved by
// deltaRps, as far as the flags keep them and they are not the current picture.
PocDeltas PredictedSet(const short_term_ref_pic_set_t &set, const PocDeltas &ref) {
    const int64_t magnitude = static_cast<int64_t>(set.abs_delta_rps_minus1) + 1;
    const int64_t deltaRps = set.delta_rps_sign ? -magnitude : magnitude;
    PocDeltas deltas;
    for (int j = 0; j < FlagCount(ref); j++) {
        const auto index = static_cast<size_t>(j);
        const int64_t delta = deltaRps + (index < ref.size() ? ref[index] : 0);
        if (delta != 0 && (set.used_by_current_pic_flag[j] || set.used_delta_flag[j]))
            deltas.push_back(delta);
    }
    std::sort(deltas.begin(), deltas.end(), [](int64_t a, int64_t b) {
        const bool a_follows = a > 0;
        const bool b_follows = b > 0;
        return a_follows != b_follows ? b_follows : (a_follows ? a < b : a > b);
    });
    return deltas;
}

// st_ref_pic_set( stRpsIdx ) of an SPS, clause 7.3.7; `ref`: the set before it.
Json ToJson(const short_term_ref_pic_set_t &set, bool is_first, const PocDeltas &ref) {
    Json json;
    if (!is_first)
        PUT(json, set, inter_ref_pic_set_prediction_flag);
    if (set.inter_ref_pic_set_prediction_flag) {
        PUT(json, set, delta_rps_sign);
        PUT(json, set, abs_delta_rps_minus1);
        for (int j = 0; j < FlagCount(ref); j++) {
            PUT(json, set, used_by_current_pic_flag, j);
            if (!set.used_by_current_pic_flag[j])
                PUT(json, set, used_delta_flag, j);
        }
        return json;
    }
    PUT(json, set, num_negative_pics);
    PUT(json, set, num_positive_pics);
    for (int i = 0; i < static_cast<int>(set.num_negative_pics); i++) {
        PUT(json, set, delta_poc_s0_minus1, i);
        PUT(json, set, used_by_current_pic_s0_flag, i);
    }
    for (int i = 0; i < static_cast<int>(set.num_positive_pics); i++) {
        PUT(json, set, delta_poc_s1_minus1, i);
        PUT(json, set, used_by_current_pic_s1_flag, i);
    }
    return json;
}

}  // namespace

Json ShortTermRefPicSetsToJson(const sps_h265_t &sps) {
    Json json = Json::array();
    PocDeltas before;
    for (UINT64 i = 0; i < sps.num_short_term_ref_pics_sets; i++) {
        const short_term_ref_pic_set_t &set = sps.strps[i];
        json.push_back(ToJson(set, i == 0, before));
        before = set.inter_ref_pic_set_prediction_flag ? PredictedSet(set, before) : ExplicitSet(set);
    }
    return json;
}

}  // namespace h265tool
