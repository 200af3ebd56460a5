/**
 * @file
 * h265.h - reads, prints, rewrites and builds the syntax of H.265 (HEVC, ITU-T H.265) bitstreams at the
 * level of NAL units, parameter sets and SEI messages.
 *
 * A NAL unit is passed as a byte array that begins with an Annex B start code, 00 00 01 or 00 00 00 01,
 * followed by the two-byte NAL unit header (clause 7.3.1.2). Lengths count bytes, start code included.
 *
 * Ownership. All buffers and records are the caller's. Nothing is retained between calls except in a parse
 * context that the caller passes. Parsers fill records in place and never clear them: zero a record before
 * its first use, so that absent fields have defined values.
 *
 * Results. Parse functions return TRUE, or FALSE when the NAL unit is malformed; the record then holds the
 * fields read before the failure. The NAL unit type is not checked: the caller passes the right kind.
 * A null pointer is reported and fails the call; it is never dereferenced.
 *
 * Diagnostics go to the debug trace channel "H265LIB" (dbgtrace.h), opened when the library is loaded.
 *
 * Thread safety. All functions are reentrant and may run in any number of threads on different records and
 * buffers. A parse context belongs to one thread at a time. Nothing here starts threads or takes locks.
 */
#ifndef H265_H
#define H265_H

#include "dbgtrace.h"
#include "h265/aud.h"
#include "h265/parse_context.h"
#include "h265/pps.h"
#include "h265/sei.h"
#include "h265/slice_header.h"
#include "h265/sps.h"
#include "h265/time_code_info.h"
#include "h265/version.h"
#include "h265/vps.h"
#include "vanc.h"
#include "xtypes.h"

XTYPES_API_BEGIN

/**
 * @ingroup dbgtrace
 * The library's trace channel "H265LIB", NULL before the library is loaded and after it is unloaded. A
 * caller may raise or lower g_hH265LibDbg->nMaxLevel; setting the variable itself to NULL silences the
 * library. What it calls of h264.h has a channel of its own.
 */
extern HDBG g_hH265LibDbg;

/* ---- NAL unit framing ------------------------------------------------------------------------------ */
/** @addtogroup framing */ /** @{ */

/**
 * The name of a nal_unit_type (Table 7-1).
 *
 * @param enType  the nal_unit_type
 * @return "TRAIL_N" to "UNSPEC48"; "Invalid" above 48. Never NULL
 */
const char *GetH265NalTypeString(UINT enType);

/**
 * Removes the emulation prevention bytes of a NAL unit (clause 7.3.1.1).
 *
 * A byte 03 behind 00 00 is dropped whatever follows it.
 *
 * @param input_buf   the NAL unit from its two-byte header on, behind the start code
 * @param inbuf_len   its length, at least 2
 * @param output_buf  receives the bytes behind the header; must not overlap the input
 * @param outbuf_len  its capacity, at least inbuf_len
 * @return the number of bytes written (0 for a bare header), or -1 when the capacity is smaller than
 *         inbuf_len (reported at level 3, at most once in ten seconds), when inbuf_len is below 2 or a
 *         pointer is NULL
 */
int H265Lib_SODB_deencapsulation_from_NAL(const unsigned char *input_buf, unsigned int inbuf_len,
                                          unsigned char *output_buf, unsigned int outbuf_len);

/** @} */

/** @addtogroup delimiters */ /** @{ */

/**
 * Builds an access unit delimiter (clause 7.3.2.5): 00 00 00 01 46 01 and one byte.
 *
 * @param buffer            receives the NAL unit
 * @param len               its capacity, 8 or more: one more than is written
 * @param primary_pic_type  the standard's pic_type: 0 I, 1 P and I, 2 B, P and I slices
 * @return 7, the number of bytes written; or -1, with nothing written, when `buffer` is NULL, `len` is below
 *         8 or primary_pic_type is above 2
 */
int H265Lib_format_au_delimiter_nalu(unsigned char *buffer, unsigned int len, unsigned int primary_pic_type);

/**
 * Builds an end of sequence NAL unit (clause 7.3.2.6): 00 00 01 48 01.
 *
 * @param buffer  receives the NAL unit
 * @param len     its capacity, 5 or more
 * @return 5, the number of bytes written; or -1, with nothing written, when `buffer` is NULL or `len` is
 *         below 5
 */
int H265Lib_format_end_of_sequence_nalu(unsigned char *buffer, unsigned int len);

