/*
 * pictures.h - numbers the pictures of a stream in the order in which they are output.
 *
 * A program that feeds an encoder knows which picture an access unit holds. Behind a file, it has to be
 * worked out: pictures are coded in another order than they are shown in.
 */
#ifndef PICTURES_H
#define PICTURES_H

#include <stdint.h>

#include "annexb.h"
#include "h265.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct picture {
    int64_t order_count; /* PicOrderCntVal, clause 8.3.1 */
    size_t sequence;     /* the coded video sequence it belongs to, from 0 on */
    size_t number;       /* its place in the order of output, from 0 on */
} picture;

/* In decoding order. Pictures that are coded, and not output, count like the others. */
typedef struct picture_list {
    picture *pictures;
    size_t count;
    sps_h265_t *sps; /* the last sequence parameter set of the stream */
} picture_list;

/*
 * Goes through the base layer of the stream, from its beginning to its end, and leaves it at the beginning.
 * Slices are read with the last SPS and PPS in front of them: enough for what one encoder writes.
 * Returns 0; or -1, with the reason on standard error and nothing to release.
 */
int pictures_find(picture_list *list, annexb_stream *stream);

void pictures_release(picture_list *list);

/*
 * Pictures per second times 1000, as the VUI has it: 29970 for 29.97 Hz. Returns 0, with the reason on
 * standard error, when the stream does not tell its rate.
 */
int pictures_rate(const picture_list *list);

/*
 * Writes a SEI NAL unit that the library built, for the picture that begins with `slice`: all NAL units of a
 * picture have the same nuh_temporal_id_plus1 (clause 7.4.2.2), and the library builds them with 1.
 */
void pictures_write_sei(FILE *file, unsigned char *sei, size_t size, const annexb_nal *slice);

#ifdef __cplusplus
}
#endif

#endif
