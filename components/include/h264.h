/*
 * h264.h - the functions of the H.264 sibling library that the H.265 library calls.
 *
 * Thread safety: reentrant.
 */
#ifndef H264_H
#define H264_H

#include "xtypes.h"

XTYPES_API_BEGIN

/* Releases a buffer that a rewriting function returned (it came from calloc). NULL is allowed. */
void H26XLib_Release_sps_buffer(void *pvBuffer);

XTYPES_API_END

#endif