/**
 * Parses an access unit delimiter whose payload, unlike that of a NAL unit in a stream, still holds the
 * two header bytes: the type and the picture type are read from bits 1 to 6 and 22 to 24 of the data
 * behind the NAL unit header. An ordinary delimiter is too short for that and fails.
 *
 * @param buffer      the NAL unit
 * @param buffer_len  its length; at most 16 bytes, start code not counted
 * @param aud_data    receives the types
 * @return TRUE, or FALSE when the NAL unit is malformed
 */
BOOL H265Lib_Parse_au_delimiter_nal(unsigned char *buffer, int buffer_len, aud_h265_t *aud_data);

/** @} */

/* ---- parameter sets -------------------------------------------------------------------------------- */
/** @addtogroup parsing */ /** @{ */

/**
 * Parses a video parameter set. Entries beyond the record's bounds are read and dropped, with a notice at
 * level 4.
 *
 * @param pBuffer    the NAL unit
 * @param BufferLen  its length; at most 1512 bytes, start code not counted
 * @param pVps       the record; set its cprms_present_flag[0] to 1 beforehand (see vps_h265_t)
 * @return TRUE, or FALSE when the NAL unit is malformed
 */
BOOL H265Lib_Parse_vps_nal(const unsigned char *pBuffer, size_t BufferLen, vps_h265_t *pVps);

/**
 * Parses a sequence parameter set.
 *
 * @param buffer      the NAL unit
 * @param buffer_len  its length; at most 1512 bytes, start code not counted
 * @param pSps        the record
 * @return TRUE, or FALSE when the NAL unit is malformed
 */
BOOL H265Lib_Parse_sps_nal(const unsigned char *buffer, size_t buffer_len, sps_h265_t *pSps);

/**
 * The same with a context: when the NAL unit equals, byte for byte and start code included, the last one
 * that was parsed successfully with this context, its record is copied to *pSps and nothing is parsed. A
 * failed parse leaves the context as it was.
 *
 * @param buffer      the NAL unit
 * @param buffer_len  its length; at most 1512 bytes, start code not counted
 * @param pContext    the context of the stream
 * @param pSps        the record
 * @return TRUE, or FALSE when the NAL unit is malformed
 */
BOOL H265Lib_Parse_sps_nal_ex(const unsigned char *buffer, size_t buffer_len, H265D_PARSE_CONTEXT *pContext,
                              sps_h265_t *pSps);

/**
 * Parses a picture parameter set.
 *
 * @param buffer      the NAL unit
 * @param buffer_len  its length; at most 256 bytes, start code not counted
 * @param pps         the record
 * @return TRUE, or FALSE when the NAL unit is malformed
 */
BOOL H265Lib_Parse_pps_nal(const unsigned char *buffer, int buffer_len, pps_h265_t *pps);

/**
 * The same with a context, as H265Lib_Parse_sps_nal_ex has it.
 *
 * @param buffer      the NAL unit
 * @param buffer_len  its length; at most 256 bytes, start code not counted
 * @param pContext    the context of the stream
 * @param pps         the record
 * @return TRUE, or FALSE when the NAL unit is malformed
 */
BOOL H265Lib_Parse_pps_nal_ex(const unsigned char *buffer, unsigned int buffer_len,
                              H265D_PARSE_CONTEXT *pContext, pps_h265_t *pps);

/** @} */

/* ---- parameter set display -------------------------------------------------------------------------- */
/** @addtogroup display */ /** @{ */

/**
 * @name Parameter sets
 * Print a parsed parameter set, a field a line, framed by a title and two rules: the set's own fields at
 * level 5, those of its profile/tier/level, HRD, VUI and reference picture sets at level 6. The record may
 * hold anything: nothing outside its arrays is read.
 */
/** @{ */
void H265Lib_Display_vps(const vps_h265_t *vps); /**< Prints a video parameter set. */
void H265Lib_Display_sps(const sps_h265_t *sps); /**< Prints a sequence parameter set. */
void H265Lib_Display_pps(const pps_h265_t *pps); /**< Prints a picture parameter set. */
/** @} */

/** @} */

/* ---- parameter set rewriting ----------------------------------------------------------------------- */
/** @addtogroup rewriting */ /** @{ */

/**
 * Marks a VPS as carrying interlaced source material, in place: general_progressive_source_flag 0,
 * general_interlaced_source_flag 1, general_frame_only_constraint_flag 0. Every other bit stays.
 *
 * Pass the NAL unit without zero bytes behind it. Its emulation prevention is applied anew: the result can be
 * shorter than buffer_len, in which case the bytes behind it stay as they were. It is never longer for a NAL
 * unit as streams have it; should it not fit (trailing zero bytes, missing emulation prevention), the buffer
 * stays as it was, and TRUE is returned all the same.
 *
 * Keeps a vps_h265_t (about 170 KiB) on the stack.
 *
 * @param pBuffer     the NAL unit
 * @param buffer_len  its length
 * @return FALSE, with the buffer as it was, when the VPS cannot be parsed
 */
