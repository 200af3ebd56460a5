/*
 * Adds captions, active format and time code to every picture of a stream.
 *
 *   add_ancillary_data IN OUT TEXT AFD HH:MM:SS:FF        the time code is that of the first picture
 *
 * The captions are roll-up CEA-608 captions of field 1. What the stream has already stays: give it one that
 * has none of these messages.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "annexb.h"
#include "h265.h"
#include "pictures.h"

typedef struct ancillary_data {
    const char *text;
    unsigned char active_format;
    unsigned long first_frame; /* the time code, as a number of frames since midnight */
    int rate;                  /* pictures per second times 1000 */
    const sps_h265_t *sps;
} ancillary_data;

/* CEA-608 characters have seven bits, and a bit that makes the number of ones odd. */
static unsigned char with_parity(unsigned char character) {
    unsigned int ones = 0;
    for (unsigned int bits = character & 0x7FU; bits != 0; bits >>= 1)
        ones += bits & 1;
    return (unsigned char)((character & 0x7F) | (ones % 2 == 0 ? 0x80 : 0));
}

/* One byte pair for each picture: control codes, each of them twice; the text; then nothing. */
static vanc_t caption_of(const ancillary_data *data, size_t number) {
    static const unsigned char controls[4][2] = {{0x14, 0x25}, {0x14, 0x25}, {0x14, 0x2D}, {0x14, 0x2D}};
    const size_t length = strlen(data->text);
    unsigned char pair[2] = {0, 0};
    if (number < 4) {
        memcpy(pair, controls[number], sizeof pair);
    } else {
        const size_t at = (number - 4) * 2;
        pair[0] = at < length ? (unsigned char)data->text[at] : 0;
        pair[1] = at + 1 < length ? (unsigned char)data->text[at + 1] : 0;
    }
    vanc_t entry = {0};
    entry.suid = SUID_CLOSED_CAPTION;
    entry.vanc_data.caption.flag = 1; /* valid */
    entry.vanc_data.caption.type = 0; /* CEA-608, field 1 */
    entry.vanc_data.caption.data1 = with_parity(pair[0]);
    entry.vanc_data.caption.data2 = with_parity(pair[1]);
    return entry;
}

static vanc_t active_format_of(const ancillary_data *data) {
    vanc_t entry = {0};
    entry.suid = SUID_AFD;
    entry.vanc_data.afd_data.active_format_flag = 1;
    entry.vanc_data.afd_data.active_format = data->active_format;
    return entry;
}

static unsigned long frames_per_second(int rate) {
    return ((unsigned long)rate + 500) / 1000;
}

/* As an embedded time code has it: digit by digit. Nothing is dropped: Flag1 is 0. */
static vitc_t time_code_of(const ancillary_data *data, size_t number) {
    const unsigned long per_second = frames_per_second(data->rate);
    const unsigned long frame = data->first_frame + number;
    const unsigned long frames = frame % per_second;
    const unsigned long seconds = frame / per_second % 60;
    const unsigned long minutes = frame / per_second / 60 % 60;
    const unsigned long hours = frame / per_second / 3600 % 24;
    vitc_t time_code = {0};
    time_code.FrameUnits = (unsigned char)(frames % 10);
    time_code.FrameTens = (unsigned char)(frames / 10);
    time_code.SecondUnits = (unsigned char)(seconds % 10);
    time_code.SecondTens = (unsigned char)(seconds / 10);
    time_code.MinuteUnits = (unsigned char)(minutes % 10);
    time_code.MinuteTens = (unsigned char)(minutes / 10);
    time_code.HourUnits = (unsigned char)(hours % 10);
    time_code.HourTens = (unsigned char)(hours / 10);
    return time_code;
}

/* Writes the three messages of a picture. Returns 0, or -1 when one cannot be built. */
static int write_messages(FILE *out, const ancillary_data *data, size_t number, const annexb_nal *slice) {
    unsigned char sei[256];
    const vanc_t entries[] = {caption_of(data, number), active_format_of(data)}; /* of this picture */

    const vitc_t time_code = time_code_of(data, number);
    SEI_time_code_info_t info = {0};
    info.FrameRate = data->rate;
    info.enTimeSource = EMBEDDED_TIME_CODE;
    info.pParsedSps = data->sps;
    int length = H265Lib_format_sei_time_code_nal(sei, sizeof sei, &time_code, &info);
    if (length <= 5) /* a header without a message */
        return -1;
    pictures_write_sei(out, sei, (size_t)length, slice);

    length = H265Lib_format_sei_afd_nal(sei, sizeof sei, entries, sizeof entries);
    if (length <= 0)
        return -1;
    pictures_write_sei(out, sei, (size_t)length, slice);

    /* Receivers expect 600 constructs in a second, CTA-708: 20 a picture at 29.97 Hz, padding included. */
    const int cc_count = (int)(600 / frames_per_second(data->rate));
    length = H265Lib_format_sei_cc_nal(sei, sizeof sei, entries, sizeof entries, cc_count, NULL);
    if (length <= 0)
        return -1;
    pictures_write_sei(out, sei, (size_t)length, slice);
    return 0;
}

static int rewrite(annexb_stream *stream, const picture_list *list, const ancillary_data *data, FILE *out) {
    const picture *next = list->pictures;
    annexb_nal nal;
    while (annexb_next(stream, &nal)) {
        /* Prefix SEI messages stand in front of the first slice of their picture. */
        if (annexb_starts_picture(&nal) && write_messages(out, data, next++->number, &nal) != 0)
            return -1;
        annexb_write(out, nal.bytes, nal.size);
    }
    return 0;
}

/* Returns 0, or -1 when the text is no time code at this rate. The library's time codes count up to 85
 * frames. */
static int parse_time_code(const char *text, ancillary_data *data) {
    const unsigned long per_second = frames_per_second(data->rate);
    unsigned int hours = 0, minutes = 0, seconds = 0, frames = 0;
    if (sscanf(text, "%2u:%2u:%2u:%2u", &hours, &minutes, &seconds, &frames) != 4 || hours > 23 ||
        minutes > 59 || seconds > 59 || frames >= per_second || per_second > 86)
        return -1;
    data->first_frame = ((hours * 60 + minutes) * 60 + seconds) * per_second + frames;
    return 0;
}

int main(int argc, char **argv) {
    if (argc != 6 || strtoul(argv[4], NULL, 10) > 15) {
        fprintf(stderr, "usage: add_ancillary_data IN OUT TEXT AFD HH:MM:SS:FF\n");
        return EXIT_FAILURE;
    }
    annexb_stream stream;
    if (annexb_load(&stream, argv[1]) != 0)
        return EXIT_FAILURE;
    int result = -1;
    picture_list list;
    if (pictures_find(&list, &stream) == 0) {
        ancillary_data data = {0};
        data.text = argv[3];
        data.active_format = (unsigned char)strtoul(argv[4], NULL, 10);
        data.rate = pictures_rate(&list);
        data.sps = list.sps;
        FILE *out = NULL;
        if (data.rate == 0 || parse_time_code(argv[5], &data) != 0)
            fprintf(stderr, "%s: no such time code in this stream\n", argv[5]);
        else if ((out = annexb_create(argv[2])) != NULL) {
            result = rewrite(&stream, &list, &data, out);
            if (annexb_close(out, argv[2]) != 0)
                result = -1;
        }
        pictures_release(&list);
    }
    annexb_release(&stream);
    return result == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
