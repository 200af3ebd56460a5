// Rewriting parameter sets: from the bytes of an SPS to those of one with another VUI, beside the copy of the
// bytes.

#include <cstdlib>
#include <cstring>
#include <memory>

#include "h265.h"
#include "operation.h"
#include "samples.h"

namespace bench {

namespace {

using Rewrite = decltype(H265Lib_modify_sps_NAL);

// Other shape of the samples, colour, range and rate; the peers set the same.
void Edit(vui_h265_t *vui) {
    vui->aspect_ratio_info_present_flag = 1;
    vui->aspect_ratio_idc = 5;  // 40:33
    vui->video_signal_type_present_flag = 1;
    vui->video_full_range_flag = 0;
    vui->colour_description_present_flag = 1;
    vui->colour_primaries = 1;
    vui->transfer_characteristics = 1;
    vui->matrix_coeffs = 1;
    vui->vui_timing_info_present_flag = 1;
    vui->vui_num_units_in_tick = 1001;
    vui->vui_time_scale = 60000;
}

bool WriteAnew(const Bytes &nal, const sps_h265_t *sps, Rewrite *rewrite) {
    unsigned char *result = nullptr;
    UINT length = 0;
    const BOOL done = rewrite(nal.data(), static_cast<unsigned int>(nal.size()), sps, &result, &length);
    benchmark::DoNotOptimize(result);
    H265Lib_Release_sps_buffer(result);
    return done && length > 5;
}

// Parse, edit and write, as the peers do it.
void AddRewrite(const NalCase &rewritten, const char *who, Rewrite *rewrite) {
    Add(rewritten.name + "/" + who, [&nal = rewritten.nal, rewrite] {
        return [&nal, rewrite, sps = std::make_shared<sps_h265_t>()] {
            if (!H265Lib_Parse_sps_nal(nal.data(), nal.size(), sps.get()))
                return false;
            Edit(&sps->vui);
            return WriteAnew(nal, sps.get(), rewrite);
        };
    });
}

void AddWriting(const NalCase &rewritten) {
    Add(rewritten.name + "/ours_parse_left_out", [&nal = rewritten.nal] {
        const auto sps = std::make_shared<sps_h265_t>();
        H265Lib_Parse_sps_nal(nal.data(), nal.size(), sps.get());
        Edit(&sps->vui);
        return [&nal, sps] { return WriteAnew(nal, sps.get(), H265Lib_modify_sps_NAL); };
    });
}

// The limit: the result's heap block, cleared and filled.
void AddLimit(const NalCase &rewritten) {
    Add(rewritten.name + "/calloc_memcpy_free", [&nal = rewritten.nal] {
        return [&nal] {
            void *result = std::calloc(1, nal.size() + 256);
            std::memcpy(result, nal.data(), nal.size());
            benchmark::DoNotOptimize(result);
            std::free(result);
            return true;
        };
    });
}

}  // namespace

void AddRewriting() {
    for (const NalCase &rewritten : RewrittenSps()) {
        AddRewrite(rewritten, "ours", H265Lib_modify_sps_NAL);
        AddRewrite(rewritten, "ours_vui_alone", H265Lib_Set_sps_vui_parameters_NAL);
        AddWriting(rewritten);
        AddLimit(rewritten);
    }
    Add("vps_rewrite/interlaced/ours", [] {
        return [nal = FirstNal(ReadSample("progressive-hrd-vui.hevc"), 32)]() mutable {
            return H265Lib_modify_vps_NAL(nal.data(), static_cast<unsigned int>(nal.size())) != FALSE;
        };
    });
}

}  // namespace bench
