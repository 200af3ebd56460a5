#include "pictures.h"

#include <stdlib.h>
#include <string.h>

/* What picture order counts are derived from. */
typedef struct order_state {
    int64_t previous; /* PicOrderCntVal of prevTid0Pic, clause 8.3.1 */
    size_t sequence;
} order_state;

/* Leading pictures, and sub-layer non-reference pictures: the even types up to 14. */
static int is_previous_of_later_ones(const annexb_nal *slice) {
    return slice->id_plus1 == 1 && !(slice->type >= NAL_RADL_N && slice->type <= NAL_RASL_R) &&
           !(slice->type <= NAL_RSV_VCL_N14 && slice->type % 2 == 0);
}

static void count_order(picture *entry, int is_first, const annexb_nal *slice, const sps_h265_t *sps,
                        const ssh_h265_t *header, order_state *state) {
    const int64_t max_lsb = (int64_t)1 << (sps->log2_max_pic_order_cnt_lsb_minus4 + 4);
    const int64_t lsb = (int64_t)header->slice_pic_order_cnt_lsb;
    const int starts_sequence = is_first || (slice->type >= NAL_BLA_W_LP && slice->type <= NAL_IDR_N_LP);
    if (starts_sequence) {
        if (!is_first)
            state->sequence++;
        entry->order_count = lsb;
    } else {
        const int64_t previous_lsb = state->previous & (max_lsb - 1);
        int64_t msb = state->previous - previous_lsb;
        if (lsb < previous_lsb && previous_lsb - lsb >= max_lsb / 2)
            msb += max_lsb;
        else if (lsb > previous_lsb && lsb - previous_lsb > max_lsb / 2)
            msb -= max_lsb;
        entry->order_count = msb + lsb;
    }
    entry->sequence = state->sequence;
    if (starts_sequence || is_previous_of_later_ones(slice))
        state->previous = entry->order_count;
}

static int by_output(const void *left, const void *right) {
    const picture *a = *(picture *const *)left;
    const picture *b = *(picture *const *)right;
    if (a->sequence != b->sequence)
        return a->sequence < b->sequence ? -1 : 1;
    return (a->order_count > b->order_count) - (a->order_count < b->order_count);
}

static int number_in_output_order(picture_list *list) {
    picture **sorted = malloc(list->count * sizeof *sorted);
    if (sorted == NULL)
        return -1;
    for (size_t i = 0; i < list->count; i++)
        sorted[i] = &list->pictures[i];
    qsort(sorted, list->count, sizeof *sorted, by_output);
    for (size_t i = 0; i < list->count; i++)
        sorted[i]->number = i;
    free(sorted);
    return 0;
}

static picture *append(picture_list *list) {
    picture *larger = realloc(list->pictures, (list->count + 1) * sizeof *larger);
    if (larger == NULL)
        return NULL;
    list->pictures = larger;
    return &list->pictures[list->count++];
}

static const char *find(picture_list *list, annexb_stream *stream, pps_h265_t *pps) {
    order_state state = {0, 0};
    annexb_nal nal;
    while (annexb_next(stream, &nal)) {
        if (nal.layer_id != 0)
            continue;
        if (nal.type == NAL_SPS) {
            memset(list->sps, 0, sizeof *list->sps);
            if (!H265Lib_Parse_sps_nal(nal.bytes, nal.size, list->sps) ||
                list->sps->log2_max_pic_order_cnt_lsb_minus4 > 12)
                return "an SPS that cannot be read";
        } else if (nal.type == NAL_PPS) {
            memset(pps, 0, sizeof *pps);
            if (!H265Lib_Parse_pps_nal(nal.bytes, (int)nal.size, pps))
                return "a PPS that cannot be read";
        } else if (annexb_starts_picture(&nal)) {
            ssh_h265_t header = {0};
            if (!H265Lib_Parse_slice_header_nal(nal.bytes, (int)nal.size, list->sps, pps, &header))
                return "a slice header that cannot be read";
            picture *entry = append(list);
            if (entry == NULL)
                return "too many pictures";
            count_order(entry, list->count == 1, &nal, list->sps, &header, &state);
        }
    }
    if (list->count == 0)
        return "no picture";
    return number_in_output_order(list) == 0 ? NULL : "too many pictures";
}

int pictures_find(picture_list *list, annexb_stream *stream) {
    memset(list, 0, sizeof *list);
    stream->position = 0;
    list->sps = calloc(1, sizeof *list->sps);
    pps_h265_t *pps = calloc(1, sizeof *pps);
    const char *problem = list->sps != NULL && pps != NULL ? find(list, stream, pps) : "no memory";
    free(pps);
    stream->position = 0;
    if (problem == NULL)
        return 0;
    fprintf(stderr, "the stream has %s\n", problem);
    pictures_release(list);
    return -1;
}

void pictures_release(picture_list *list) {
    free(list->pictures);
    free(list->sps);
    memset(list, 0, sizeof *list);
}

int pictures_rate(const picture_list *list) {
    const vui_h265_t *vui = &list->sps->vui;
    if (vui->vui_timing_info_present_flag && vui->vui_num_units_in_tick != 0) {
        const uint64_t rate = vui->vui_time_scale * 1000 / vui->vui_num_units_in_tick;
        if (rate >= 1000 && rate <= 1000000)
            return (int)rate;
    }
    fprintf(stderr, "the stream does not tell its rate\n");
    return 0;
}

void pictures_write_sei(FILE *file, unsigned char *sei, size_t size, const annexb_nal *slice) {
    sei[4] = slice->id_plus1; /* behind 00 00 01 4E; nuh_layer_id, in the same byte, is 0 */
    annexb_write(file, sei, size);
}