BOOL H265Lib_modify_vps_NAL(unsigned char *pBuffer, unsigned int buffer_len);

/**
 * Rewrites an SPS: the general progressive and interlaced source flags, picture size, conformance window and
 * the whole VUI are taken from the record; general_non_packed_constraint_flag and
 * general_frame_only_constraint_flag become 0; every other bit is carried over.
 *
 * Takes two heap blocks: one of 1512 bytes for the call, and the result of buffer_len + 256 bytes.
 *
 * @param pBuffer         the NAL unit
 * @param buffer_len      its length; at most 1512 bytes, the start code not counted
 * @param pSpsElements    the record of this very NAL unit, parsed and then edited: its recorded positions are
 *                        used. vui_parameters_present_flag has to be 1; conformance_window_flag has to stay
 *                        as parsed
 * @param ppNewSpsBuffer  receives the new NAL unit; release it with H265Lib_Release_sps_buffer
 * @param pNewSPSLength   receives its length. No more than start code and header says that the SPS did not
 *                        fit
 * @return TRUE; or FALSE with NULL and 0 there when there is no start code, when the record does not fit the
 *         NAL unit, or when no memory is left; with both left alone when the NAL unit is longer than 1512
 *         bytes or no more than its header, or when one of them is NULL
 */
BOOL H265Lib_modify_sps_NAL(const unsigned char *pBuffer, unsigned int buffer_len,
                            const sps_h265_t *pSpsElements, unsigned char **ppNewSpsBuffer,
                            UINT *pNewSPSLength);

/**
 * The same for the VUI alone: every bit outside it is carried over.
 *
 * @param pBuffer         the NAL unit
 * @param buffer_len      its length; at most 1512 bytes, the start code not counted
 * @param pSpsElements    as H265Lib_modify_sps_NAL has it
 * @param ppNewSpsBuffer  receives the new NAL unit
 * @param pNewSPSLength   receives its length
 * @return as H265Lib_modify_sps_NAL has it
 */
BOOL H265Lib_Set_sps_vui_parameters_NAL(const unsigned char *pBuffer, unsigned int buffer_len,
                                        const sps_h265_t *pSpsElements, unsigned char **ppNewSpsBuffer,
                                        UINT *pNewSPSLength);

/**
 * Releases a buffer that one of the two functions above returned.
 *
 * @param pvBuffer  the buffer, or NULL
 */
void H265Lib_Release_sps_buffer(void *pvBuffer);

/** @} */

/* ---- slices ---------------------------------------------------------------------------------------- */
/** @addtogroup parsing */ /** @{ */

/**
 * Parses the first fields of the slice segment header of a coded slice NAL unit.
 *
 * Takes one heap block of buffer_len + 32 bytes for the duration of the call.
 *
 * slice_segment_address is read with floor(Log2(PicSizeInCtbsY)) + 1 bits: one more than H.265 codes when
 * the number of coding tree blocks of the picture is a power of two. A caller who needs the standard's
 * reading of such a stream passes a copy of the SPS with a picture of one coding tree block less.
 *
 * @param buffer      the NAL unit
 * @param buffer_len  its length
 * @param sps         with `pps`: the records of the active parameter sets. The caller picks the pair that
 *                    belongs to the slice, they are not checked against slice_pic_parameter_set_id
 * @param pps         the picture parameter set of the pair
 * @param pSh         the record
 * @return TRUE, or FALSE when the NAL unit is malformed
 */
BOOL H265Lib_Parse_slice_header_nal(const unsigned char *buffer, int buffer_len, const sps_h265_t *sps,
                                    const pps_h265_t *pps, ssh_h265_t *pSh);

/** @} */

/* ---- SEI messages ---------------------------------------------------------------------------------- */
/** @addtogroup sei_reading */ /** @{ */

