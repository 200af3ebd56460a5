#include "json/put.h"

namespace h265tool {
namespace {

// The profile that decides about the syntax, or one that the layer is compatible with, is among `profiles`.
template <typename... Profiles>
bool IsOrIsCompatibleWith(unsigned char profile_idc, const int *compatibility_flag, Profiles... profiles) {
    return ((profile_idc == profiles || compatibility_flag[profiles]) || ...);
}

// The 43 bits behind the source flags. max_14bits_constraint_flag: whether it was read.
Json ToJson(const in_profile_tier_level_t &bits, unsigned char profile_idc, const int *compatibility_flag,
            bool has_max_14bits) {
    Json json;
    if (IsOrIsCompatibleWith(profile_idc, compatibility_flag, 4, 5, 6, 7, 8, 9, 10)) {
        Json &block = json["profile_4_10"];
        PUT(block, bits.profile_4_10, max_12bits_constraint_flag);
        PUT(block, bits.profile_4_10, max_10bits_constraint_flag);
        PUT(block, bits.profile_4_10, max_8bits_constraint_flag);
        PUT(block, bits.profile_4_10, max_422chroma_constraint_flag);
        PUT(block, bits.profile_4_10, max_420chroma_constraint_flag);
        PUT(block, bits.profile_4_10, max_monochrome_constraint_flag);
        PUT(block, bits.profile_4_10, intra_constraint_flag);
        PUT(block, bits.profile_4_10, one_picture_only_constraint_flag);
        PUT(block, bits.profile_4_10, lower_bitrate_constraint_flag);
        if (has_max_14bits) {
            PUT(block, bits.profile_4_10, max_14bits_constraint_flag);
            PUT(block, bits.profile_4_10, reserved_zero_33bits);
        } else {
            PUT(block, bits.profile_4_10, reserved_zero_34bits);
        }
    } else if (IsOrIsCompatibleWith(profile_idc, compatibility_flag, 2)) {
        Json &block = json["profile_2"];
        PUT(block, bits.profile_2, reserved_zero_7bits);
        PUT(block, bits.profile_2, one_picture_only_constraint_flag);
        PUT(block, bits.profile_2, reserved_zero_35bits);
    } else {
        PUT(json, bits, reserved_zero_43bits);
    }
    return json;
}

void PutSubLayerProfile(const profile_tier_level_t &ptl, int i, Json *json) {
    const unsigned char profile_idc = ptl.sub_layer_profile_idc[i];
    const int *const compatibility_flag = ptl.sub_layer_profile_compatibility_flag[i];
    PUT(*json, ptl, sub_layer_profile_space, i);
    PUT(*json, ptl, sub_layer_tier_flag, i);
    PUT(*json, ptl, sub_layer_profile_idc, i);
    for (int j = 0; j < H265_PTL_COMPATIBILITY_FLAGS; j++)
        PUT(*json, ptl, sub_layer_profile_compatibility_flag, i, j);
    PUT(*json, ptl, sub_layer_progressive_source_flag, i);
    PUT(*json, ptl, sub_layer_interlaced_source_flag, i);
    PUT(*json, ptl, sub_layer_non_packed_constrained_flag, i);
    PUT(*json, ptl, sub_layer_frame_only_constrained_flag, i);
    // the library reads max_14bits_constraint_flag of a sub-layer for profile 5 alone
    (*json)["u_sub_layer"][static_cast<size_t>(i)] =
        ToJson(ptl.u_sub_layer[i], profile_idc, compatibility_flag,
               IsOrIsCompatibleWith(profile_idc, compatibility_flag, 5));
    PUT(*json, ptl, sub_layer_inbld_flag, i);
}

}  // namespace

// profile_tier_level( 1, maxNumSubLayersMinus1 ), clause 7.3.3.
Json ToJson(const profile_tier_level_t &ptl, int max_sub_layers_minus1) {
    const auto compatible = [&ptl](auto... profiles) {
        return IsOrIsCompatibleWith(ptl.general_profile_idc, ptl.general_profile_compatibility_flag,
                                    profiles...);
    };
    Json json;
    PUT(json, ptl, general_profile_space);
    PUT(json, ptl, general_tier_flag);
    PUT(json, ptl, general_profile_idc);
    for (int j = 0; j < H265_PTL_COMPATIBILITY_FLAGS; j++)
        PUT(json, ptl, general_profile_compatibility_flag, j);
    PUT(json, ptl, general_progressive_source_flag);
    PUT(json, ptl, general_interlaced_source_flag);
    PUT(json, ptl, general_non_packed_constraint_flag);
    PUT(json, ptl, general_frame_only_constraint_flag);
    json["u_general"] = ToJson(ptl.u_general, ptl.general_profile_idc, ptl.general_profile_compatibility_flag,
                               compatible(5, 9, 10));
    if (compatible(1, 2, 3, 4, 5, 9))
        PUT(json, ptl, general_inbld_flag);
    else
        PUT(json, ptl, general_reserved_zero_bit);
    PUT(json, ptl, general_level_idc);
    for (int i = 0; i < max_sub_layers_minus1; i++) {
        PUT(json, ptl, sub_layer_profile_present_flag, i);
        PUT(json, ptl, sub_layer_level_present_flag, i);
    }
    if (max_sub_layers_minus1 > 0) {
        for (int i = max_sub_layers_minus1; i < H265_PTL_SUB_LAYERS; i++)
            PUT(json, ptl, reserved_zero_2bits, i);
    }
    for (int i = 0; i < max_sub_layers_minus1; i++) {
        if (ptl.sub_layer_profile_present_flag[i])
            PutSubLayerProfile(ptl, i, &json);
        if (ptl.sub_layer_level_present_flag[i])
            PUT(json, ptl, sub_layer_level_idc, i);
    }
    return json;
}

}  // namespace h265tool
