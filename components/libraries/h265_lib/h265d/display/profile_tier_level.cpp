#include "h265d/display/show.h"
#include "h265d/display/sub_structures.h"

namespace {

constexpr int kLevel = kInformation;

// Profiles 4 to 7 have constraint flags here; those of profiles 8 to 10 are printed as 43 bits.
bool HasConstraintFlags(unsigned char profile_idc, const int *compatibility_flag) {
    for (int profile = 4; profile <= 7; profile++) {
        if (profile_idc == profile || compatibility_flag[profile])
            return true;
    }
    return false;
}

bool HasInbldFlag(unsigned char profile_idc, const int *compatibility_flag) {
    for (int profile = 1; profile <= 5; profile++) {
        if (profile_idc == profile || compatibility_flag[profile])
            return true;
    }
    return false;
}

}  // namespace

void _display_profile_tier_level(const profile_tier_level_t *ptl, unsigned char maxNumSubLayersMinus1) {
    // The nine flags and the reserved bits of profiles 4 to 7, alike for the general part and the sub-layers.
    const TraceSite site = TRACE_SITE;
    const auto show_constraint_flags = [&site](const ptl_general_profile_idc_4_10 &block) {
        const auto flag = [&site](const char *element, int value) {
            ShowSigned(site, kLevel, element, value);
        };
        flag("max_12bits_constraint_flag", block.max_12bits_constraint_flag);
        flag("max_10bits_constraint_flag", block.max_10bits_constraint_flag);
        flag("max_8bits_constraint_flag", block.max_8bits_constraint_flag);
        flag("max_422chroma_constraint_flag", block.max_422chroma_constraint_flag);
        flag("max_420chroma_constraint_flag", block.max_420chroma_constraint_flag);
        flag("max_monochrome_constraint_flag", block.max_monochrome_constraint_flag);
        flag("intra_constraint_flag", block.intra_constraint_flag);
        flag("one_picture_only_constraint_flag", block.one_picture_only_constraint_flag);
        flag("lower_bitrate_constraint_flag", block.lower_bitrate_constraint_flag);
        TraceAt(site, kLevel, "reserved_zero_34bits=%llu.\n",
                static_cast<unsigned long long>(block.reserved_zero_34bits));
    };

    ASSERT_ARGUMENT(ptl != NULL);
    if (ptl == nullptr || !TraceLetsThrough(kLevel))
        return;
    SHOW_U(ptl, general_profile_space);  // GCOVR_EXCL_BR_LINE: just found to be let through
    SHOW_FLAG(ptl, general_tier_flag);
    SHOW_U(ptl, general_profile_idc);
    for (int j = 0; j < H265_PTL_COMPATIBILITY_FLAGS; j++)
        SHOW_U(ptl, general_profile_compatibility_flag, j);
    SHOW_FLAG(ptl, general_progressive_source_flag);
    SHOW_FLAG(ptl, general_interlaced_source_flag);
    SHOW_FLAG(ptl, general_non_packed_constraint_flag);
    SHOW_FLAG(ptl, general_frame_only_constraint_flag);
    if (HasConstraintFlags(ptl->general_profile_idc, ptl->general_profile_compatibility_flag))
        show_constraint_flags(ptl->u_general.profile_4_10);
    else
        SHOW("reserved_zero_43bits=%llu.\n",
             static_cast<unsigned long long>(ptl->u_general.reserved_zero_43bits));
    if (HasInbldFlag(ptl->general_profile_idc, ptl->general_profile_compatibility_flag))
        SHOW_U(ptl, general_inbld_flag);
    else  // with the value of the other flag
        SHOW("general_reserved_zero_bit=%u.\n", AS_U(ptl->general_inbld_flag));
    SHOW_U(ptl, general_level_idc);

    const int sub_layers = Shown(maxNumSubLayersMinus1, H265_PTL_SUB_LAYERS);
    for (int i = 0; i < sub_layers; i++) {
        SHOW_U(ptl, sub_layer_profile_present_flag, i);
        SHOW_U(ptl, sub_layer_level_present_flag, i);
    }
    if (sub_layers > 0) {
        for (int i = sub_layers; i < H265_PTL_SUB_LAYERS; i++)
            SHOW_U(ptl, reserved_zero_2bits, i);
    }
    for (int i = 0; i < sub_layers; i++) {
        if (ptl->sub_layer_profile_present_flag[i]) {
            SHOW_U(ptl, sub_layer_profile_space, i);
            SHOW_FLAG(ptl, sub_layer_tier_flag, i);
            SHOW_U(ptl, sub_layer_profile_idc, i);
            for (int j = 0; j < H265_PTL_COMPATIBILITY_FLAGS; j++)
                SHOW("sub_layer_profile_compatibility_flag[%d]=%u.\n", j,
                     AS_U(ptl->sub_layer_profile_compatibility_flag[i][j]));
            SHOW_U(ptl, sub_layer_progressive_source_flag, i);
            SHOW_U(ptl, sub_layer_interlaced_source_flag, i);
            SHOW_U(ptl, sub_layer_non_packed_constrained_flag, i);
            SHOW_U(ptl, sub_layer_frame_only_constrained_flag, i);
            // profile 4 alone, unlike the general part
            if (ptl->sub_layer_profile_idc[i] == 4 || ptl->sub_layer_profile_compatibility_flag[i][4])
                show_constraint_flags(ptl->u_sub_layer[i].profile_4_10);
            else
                SHOW("reserved_zero_43bits=%llu.\n",
                     static_cast<unsigned long long>(ptl->u_sub_layer[i].reserved_zero_43bits));
        }
        if (ptl->sub_layer_level_present_flag[i])
            SHOW_U(ptl, sub_layer_level_idc, i);
    }
}