/**
 * Reads the header of one message of a SEI NAL unit, tells its kind, and says whether another one follows.
 *
 * A byte 0xFF behind the first byte of a type or size is added to it: types and sizes of 255 and more are
 * read differently from what H.265 codes.
 *
 * NAL units of up to 1024 bytes need no heap; longer ones take one block of their length for the call.
 *
 * @param pBuffer            the whole NAL unit
 * @param BufferLen          its length
 * @param pPayloadOffset     in: 0 on the first call for a NAL unit, then what the call before gave; out:
 *                           where the next message starts, in the data behind the NAL unit header (see
 *                           SEI_message_t)
 * @param pNALTypeOffset     in: 0 on the first call (not below 0), then what that gave: the position of the
 * NAL unit header
 * @param pSEIMessageHeader  out: type, size and place of the payload, for the parsers below
 * @param penSUID            out: SUID_UNKNOWN or what it is (vanc.h); left alone when the call fails before
 *                           that
 * @param pbMoreSEIMessages  out: TRUE when more than two bytes remain behind the payload
 * @return FALSE when the NAL unit is no SEI or malformed, for reserved payload types (above 202, in a suffix
 *         SEI above 146) and for registered user data (payload type 4) that is neither captions nor AFD
 */
BOOL H265Lib_DetermineSEIType(const unsigned char *pBuffer, int BufferLen, int *pPayloadOffset,
                              int *pNALTypeOffset, SEI_message_t *pSEIMessageHeader, int *penSUID,
                              BOOL *pbMoreSEIMessages);

/**
 * Parses the picture timing message at pMsgHeader->payload_index (type and size are not checked).
 *
 * Of more than 510 decoding units the first 510 are kept: that is reported at level 3, and the parse
 * succeeds. Takes one heap block of BufferLen + 32 bytes for the call.
 *
 * @param pBuffer     the NAL unit
 * @param BufferLen   its length
 * @param pMsgHeader  from H265Lib_DetermineSEIType
 * @param pVUI        the VUI of the active SPS, which tells what is present
 * @param pPt         the record
 * @return TRUE, or FALSE when the NAL unit is malformed
 */
BOOL H265Lib_Parse_sei_pictiming_nal(const unsigned char *pBuffer, int BufferLen,
                                     const SEI_message_t *pMsgHeader, const vui_h265_t *pVUI,
                                     sei_h265_pic_timing_t *pPt);

/** @} */

/**
 * @ingroup display
 * Prints a picture timing message at level 5, field by field.
 *
 * @param pPt   the record
 * @param pVui  the VUI that it was parsed with
 */
void H265Lib_Display_sei_pictiming(const sei_h265_pic_timing_t *pPt, const vui_h265_t *pVui);

/** @addtogroup sei_reading */ /** @{ */

/**
 * Parses the time code message at pMsgHeader->payload_index (type and size are not checked). Takes one heap
 * block of BufferLen + 32 bytes for the call.
 *
 * @param pBuffer     the NAL unit
 * @param BufferLen   its length
 * @param pMsgHeader  from H265Lib_DetermineSEIType
 * @param pTc         the record
 * @return TRUE, or FALSE when the NAL unit is malformed
 */
BOOL H265Lib_Parse_sei_timecode_nal(const unsigned char *pBuffer, int BufferLen,
                                    const SEI_message_t *pMsgHeader, sei_h265_time_code_t *pTc);

/**
 * Finds and parses the first closed caption message (registered user data "GA94", type code 3) of a SEI NAL
 * unit, wherever it stands in it. No heap.
 *
 * @param buffer      the NAL unit
 * @param buffer_len  its length
 * @param sei_cc      the record, written on success only
 * @return TRUE, or FALSE when there is none or it is malformed
 */
BOOL H265Lib_Parse_sei_cc_nal(unsigned char *buffer, int buffer_len, SEI_cc_t *sei_cc);

/**
 * The same for the first AFD message ("DTG1").
 *
 * @param buffer      the NAL unit
 * @param buffer_len  its length
 * @param sei_afd     the record, written on success only
 * @return TRUE, or FALSE when there is none or it is malformed
 */
BOOL H265Lib_Parse_sei_afd_nal(unsigned char *buffer, int buffer_len, SEI_afd_t *sei_afd);

/** @} */

/** @addtogroup rewriting */ /** @{ */

/**
 * Changes the pic_struct of a picture timing message, in place; every other bit stays.
 *
 * @param pBuffer       the NAL unit
 * @param pBufferLen    in: its length; out, on success: the new one. Zero bytes behind the trailing bits are
 *                      dropped. The new pic_struct can make one emulation prevention byte more necessary:
 *                      append a zero byte and count it in *pBufferLen to make room. Without room the buffer
 *                      stays as it was, and the new length is that of start code and header alone
 * @param pVUI          the VUI of the active SPS: frame_field_info_present_flag has to be set
 * @param PayloadIndex  SEI_message_t.payload_index of the message
 * @param pPt           its pic_struct is written, nothing else
 * @return FALSE, with buffer and length as they were, when the message has no pic_struct or does not lie in
 *         the NAL unit, or when that is longer than 1512 bytes
 */
