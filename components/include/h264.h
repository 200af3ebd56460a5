/**
 * @file
 * h264.h - the functions of the H.264 sibling library that the H.265 library calls.
 *
 * A SEI NAL unit is passed with its Annex B start code of 3 or 4 bytes. Its header tells the standard: the
 * one byte 06 is an H.264 SEI (nal_unit_type 6; nal_ref_idc is 0 for it, ITU-T H.264 clause 7.4.1), and a
 * first byte whose bits 1 to 6 are 39 or 40 (4E to 51) begins the two-byte header of an H.265 prefix or
 * suffix SEI. No byte is both. Messages and their payloads are coded alike in both standards.
 *
 * Diagnostics go to the debug trace channel "H264LIB" (dbgtrace.h).
 *
 * Thread safety: reentrant. Nothing here allocates memory.
 */
#ifndef H264_H
#define H264_H

#include "h265/sei.h"
#include "xtypes.h"

XTYPES_API_BEGIN

/** @addtogroup h264 */ /** @{ */

/**
 * Finds the first closed caption message (registered user data with the identifier "GA94" and user data type
 * code 3, ATSC A/53) and parses it.
 *
 * A null pointer is reported as a failed assertion.
 *
 * @param buffer      the SEI NAL unit
 * @param buffer_len  its length in bytes
 * @param sei_cc      receives the captions
 * @return TRUE with the record written as a whole; or FALSE with the record as it was, and the reason at
 *         level 3: no SEI NAL unit, no such message, or one that is malformed
 */
BOOL parse_sei_cc_nal(unsigned char *buffer, int buffer_len, SEI_cc_t *sei_cc);

/**
 * The same for the first active format description (identifier "DTG1").
 *
 * @param buffer      the SEI NAL unit
 * @param buffer_len  its length in bytes
 * @param sei_afd     receives the active format description
 * @return as parse_sei_cc_nal has it
 */
BOOL parse_sei_afd_nal(unsigned char *buffer, int buffer_len, SEI_afd_t *sei_afd);

/**
 * Releases a buffer that a rewriting function returned (it came from malloc).
 *
 * @param pvBuffer  the buffer, or NULL
 */
void H26XLib_Release_sps_buffer(void *pvBuffer);

/** @} */

XTYPES_API_END

#endif
