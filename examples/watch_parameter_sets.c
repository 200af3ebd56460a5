/*
 * Watches the parameter sets of a stream, and prints what they say at first and what changes later.
 *
 *   watch_parameter_sets IN
 */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "annexb.h"
#include "h265.h"

/* Far too large for a stack: the context alone has about 260 KiB. Static storage is zero to begin with. */
static H265D_PARSE_CONTEXT context;
static vps_h265_t vps, known_vps[16];
static sps_h265_t sps, known_sps[16];
static pps_h265_t pps, known_pps[64];
static int have_vps[16], have_sps[16], have_pps[64];

static size_t offset; /* of the NAL unit, for the log */

static void log_field(const char *set, uint64_t id, const char *field, int was_known, uint64_t before,
                      uint64_t now) {
    if (!was_known)
        printf("%8zu  %s %" PRIu64 ": %s %" PRIu64 "\n", offset, set, id, field, now);
    else if (before != now)
        printf("%8zu  %s %" PRIu64 ": %s %" PRIu64 " -> %" PRIu64 "\n", offset, set, id, field, before, now);
}

/* Compares one field of the record that was just read with the one of the same id that was known before. */
#define WATCH(set, id, field) \
    log_field(#set, id, #field, have_##set[id], (uint64_t)known_##set[id].field, (uint64_t)set.field)

static int watch_vps(const annexb_nal *nal) {
    memset(&vps, 0, sizeof vps);
    vps.cprms_present_flag[0] = 1; /* never coded: H.265 infers it to be 1 */
    if (!H265Lib_Parse_vps_nal(nal->bytes, nal->size, &vps))
        return -1;
    const unsigned int id = vps.vps_video_parameter_set_id; /* u(4) */
    WATCH(vps, id, vps_max_layers_minus1);
    WATCH(vps, id, vps_max_sub_layers_minus1);
    WATCH(vps, id, vps_timing_info_present_flag);
    WATCH(vps, id, vps_num_units_in_tick);
    WATCH(vps, id, vps_time_scale);
    known_vps[id] = vps;
    have_vps[id] = 1;
    return 0;
}

static int watch_sps(const annexb_nal *nal) {
    memset(&sps, 0, sizeof sps);
    /* A NAL unit that equals the last one costs a comparison and a copy; nothing is parsed again. */
    if (!H265Lib_Parse_sps_nal_ex(nal->bytes, nal->size, &context, &sps) || sps.seq_parameter_set_id > 15)
        return -1;
    const uint64_t id = sps.seq_parameter_set_id;
    WATCH(sps, id, ptl.general_profile_idc);
    WATCH(sps, id, ptl.general_level_idc);
    WATCH(sps, id, ptl.general_progressive_source_flag);
    WATCH(sps, id, ptl.general_interlaced_source_flag);
    WATCH(sps, id, chroma_format_idc);
    WATCH(sps, id, pic_width_in_luma_samples);
    WATCH(sps, id, pic_height_in_luma_samples);
    WATCH(sps, id, bit_depth_luma_minus8);
    WATCH(sps, id, log2_min_luma_coding_block_size_minus3);
    WATCH(sps, id, log2_diff_max_min_luma_coding_block_size);
    WATCH(sps, id, vui.field_seq_flag);
    WATCH(sps, id, vui.vui_num_units_in_tick);
    WATCH(sps, id, vui.vui_time_scale);
    WATCH(sps, id, vui.vui_hrd_parameters_present_flag);
    known_sps[id] = sps;
    have_sps[id] = 1;
    return 0;
}

static int watch_pps(const annexb_nal *nal) {
    memset(&pps, 0, sizeof pps);
    if (!H265Lib_Parse_pps_nal_ex(nal->bytes, (unsigned int)nal->size, &context, &pps) ||
        pps.pps_pic_parameter_set_id > 63)
        return -1;
    const uint64_t id = pps.pps_pic_parameter_set_id;
    WATCH(pps, id, pps_seq_parameter_set_id);
    WATCH(pps, id, sign_data_hiding_enabled_flag);
    WATCH(pps, id, cu_qp_delta_enabled_flag);
    WATCH(pps, id, weighted_pred_flag);
    WATCH(pps, id, tiles_enabled_flag);
    WATCH(pps, id, entropy_coding_sync_enabled_flag);
    known_pps[id] = pps;
    have_pps[id] = 1;
    return 0;
}

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: watch_parameter_sets IN\n");
        return EXIT_FAILURE;
    }
    annexb_stream stream;
    if (annexb_load(&stream, argv[1]) != 0)
        return EXIT_FAILURE;
    int status = EXIT_SUCCESS;
    annexb_nal nal;
    while (annexb_next(&stream, &nal)) {
        if (nal.layer_id != 0) /* whose parameter sets have extensions of their own */
            continue;
        offset = (size_t)(nal.bytes - stream.bytes);
        const int result = nal.type == NAL_VPS   ? watch_vps(&nal)
                           : nal.type == NAL_SPS ? watch_sps(&nal)
                           : nal.type == NAL_PPS ? watch_pps(&nal)
                                                 : 0;
        if (result != 0) { /* the library has said why */
            fprintf(stderr, "%s: %s at byte %zu cannot be read\n", argv[1], GetH265NalTypeString(nal.type),
                    offset);
            status = EXIT_FAILURE;
        }
    }
    annexb_release(&stream);
    return status;
}
