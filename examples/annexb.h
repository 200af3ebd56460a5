/* annexb.h - splits an Annex B byte stream (ITU-T H.265 Annex B) that is in memory into its NAL units. */
#ifndef ANNEXB_H
#define ANNEXB_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct annexb_stream {
    unsigned char *bytes;
    size_t size;
    size_t position; /* where annexb_next goes on; 0 begins again */
} annexb_stream;

typedef struct annexb_nal {
    unsigned char *bytes; /* within the stream: the start code, the NAL unit, no zero bytes behind it */
    size_t size;
    size_t header;          /* of the two-byte NAL unit header: 3 or 4 */
    unsigned int type;      /* nal_unit_type */
    unsigned int layer_id;  /* nuh_layer_id */
    unsigned char id_plus1; /* nuh_temporal_id_plus1 */
} annexb_nal;

/* The values of nal_unit_type that the examples look for. */
enum {
    NAL_RADL_N = 6,
    NAL_RASL_R = 9,
    NAL_RSV_VCL_N14 = 14,
    NAL_BLA_W_LP = 16,
    NAL_IDR_W_RADL = 19,
    NAL_IDR_N_LP = 20,
    NAL_LAST_VCL = 31,
    NAL_VPS = 32,
    NAL_SPS = 33,
    NAL_PPS = 34,
    NAL_PREFIX_SEI = 39
};

/* Reads a file. Returns 0; or -1, with the reason on standard error and nothing to release. */
int annexb_load(annexb_stream *stream, const char *path);

void annexb_release(annexb_stream *stream);

/* Finds the next NAL unit that has a header. Returns 1, or 0 at the end of the stream. */
int annexb_next(annexb_stream *stream, annexb_nal *nal);

/* Whether the NAL unit is the first slice segment of a picture of the base layer. */
int annexb_starts_picture(const annexb_nal *nal);

/* Opens the file to write. Returns NULL, with the reason on standard error, when that is not possible. */
FILE *annexb_create(const char *path);

/* Writes bytes as they are. An error shows when the file is closed. */
void annexb_write(FILE *file, const unsigned char *bytes, size_t size);

/* Closes what was written. Returns 0; or -1, with the reason on standard error, when it is not complete. */
int annexb_close(FILE *file, const char *path);

#ifdef __cplusplus
}
#endif

#endif
