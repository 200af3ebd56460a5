// Marks a stream as interlaced, and sets the rate that its VUI tells.
//
//   mark_interlaced IN OUT UNITS SCALE        a tick of UNITS / SCALE seconds: 1001 30000 for 29.97
//   pictures/s
//
// Only the parameter sets are rewritten; everything else stays as it is.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "annexb.h"
#include "h265.h"

namespace {

struct Timing {
    UINT64 num_units_in_tick;
    UINT64 time_scale;
};

struct ReleaseSpsBuffer {
    void operator()(unsigned char *buffer) const { H265Lib_Release_sps_buffer(buffer); }
};
using SpsBuffer = std::unique_ptr<unsigned char, ReleaseSpsBuffer>;

// The bytes behind the NAL unit header, without emulation prevention; -1 when they cannot be told.
int PayloadSize(const annexb_nal &nal) {
    std::vector<unsigned char> payload(nal.size);
    return H265Lib_SODB_deencapsulation_from_NAL(nal.bytes + nal.header,
                                                 static_cast<unsigned int>(nal.size - nal.header),
                                                 payload.data(), static_cast<unsigned int>(payload.size()));
}

// The VPS is changed where it stands.
bool MarkVps(annexb_nal *nal, const Timing &timing) {
    const auto vps = std::make_unique<vps_h265_t>();  // far too large for a stack, and zero
    vps->cprms_present_flag[0] = 1;                   // never coded: H.265 infers it to be 1
    if (!H265Lib_Parse_vps_nal(nal->bytes, nal->size, vps.get()))
        return false;
    if (vps->vps_timing_info_present_flag && (vps->vps_num_units_in_tick != timing.num_units_in_tick ||
                                              vps->vps_time_scale != timing.time_scale)) {
        std::fprintf(stderr, "the VPS tells another rate, and VPS and VUI have to agree\n");
        return false;
    }
    const int payload_size = PayloadSize(*nal);
    if (!H265Lib_modify_vps_NAL(nal->bytes, static_cast<unsigned int>(nal->size)))
        return false;
    // With an emulation prevention byte less, the NAL unit ends earlier; what is behind it was there before.
    while (PayloadSize(*nal) > payload_size)
        nal->size--;
    return true;
}

// The SPS can grow, and comes in a buffer of its own.
bool MarkSps(const annexb_nal &nal, const Timing &timing, SpsBuffer *rewritten, UINT *length) {
    const auto sps = std::make_unique<sps_h265_t>();
    if (!H265Lib_Parse_sps_nal(nal.bytes, nal.size, sps.get()))
        return false;
    sps->ptl.general_progressive_source_flag = 0;
    sps->ptl.general_interlaced_source_flag = 1;
    sps->vui_parameters_present_flag = 1;  // without one so far, the rest of it is zero, as the record was
    sps->vui.vui_timing_info_present_flag = 1;
    sps->vui.vui_num_units_in_tick = timing.num_units_in_tick;
    sps->vui.vui_time_scale = timing.time_scale;
    unsigned char *buffer = nullptr;
    if (!H265Lib_modify_sps_NAL(nal.bytes, static_cast<unsigned int>(nal.size), sps.get(), &buffer, length))
        return false;
    rewritten->reset(buffer);
    return *length > nal.header + 2;  // no more than a header: it did not fit
}

bool Rewrite(annexb_stream *stream, const Timing &timing, FILE *out) {
    annexb_nal nal;
    while (annexb_next(stream, &nal)) {
        if (nal.layer_id == 0 && nal.type == NAL_SPS) {
            SpsBuffer rewritten;
            UINT length = 0;
            if (!MarkSps(nal, timing, &rewritten, &length))
                return false;
            annexb_write(out, rewritten.get(), length);
            continue;
        }
        if (nal.layer_id == 0 && nal.type == NAL_VPS && !MarkVps(&nal, timing))
            return false;
        annexb_write(out, nal.bytes, nal.size);
    }
    return true;
}

}  // namespace

int main(int argc, char **argv) {
    const Timing timing = {argc == 5 ? std::strtoul(argv[3], nullptr, 10) : 0,
                           argc == 5 ? std::strtoul(argv[4], nullptr, 10) : 0};
    if (timing.num_units_in_tick == 0 || timing.time_scale == 0 || timing.num_units_in_tick > UINT32_MAX ||
        timing.time_scale > UINT32_MAX) {
        std::fprintf(stderr, "usage: mark_interlaced IN OUT UNITS SCALE\n");
        return EXIT_FAILURE;
    }
    annexb_stream stream;
    if (annexb_load(&stream, argv[1]) != 0)
        return EXIT_FAILURE;
    bool done = false;
    if (FILE *const out = annexb_create(argv[2])) {
        const bool rewritten = Rewrite(&stream, timing, out);
        if (!rewritten)
            std::fprintf(stderr, "%s: a parameter set cannot be rewritten\n", argv[1]);
        done = annexb_close(out, argv[2]) == 0 && rewritten;
    }
    annexb_release(&stream);
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
