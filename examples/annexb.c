#include "annexb.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

static int report(const char *path) {
    fprintf(stderr, "%s: %s\n", path, strerror(errno));
    return -1;
}

/* Reads up to the end, whatever the size. Returns 0, or -1 with errno set. */
static int read_all(FILE *file, annexb_stream *stream) {
    size_t capacity = 0;
    do {
        if (stream->size == capacity) {
            capacity = capacity == 0 ? 65536 : capacity * 2;
            unsigned char *larger = realloc(stream->bytes, capacity);
            if (larger == NULL)
                return -1;
            stream->bytes = larger;
        }
        stream->size += fread(stream->bytes + stream->size, 1, capacity - stream->size, file);
    } while (!feof(file) && !ferror(file));
    return ferror(file) ? -1 : 0;
}

int annexb_load(annexb_stream *stream, const char *path) {
    memset(stream, 0, sizeof *stream);
    FILE *file = fopen(path, "rb");
    if (file == NULL)
        return report(path);
    int result = read_all(file, stream);
    if (result != 0) {
        report(path);
        annexb_release(stream);
    }
    fclose(file);
    return result;
}

void annexb_release(annexb_stream *stream) {
    free(stream->bytes);
    memset(stream, 0, sizeof *stream);
}

/* The next 00 00 01 at `from` or behind it; the end of the stream when there is none. */
static size_t find_start_code(const annexb_stream *stream, size_t from) {
    for (size_t i = from; i + 3 <= stream->size; i++) {
        if (stream->bytes[i] == 0 && stream->bytes[i + 1] == 0 && stream->bytes[i + 2] == 1)
            return i;
    }
    return stream->size;
}

int annexb_next(annexb_stream *stream, annexb_nal *nal) {
    for (;;) {
        const size_t start_code = find_start_code(stream, stream->position);
        if (start_code == stream->size)
            return 0;
        const size_t header = start_code + 3;
        const size_t next = find_start_code(stream, header);
        /* A zero byte in front of 00 00 01 belongs to the start code, zero bytes at the end to nothing. */
        const size_t begin =
            start_code > stream->position && stream->bytes[start_code - 1] == 0 ? start_code - 1 : start_code;
        size_t end = next;
        while (end > header && stream->bytes[end - 1] == 0)
            end--;
        stream->position = end;
        if (end - header < 2)
            continue;
        nal->bytes = stream->bytes + begin;
        nal->size = end - begin;
        nal->header = header - begin;
        nal->type = stream->bytes[header] >> 1 & 0x3F;
        nal->layer_id = (stream->bytes[header] & 1U) << 5 | stream->bytes[header + 1] >> 3;
        nal->id_plus1 = stream->bytes[header + 1] & 7;
        return 1;
    }
}

int annexb_starts_picture(const annexb_nal *nal) {
    /* first_slice_segment_in_pic_flag is the first bit behind the NAL unit header. */
    return nal->type <= NAL_LAST_VCL && nal->layer_id == 0 && nal->size > nal->header + 2 &&
           nal->bytes[nal->header + 2] >> 7 == 1;
}

FILE *annexb_create(const char *path) {
    FILE *file = fopen(path, "wb");
    if (file == NULL)
        report(path);
    return file;
}

void annexb_write(FILE *file, const unsigned char *bytes, size_t size) {
    fwrite(bytes, 1, size, file);
}

int annexb_close(FILE *file, const char *path) {
    const int incomplete = ferror(file);
    return fclose(file) == 0 && !incomplete ? 0 : report(path);
}
