/*
 * Sets pic_struct in the picture timing messages of a stream, picture by picture.
 *
 *   set_pic_struct IN OUT N[,N...]        the numbers repeat, in the order in which pictures are output
 *
 * Frames: 0 progressive, 3 and 4 top or bottom field first, 5 and 6 with the first field repeated, 7 and 8
 * shown two or three times. Fields: 1 top, 2 bottom (Table D.2). Which of them fit, field_seq_flag of the VUI
 * tells.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "annexb.h"
#include "h265.h"
#include "pictures.h"

enum { MAX_PATTERN = 16, MAX_SEI = 1512 };

typedef struct pattern {
    unsigned char values[MAX_PATTERN];
    size_t count;
} pattern;

/* Returns 0, or -1 when the text is no list of pic_struct values. */
static int parse_pattern(const char *text, pattern *result) {
    result->count = 0;
    for (;;) {
        char *end = NULL;
        const unsigned long value = strtoul(text, &end, 10);
        if (end == text || value > 12 || result->count == MAX_PATTERN)
            return -1;
        result->values[result->count++] = (unsigned char)value;
        if (*end == '\0')
            return 0;
        if (*end != ',')
            return -1;
        text = end + 1;
    }
}

/*
 * Changes the picture timing messages of a SEI NAL unit. `bytes` has one byte more than `length`, and it is
 * zero: the new value can make an emulation prevention byte necessary. Returns 0, or -1 when a message cannot
 * be changed.
 */
static int change(unsigned char *bytes, UINT *length, const vui_h265_t *vui, unsigned char pic_struct) {
    static sei_h265_pic_timing_t timing; /* 8 KiB */
    int offset = 0, header = 0, kind = SUID_UNKNOWN;
    SEI_message_t message;
    BOOL more = TRUE;
    const UINT room = *length + 1;
    while (more) {
        if (!H265Lib_DetermineSEIType(bytes, (int)*length, &offset, &header, &message, &kind, &more))
            return 0; /* the walk ends at a message that the library does not know */
        if (kind != SUID_PICTURE_TIMING)
            continue;
        memset(&timing, 0, sizeof timing);
        if (!H265Lib_Parse_sei_pictiming_nal(bytes, (int)*length, &message, vui, &timing))
            return -1;
        timing.pic_struct = pic_struct;
        *length = room;
        if (!H265Lib_modify_pictiming_sei_NAL(bytes, length, vui, message.payload_index, &timing) ||
            *length <= (UINT)header + 2) /* a header alone: there was no room */
            return -1;
        memset(bytes + *length, 0, room - *length);
    }
    return 0;
}

static int rewrite(annexb_stream *stream, const picture_list *list, const pattern *values, FILE *out) {
    const picture *next = list->pictures;
    const picture *const end = list->pictures + list->count;
    unsigned char sei[MAX_SEI];
    annexb_nal nal;
    while (annexb_next(stream, &nal)) {
        if (annexb_starts_picture(&nal))
            next++;
        /* A prefix SEI message belongs to the picture that follows it. */
        if (nal.type == NAL_PREFIX_SEI && nal.layer_id == 0 && nal.size < MAX_SEI && next != end) {
            UINT length = (UINT)nal.size;
            memcpy(sei, nal.bytes, nal.size);
            sei[nal.size] = 0;
            if (change(sei, &length, &list->sps->vui, values->values[next->number % values->count]) != 0)
                return -1;
            annexb_write(out, sei, length);
        } else {
            annexb_write(out, nal.bytes, nal.size);
        }
    }
    return 0;
}

int main(int argc, char **argv) {
    pattern values;
    if (argc != 4 || parse_pattern(argv[3], &values) != 0) {
        fprintf(stderr, "usage: set_pic_struct IN OUT N[,N...]\n");
        return EXIT_FAILURE;
    }
    annexb_stream stream;
    if (annexb_load(&stream, argv[1]) != 0)
        return EXIT_FAILURE;
    int result = -1;
    picture_list list;
    if (pictures_find(&list, &stream) == 0) {
        FILE *out = NULL;
        if (!list.sps->vui.frame_field_info_present_flag)
            fprintf(stderr, "%s: its picture timing has no pic_struct\n", argv[1]);
        else if ((out = annexb_create(argv[2])) != NULL) {
            result = rewrite(&stream, &list, &values, out);
            if (annexb_close(out, argv[2]) != 0)
                result = -1;
        }
        pictures_release(&list);
    }
    annexb_release(&stream);
    return result == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