BOOL H265Lib_modify_pictiming_sei_NAL(unsigned char *pBuffer, UINT *pBufferLen, const vui_h265_t *pVUI,
                                      UINT PayloadIndex, const sei_h265_pic_timing_t *pPt);

/** @} */

/* ---- SEI building ---------------------------------------------------------------------------------- */
/** @addtogroup sei_building */ /** @{ */

/*
 * Each builds one prefix SEI NAL unit with one message: 00 00 01 4E 01, the message with emulation
 * prevention, trailing bits. No heap. Results count bytes, start code included.
 *
 * Ancillary data is an array of vanc_t; its size is given in bytes.
 */

/**
 * Closed captions (registered user data, ATSC A/53) of one picture.
 *
 * @param buffer       receives the NAL unit
 * @param buffer_len   its capacity
 * @param vanc_data    the captions; may be NULL; entries of other kinds are skipped
 * @param vanc_size    bytes of vanc_data
 * @param cc_count     constructs that the message carries, at most 31 (more count as 31): the captions of
 *                     vanc_data in order, then padding (FA 00 00). A count above 512 is (encoder id + 1) *
 *                     512 + count; it is not limited to 31 then
 * @param pCc_records  receives the number of captions taken; may be NULL
 * @return the length of the NAL unit; or 0 when there is no caption among the entries, when `buffer` is too
 *         small (its first five bytes may have been written), or when cc_count is negative
 */
int H265Lib_format_sei_cc_nal(unsigned char *buffer, int buffer_len, const vanc_t *vanc_data, int vanc_size,
                              int cc_count, int *pCc_records);

/**
 * Active format description (registered user data, "DTG1") from the first AFD entry with active_format_flag;
 * without one, a message that says that there is no active format. 17 or 16 bytes.
 *
 * @param pBuffer    receives the NAL unit
 * @param BufferLen  its capacity, at least 19 or 18
 * @param pVancData  the entries
 * @param VancSize   bytes of pVancData
 * @return the length of the NAL unit, or 0 when the buffer is too small
 */
int H265Lib_format_sei_afd_nal(unsigned char *pBuffer, int BufferLen, const vanc_t *pVancData, int VancSize);

/**
 * Precision time (unregistered user data, MISB ST 0604): microseconds with a status byte. 36 bytes.
 *
 * @param buffer       receives the NAL unit
 * @param len          its capacity
 * @param pllUsecTime  the microseconds
 * @param StatusByte   its five low bits have to be set
 * @return the length of the NAL unit; 0 when the buffer is too small; -1 for a null pointer or a bad status
 *         byte
 */
int H265Lib_formatMISPMicroSecondTimeSEI(unsigned char *buffer, int len, const INT64 *pllUsecTime,
                                         unsigned char StatusByte);

/**
 * Time code (payload type 136) with one clock timestamp: the time of the VITC record when one is given, else
 * pTimecodeData->WallTime. A VITC record with a time out of range gives 00:00:00:00.
 *
 * The time offset is written with one bit less than its value needs; receivers of this system expect it so.
 *
 * @param buffer         receives the NAL unit
 * @param len            its capacity, 36 or more
 * @param pVitcData      the VITC record, or NULL, which is reported
 * @param pTimecodeData  what else the message is made from; its WallTime is overwritten when a VITC record is
 *                       given
 * @return the length of the NAL unit; -1 when the buffer is too small or pParsedSps is missing; 5, a bare
 *         header, when the message could not be encapsulated
 */
int H265Lib_format_sei_time_code_nal(unsigned char *buffer, int len, const vitc_t *pVitcData,
                                     SEI_time_code_info_t *pTimecodeData);

/**
 * Picture timing (payload type 1): pic_struct, source_scan_type and duplicate_flag always, the CPB and DPB
 * delays when the VUI's HRD has NAL or VCL parameters; decoding units never.
 *
 * @param pBuffer     receives the NAL unit
 * @param pBufferLen  in: the capacity, 32 or more; out, on success: the length of the NAL unit
 * @param pVui        the VUI of the active SPS
 * @param pPt         the values
 * @return TRUE, or FALSE with *pBufferLen as it was
 */
BOOL H265Lib_format_sei_pictiming_nal(unsigned char *pBuffer, UINT *pBufferLen, const vui_h265_t *pVui,
                                      const sei_h265_pic_timing_t *pPt);

/** @} */

XTYPES_API_END

#endif
