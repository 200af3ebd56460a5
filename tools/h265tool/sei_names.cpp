#include "sei_names.h"

#include <algorithm>
#include <array>

#include "nal_unit.h"

namespace h265tool {
namespace {

enum class In { kPrefix, kSuffix, kBoth };

struct Payload {
    unsigned int type;
    In in;
    const char *name;
};

constexpr auto kPayloads = std::to_array<Payload>({
    {kBufferingPeriod, In::kPrefix, "buffering_period"},
    {kPicTiming, In::kPrefix, "pic_timing"},
    {2, In::kPrefix, "pan_scan_rect"},
    {3, In::kBoth, "filler_payload"},
    {kUserDataRegistered, In::kBoth, "user_data_registered_itu_t_t35"},
    {kUserDataUnregistered, In::kBoth, "user_data_unregistered"},
    {6, In::kPrefix, "recovery_point"},
    {9, In::kPrefix, "scene_info"},
    {15, In::kPrefix, "picture_snapshot"},
    {16, In::kPrefix, "progressive_refinement_segment_start"},
    {17, In::kBoth, "progressive_refinement_segment_end"},
    {19, In::kPrefix, "film_grain_characteristics"},
    {22, In::kBoth, "post_filter_hint"},
    {23, In::kPrefix, "tone_mapping_info"},
    {45, In::kPrefix, "frame_packing_arrangement"},
    {47, In::kPrefix, "display_orientation"},
    {56, In::kPrefix, "green_metadata"},
    {128, In::kPrefix, "structure_of_pictures_info"},
    {kActiveParameterSets, In::kPrefix, "active_parameter_sets"},
    {kDecodingUnitInfo, In::kPrefix, "decoding_unit_info"},
    {131, In::kPrefix, "temporal_sub_layer_zero_idx"},
    {132, In::kSuffix, "decoded_picture_hash"},
    {133, In::kPrefix, "scalable_nesting"},
    {134, In::kPrefix, "region_refresh_info"},
    {135, In::kPrefix, "no_display"},
    {kTimeCode, In::kPrefix, "time_code"},
    {137, In::kPrefix, "mastering_display_colour_volume"},
    {138, In::kPrefix, "segmented_rect_frame_packing_arrangement"},
    {139, In::kPrefix, "temporal_motion_constrained_tile_sets"},
    {140, In::kPrefix, "chroma_resampling_filter_hint"},
    {141, In::kPrefix, "knee_function_info"},
    {142, In::kPrefix, "colour_remapping_info"},
    {143, In::kPrefix, "deinterlaced_field_identification"},
    {144, In::kPrefix, "content_light_level_info"},
    {145, In::kPrefix, "dependent_rap_indication"},
    {146, In::kBoth, "coded_region_completion"},
    {147, In::kPrefix, "alternative_transfer_characteristics"},
    {148, In::kPrefix, "ambient_viewing_environment"},
    {149, In::kPrefix, "content_colour_volume"},
    {150, In::kPrefix, "equirectangular_projection"},
    {151, In::kPrefix, "cubemap_projection"},
    {152, In::kPrefix, "fisheye_video_info"},
    {154, In::kPrefix, "sphere_rotation"},
    {155, In::kPrefix, "regionwise_packing"},
    {156, In::kPrefix, "omni_viewport"},
    {157, In::kPrefix, "regional_nesting"},
    {158, In::kPrefix, "mcts_extraction_info_sets"},
    {159, In::kPrefix, "mcts_extraction_info_nesting"},
    {160, In::kPrefix, "layers_not_present"},
    {161, In::kPrefix, "inter_layer_constrained_tile_sets"},
    {162, In::kPrefix, "bsp_nesting"},
    {163, In::kPrefix, "bsp_initial_arrival_time"},
    {164, In::kPrefix, "sub_bitstream_property"},
    {165, In::kPrefix, "alpha_channel_info"},
    {166, In::kPrefix, "overlay_info"},
    {167, In::kPrefix, "temporal_mv_prediction_constraints"},
    {168, In::kPrefix, "frame_field_info"},
    {176, In::kPrefix, "three_dimensional_reference_displays_info"},
    {177, In::kPrefix, "depth_representation_info"},
    {178, In::kPrefix, "multiview_scene_info"},
    {179, In::kPrefix, "multiview_acquisition_info"},
    {180, In::kPrefix, "multiview_view_position"},
    {181, In::kPrefix, "alternative_depth_info"},
    {200, In::kPrefix, "sei_manifest"},
    {201, In::kPrefix, "sei_prefix_indication"},
    {202, In::kPrefix, "annotated_regions"},
    {205, In::kPrefix, "shutter_interval_info"},
});

}  // namespace

std::string SeiPayloadName(uint64_t payload_type, unsigned int nal_unit_type) {
    const In elsewhere = nal_unit_type == kSuffixSei ? In::kPrefix : In::kSuffix;
    const auto *const payload =
        std::find_if(kPayloads.begin(), kPayloads.end(), [&](const Payload &candidate) {
            return candidate.type == payload_type && candidate.in != elsewhere;
        });
    return payload == kPayloads.end() ? kReservedSeiMessage : payload->name;
}

}  // namespace h265tool
