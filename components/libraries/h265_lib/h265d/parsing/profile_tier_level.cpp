#include "h265d/parsing/profile_tier_level.h"

#include "common/read.h"

namespace {

// Whether the profile, or one that the layer is compatible with, is among `profiles`.
template <typename... Profiles>
bool IsOrIsCompatibleWith(unsigned char profile_idc, const int *compatibility_flag, Profiles... profiles) {
    return ((profile_idc == profiles || compatibility_flag[profiles]) || ...);
}

}  // namespace

int _parse_profile_tier_level(bitbuffer_t *sps_nalu_bb, unsigned char maxNumSubLayersMinus1,
                              profile_tier_level_t *ptl) {
    ASSERT_ARGUMENT(sps_nalu_bb != NULL);
    ASSERT_ARGUMENT(ptl != NULL);
    if (sps_nalu_bb == nullptr || ptl == nullptr || maxNumSubLayersMinus1 >= H265_PTL_SUB_LAYERS)
        return -1;
    TRACE(kFunction, "Called.\n");
    const auto compatible = [ptl](auto... profiles) {
        return IsOrIsCompatibleWith(ptl->general_profile_idc, ptl->general_profile_compatibility_flag,
                                    profiles...);
    };

    BitReader bb(sps_nalu_bb);
    READ_U(bb, 2, ptl, general_profile_space);
    READ_FLAG(bb, ptl, general_tier_flag);
    READ_U(bb, 5, ptl, general_profile_idc);
    READ_FLAGS(bb, ptl, general_profile_compatibility_flag);  // GCOVR_EXCL_BR_LINE: one of a cut run fails
    ptl->general_scantype_bitoffset = static_cast<int>(bb.offset());
    TRACE(kFunction, "Before general_progressive_source_flag, CurrentBitOffset:%d.\n", bb.offset());
    READ_FLAG(bb, ptl, general_progressive_source_flag);
    READ_FLAG(bb, ptl, general_interlaced_source_flag);
    READ_FLAG(bb, ptl, general_non_packed_constraint_flag);
    READ_FLAG(bb, ptl, general_frame_only_constraint_flag);
    if (compatible(4, 5, 6, 7, 8, 9, 10)) {
        ptl_general_profile_idc_4_10 *block = &ptl->u_general.profile_4_10;
        READ_FLAG(bb, block, max_12bits_constraint_flag);
        READ_FLAG(bb, block, max_10bits_constraint_flag);
        READ_FLAG(bb, block, max_8bits_constraint_flag);
        READ_FLAG(bb, block, max_422chroma_constraint_flag);
        READ_FLAG(bb, block, max_420chroma_constraint_flag);
        READ_FLAG(bb, block, max_monochrome_constraint_flag);
        READ_FLAG(bb, block, intra_constraint_flag);
        READ_FLAG(bb, block, one_picture_only_constraint_flag);
        READ_FLAG(bb, block, lower_bitrate_constraint_flag);
        if (compatible(5, 9, 10)) {
            // reported under the name of its neighbour
            READ_FLAG_AS(bb, block->max_14bits_constraint_flag,
                         "cannot parse lower_bitrate_constraint_flag.\n");
            READ_U(bb, 33, block, reserved_zero_33bits);
        } else {
            READ_U(bb, 34, block, reserved_zero_34bits);
        }
    } else if (compatible(2)) {
        ptl_general_profile_idc_2 *block = &ptl->u_general.profile_2;
        READ_U(bb, 7, block, reserved_zero_7bits);
        READ_FLAG(bb, block, one_picture_only_constraint_flag);
        READ_U(bb, 35, block, reserved_zero_35bits);
    } else {
        // 43 bits are read, the text says 44
        READ_U_AS(bb, 43, ptl->u_general.reserved_zero_43bits, "cannot parse reserved_zero_44bits.\n");
    }

    if (compatible(1, 2, 3, 4, 5, 9))
        READ_FLAG(bb, ptl, general_inbld_flag);
    else
        READ_FLAG(bb, ptl, general_reserved_zero_bit);
    READ_U(bb, 8, ptl, general_level_idc);

    for (int i = 0; i < maxNumSubLayersMinus1; i++) {
        READ_FLAG(bb, ptl, sub_layer_profile_present_flag, i);
        READ_FLAG(bb, ptl, sub_layer_level_present_flag, i);
    }
    if (maxNumSubLayersMinus1 > 0) {
        for (int i = maxNumSubLayersMinus1; i < H265_PTL_SUB_LAYERS; i++)
            READ_U(bb, 2, ptl, reserved_zero_2bits, i);
    }
    for (int i = 0; i < maxNumSubLayersMinus1; i++) {
        if (ptl->sub_layer_profile_present_flag[i]) {
            const auto sub_layer_compatible = [ptl, i](auto... profiles) {
                return IsOrIsCompatibleWith(ptl->sub_layer_profile_idc[i],
                                            ptl->sub_layer_profile_compatibility_flag[i], profiles...);
            };
            READ_U(bb, 2, ptl, sub_layer_profile_space, i);
            READ_FLAG(bb, ptl, sub_layer_tier_flag, i);
            // reported under the name of its neighbour
            READ_U_AS(bb, 5, ptl->sub_layer_profile_idc[i], "cannot parse sub_layer_profile_space[%d].\n", i);
            READ_FLAGS(bb, ptl, sub_layer_profile_compatibility_flag, i);  // GCOVR_EXCL_BR_LINE: one fails
            READ_FLAG(bb, ptl, sub_layer_progressive_source_flag, i);
            READ_FLAG(bb, ptl, sub_layer_interlaced_source_flag, i);
            READ_FLAG(bb, ptl, sub_layer_non_packed_constrained_flag, i);
            READ_FLAG(bb, ptl, sub_layer_frame_only_constrained_flag, i);
            if (sub_layer_compatible(4, 5, 6, 7, 8, 9, 10)) {
                ptl_general_profile_idc_4_10 *block = &ptl->u_sub_layer[i].profile_4_10;
                READ_FLAG_AS(bb, block->max_12bits_constraint_flag,
                             "cannot parse sub_layer_max_12bits_constraint_flag[%d].\n", i);
                READ_FLAG_AS(bb, block->max_10bits_constraint_flag,
                             "cannot parse sub_layer_max_10bits_constraint_flag[%d].\n", i);
                READ_FLAG_AS(bb, block->max_8bits_constraint_flag,
                             "cannot parse sub_layer_max_8bits_constraint_flag[%d].\n", i);
                READ_FLAG_AS(bb, block->max_422chroma_constraint_flag,
                             "cannot parse sub_layer_max_422chroma_constraint_flag[%d].\n", i);
                READ_FLAG_AS(bb, block->max_420chroma_constraint_flag,
                             "cannot parse sub_layer_max_420chroma_constraint_flag[%d].\n", i);
                READ_FLAG_AS(bb, block->max_monochrome_constraint_flag,
                             "cannot parse sub_layer_max_monochrome_constraint_flag[%d].\n", i);
                READ_FLAG_AS(bb, block->intra_constraint_flag,
                             "cannot parse sub_layer_intra_constraint_flag[%d].\n", i);
                READ_FLAG_AS(bb, block->one_picture_only_constraint_flag,
                             "cannot parse sub_layer_one_picture_only_constraint_flag[%d].\n", i);
                READ_FLAG_AS(bb, block->lower_bitrate_constraint_flag,
                             "cannot parse sub_layer_lower_bitrate_constraint_flag[%d].\n", i);
                // profile 5 alone: 9 and 10 have the 34 bits here, unlike the general part
                if (sub_layer_compatible(5)) {
                    READ_FLAG_AS(bb, block->max_14bits_constraint_flag,
                                 "cannot parse max_14bits_constraint_flag[%d].\n", i);
                    READ_U_AS(bb, 33, block->reserved_zero_33bits, "cannot parse reserved_zero_33bits[%d].\n",
                              i);
                } else {
                    // 34 bits are read, the text says 35
                    READ_U_AS(bb, 34, block->reserved_zero_34bits,
                              "cannot parse sub_layer_reserved_zero_35bits[%d].\n", i);
                }
            } else if (sub_layer_compatible(2)) {
                ptl_general_profile_idc_2 *block = &ptl->u_sub_layer[i].profile_2;
                // the first two are reported under the names of other elements
                READ_U_AS(bb, 7, block->reserved_zero_7bits, "cannot parse sub_layer_profile_space[%d].\n",
                          i);
                READ_FLAG_AS(bb, block->one_picture_only_constraint_flag,
                             "cannot parse sub_layer_tier_flag[%d].\n", i);
                READ_U_AS(bb, 35, block->reserved_zero_35bits,
                          "cannot parse sub_layer_reserved_zero_35bits[%d].\n", i);
            } else {
                // 43 bits are read, the text says 44
                READ_U_AS(bb, 43, ptl->u_sub_layer[i].reserved_zero_43bits,
                          "cannot parse sub_layer_reserved_zero_44bits[%d].\n", i);
            }

            // whatever the profile: sub_layer_reserved_zero_bit is never filled
            READ_FLAG(bb, ptl, sub_layer_inbld_flag, i);
        }
        if (ptl->sub_layer_level_present_flag[i])
            READ_U(bb, 8, ptl, sub_layer_level_idc, i);
    }
    TRACE(kFunction, "Done.\n");
    return 0;
}
