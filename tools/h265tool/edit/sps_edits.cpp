#include "edit/sps_edits.h"

#include "text.h"
#include "unit_error.h"

namespace h265tool {
namespace {

constexpr unsigned char kUnspecifiedVideoFormat = 5;  // Table E.2

// SubWidthC and SubHeightC, Table 6-1.
struct ChromaUnit {
    uint64_t width;
    uint64_t height;
};

ChromaUnit ChromaUnitOf(const sps_h265_t &sps) {
    const bool half_width = sps.chroma_format_idc == 1 || sps.chroma_format_idc == 2;
    return {half_width ? 2U : 1U, sps.chroma_format_idc == 1 ? 2U : 1U};
}

void ApplySize(const PictureSize &size, sps_h265_t *sps) {
    constexpr uint64_t kMaxMinCbLog2Size = 6;
    if (sps->log2_min_luma_coding_block_size_minus3 + 3 > kMaxMinCbLog2Size)
        throw UnitError("log2_min_luma_coding_block_size_minus3 is above 3");
    const uint64_t MinCbSizeY = uint64_t{8} << sps->log2_min_luma_coding_block_size_minus3;
    if (size.width % MinCbSizeY != 0 || size.height % MinCbSizeY != 0)
        throw UnitError(
            Text("--size: the sides of the pictures have to be multiples of MinCbSizeY, ", MinCbSizeY));
    sps->pic_width_in_luma_samples = size.width;
    sps->pic_height_in_luma_samples = size.height;
}

uint64_t InUnits(uint32_t samples, uint64_t unit, const char *unit_name) {
    if (samples % unit != 0)
        throw UnitError(Text("--crop: ", samples, " is no multiple of ", unit_name, ", ", unit));
    return samples / unit;
}

void ApplyCrop(const CropWindow &crop, sps_h265_t *sps) {
    const bool is_empty = crop.left == 0 && crop.right == 0 && crop.top == 0 && crop.bottom == 0;
    if (!sps->conformance_window_flag) {
        if (is_empty)
            return;
        throw UnitError(
            "--crop: it has no conformance window (conformance_window_flag is 0), and rewriting changes a "
            "window but cannot add one");
    }
    const ChromaUnit unit = ChromaUnitOf(*sps);
    sps->conf_win_left_offset = InUnits(crop.left, unit.width, "SubWidthC");
    sps->conf_win_right_offset = InUnits(crop.right, unit.width, "SubWidthC");
    sps->conf_win_top_offset = InUnits(crop.top, unit.height, "SubHeightC");
    sps->conf_win_bottom_offset = InUnits(crop.bottom, unit.height, "SubHeightC");
}

// Something of the pictures has to be left (clauses 7.4.3.2.1 and E.3.1).
void CheckWindows(const sps_h265_t &sps) {
    uint64_t columns = 0;
    uint64_t rows = 0;
    const auto check = [&](const char *window) {
        const ChromaUnit unit = ChromaUnitOf(sps);
        if (columns * unit.width >= sps.pic_width_in_luma_samples ||
            rows * unit.height >= sps.pic_height_in_luma_samples)
            throw UnitError(Text("the ", window, " leaves nothing of pictures of ",
                                 sps.pic_width_in_luma_samples, "x", sps.pic_height_in_luma_samples));
    };
    if (sps.conformance_window_flag) {
        columns += sps.conf_win_left_offset + sps.conf_win_right_offset;
        rows += sps.conf_win_top_offset + sps.conf_win_bottom_offset;
        check("conformance window");
    }
    if (sps.vui_parameters_present_flag && sps.vui.default_display_window_flag) {
        columns += sps.vui.def_disp_win_left_offset + sps.vui.def_disp_win_right_offset;
        rows += sps.vui.def_disp_win_top_offset + sps.vui.def_disp_win_bottom_offset;
        check("default display window");
    }
}

void ApplyInterlaced(profile_tier_level_t *ptl) {
    ptl->general_progressive_source_flag = 0;
    ptl->general_interlaced_source_flag = 1;
    ptl->general_frame_only_constraint_flag = 0;
}

void ApplyAspectRatio(const AspectRatio &aspect_ratio, vui_h265_t *vui) {
    vui->aspect_ratio_info_present_flag = 1;
    vui->aspect_ratio_idc = aspect_ratio.aspect_ratio_idc;
    vui->sar_width = aspect_ratio.sar_width;
    vui->sar_height = aspect_ratio.sar_height;
}

// The elements that come along say what their absence said.
void AddVideoSignalType(vui_h265_t *vui) {
    if (vui->video_signal_type_present_flag)
        return;
    vui->video_signal_type_present_flag = 1;
    vui->video_format = kUnspecifiedVideoFormat;
    vui->video_full_range_flag = 0;
    vui->colour_description_present_flag = 0;
}

// What clause E.3.1 allows matrix_coeffs to be.
void CheckMatrix(unsigned char matrix_coeffs, const sps_h265_t &sps) {
    const bool is_444 = sps.chroma_format_idc == 3;
    const UINT64 luma = sps.bit_depth_luma_minus8;
    const UINT64 chroma = sps.bit_depth_chroma_minus8;
    if (matrix_coeffs == 0 && !(is_444 && chroma == luma))
        throw UnitError("--colour: matrix_coeffs 0 (GBR) needs 4:4:4 with equal bit depths");
    if (matrix_coeffs == 8 && chroma != luma && !(is_444 && chroma == luma + 1))
        throw UnitError("--colour: matrix_coeffs 8 (YCgCo) does not fit the bit depths");
}

void ApplyColour(const ColourDescription &colour, sps_h265_t *sps) {
    CheckMatrix(colour.matrix_coeffs, *sps);
    vui_h265_t *const vui = &sps->vui;
    AddVideoSignalType(vui);
    vui->colour_description_present_flag = 1;
    vui->colour_primaries = colour.colour_primaries;
    vui->transfer_characteristics = colour.transfer_characteristics;
    vui->matrix_coeffs = colour.matrix_coeffs;
}

void ApplyRange(bool full, vui_h265_t *vui) {
    AddVideoSignalType(vui);
    vui->video_full_range_flag = full ? 1 : 0;
}

void ApplyTiming(const TimingInfo &timing, vui_h265_t *vui) {
    vui->vui_timing_info_present_flag = 1;
    vui->vui_num_units_in_tick = timing.num_units_in_tick;
    vui->vui_time_scale = timing.time_scale;
}

// Fields need pic_struct in their picture timing (clause E.3.1).
void ApplyFieldSeq(sps_h265_t *sps) {
    if (sps->ptl.general_frame_only_constraint_flag)
        throw UnitError(
            "--field-seq: general_frame_only_constraint_flag is 1, which fields are not (--interlaced clears "
            "it)");
    sps->vui.field_seq_flag = 1;
    sps->vui.frame_field_info_present_flag = 1;
}

void ApplyHrd(const HrdFields &fields, sps_h265_t *sps) {
    if (!sps->vui.vui_timing_info_present_flag)
        throw UnitError(
            "--hrd: it has no timing information, which HRD parameters come with (--timing or --fps adds "
            "it)");
    ApplyHrdFields(fields, sps->sps_max_sub_layers_minus1, &sps->vui);
}

}  // namespace

void ApplyEdits(const EditRequest &request, sps_h265_t *sps) {
    if (request.interlaced)
        ApplyInterlaced(&sps->ptl);
    if (request.size.has_value())
        ApplySize(*request.size, sps);
    if (request.crop.has_value())
        ApplyCrop(*request.crop, sps);
    if (request.size.has_value() || request.crop.has_value())
        CheckWindows(*sps);
    if (request.ChangesVui())
        sps->vui_parameters_present_flag = 1;
    if (request.aspect_ratio.has_value())
        ApplyAspectRatio(*request.aspect_ratio, &sps->vui);
    if (request.colour.has_value())
        ApplyColour(*request.colour, sps);
    if (request.full_range.has_value())
        ApplyRange(*request.full_range, &sps->vui);
    if (request.timing.has_value())
        ApplyTiming(*request.timing, &sps->vui);
    if (request.field_seq)
        ApplyFieldSeq(sps);
    if (request.hrd.has_value())
        ApplyHrd(*request.hrd, sps);
}

}  // namespace h265tool
