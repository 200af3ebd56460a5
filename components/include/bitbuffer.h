/**
 * @file
 * bitbuffer.h - the bit buffer service: a bit cursor over a byte array, Exp-Golomb codes (ITU-T H.265
 * clause 9.2) and the insertion of emulation prevention bytes (clause 7.4.2).
 *
 * Bits are taken and placed most significant first. Every read and write returns 0, or -1 when it would
 * run past num_bits, when its number of bits lies outside the stated range, or when a value does not fit
 * its destination. A failed read leaves cursor and destination as they were; a failed write leaves cursor
 * and bytes as they were.
 *
 * A NULL cursor or destination is reported as a failed assertion (dbgtrace.h) and gives -1.
 *
 * Thread safety: a cursor belongs to one thread at a time; the service keeps no state between calls except
 * the channel of BitBufferSetTraceChannel. Nothing here allocates memory.
 */
#ifndef BITBUFFER_H
#define BITBUFFER_H

#include "dbgtrace.h"
#include "xtypes.h"

XTYPES_API_BEGIN

/** @addtogroup bitbuffer */ /** @{ */

/** The cursor. The bytes are the caller's and must outlive it. Callers may read and set both counts. */
typedef struct bitbuffer_t {
    unsigned char *bit_buffer; /**< the bytes */
    unsigned int bit_offset; /**< bits consumed or produced: the next is bit 7 - bit_offset % 8 of its byte */
    unsigned int num_bits;   /**< valid bits (reading), capacity in bits (writing) */
} bitbuffer_t;

/* ---- the cursor ---------------------------------------------------------------------------------- */

/**
 * Opens the cursor at bit 0 of `buffer`, for `num_bits` bits.
 *
 * @param bb        the cursor
 * @param buffer    the bytes
 * @param num_bits  how many bits of them
 * @param function  with `file` and `line`: the caller, for the report
 * @param file      a name without directory
 * @param line      its line
 * @return 0, or -1 when the cursor is NULL, or the buffer is NULL and num_bits is not 0
 */
int __DoInitBitBuffer(bitbuffer_t *bb, unsigned char *buffer, unsigned int num_bits, const char *function,
                      const char *file, int line);

/**
 * Skips bits. The cursor may come to stand behind num_bits: the next read or write then fails.
 *
 * @param bb        the cursor
 * @param num_bits  how many
 */
void AdvanceBitOffset(bitbuffer_t *bb, unsigned int num_bits);

/**
 * Dumps the cursor's bytes (num_bits rounded up) under the title, at level 7, on the channel given to
 * BitBufferSetTraceChannel; prints nothing when there is none or it does not let level 7 through.
 *
 * @param bb     the cursor
 * @param title  the line in front of the dump
 */
void DisplayBitBuffer(const bitbuffer_t *bb, const char *title);

/**
 * Names the handle variable of the channel that DisplayBitBuffer prints on; it is read afresh at each
 * dump. The library that owns the variable sets it when it is loaded and takes it back when it is unloaded.
 *
 * @param phDbg  the variable; NULL: no channel
 */
void BitBufferSetTraceChannel(const HDBG *phDbg);

/* ---- reading ------------------------------------------------------------------------------------- */

/**
 * @name Reading
 * The next bits: `value` receives what they say.
 * @return 0, or -1 with cursor and value as they were
 */
/** @{ */
int GetNextBitEx(bitbuffer_t *bb, int *value);                              /**< u(1) */
int GetNextNBitsAsUint8(bitbuffer_t *bb, unsigned int n, uint8_t *value);   /**< u(n), n 1 to 8 */
int GetNextNBitsAsUint16(bitbuffer_t *bb, unsigned int n, uint16_t *value); /**< u(n), n 1 to 16 */
int GetNextNBitsAsUint32(bitbuffer_t *bb, unsigned int n, uint32_t *value); /**< u(n), n 1 to 32 */
int GetNextNBitsAsUint64(bitbuffer_t *bb, unsigned int n, uint64_t *value); /**< u(n), n 1 to 64 */
int GetNextNBitsAsInt32(bitbuffer_t *bb, unsigned int n, int32_t *value);   /**< i(n), n 1 to 32 */
int GetUint32Golomb(bitbuffer_t *bb, uint32_t *value);                      /**< ue(v), 0 to 2^32 - 1 */
int GetInt32Golomb(bitbuffer_t *bb, int32_t *value);                        /**< se(v), |value| < 2^31 */

/**
 * Copies the next n bits into `destination` as a packed bit string: the first bit becomes the top bit of
 * byte 0, and the unused low bits of the last byte become 0.
 *
 * @param bb           the cursor
 * @param n            how many bits
 * @param destination  receives them
 * @param capacity     its size in bytes
 * @return 0, or -1 when n bits do not fit or are not there
 */
int GetNextNBitsAsStringEx(bitbuffer_t *bb, unsigned int n, unsigned char *destination,
                           unsigned int capacity);

/** @} */

/* ---- writing ------------------------------------------------------------------------------------- */

/**
 * @name Writing
 * The next bits: the low bits of `value`.
 * @return 0, or -1 with cursor and bytes as they were
 */
/** @{ */
int __DoSetNextBit(bitbuffer_t *bb, int bit, const char *function, const char *file, int line); /**< 0 or 1 */
int SetNextNBitsFromUint8(bitbuffer_t *bb, unsigned int n, uint8_t value);   /**< low n bits, n 1 to 8 */
int SetNextNBitsFromUint16(bitbuffer_t *bb, unsigned int n, uint16_t value); /**< low n bits, n 1 to 16 */
int SetNextNBitsFromUint32(bitbuffer_t *bb, unsigned int n, uint32_t value); /**< low n bits, n 1 to 32 */
int SetNextNBitsFromInt32(bitbuffer_t *bb, unsigned int n, int32_t value);   /**< low n bits, n 1 to 32 */
int SetUint32Golomb(bitbuffer_t *bb, uint32_t value);                        /**< ue(v) */

/**
 * Writes the first n bits of a packed bit string: the inverse of GetNextNBitsAsStringEx.
 *
 * @param bb      the cursor
 * @param n       how many bits; may be 0
 * @param source  the bit string
 * @return 0, or -1 with cursor and bytes as they were
 */
int SetNextNBitsFromString(bitbuffer_t *bb, unsigned int n, const unsigned char *source);

/** @} */

/* ---- emulation prevention ------------------------------------------------------------------------ */

/**
 * @name Emulation prevention
 * @{
 */

/**
 * Copies the source and inserts a byte 03 wherever two zero bytes would otherwise be followed by a byte of
 * value 0 to 3. Bytes before `destination` are not looked at, and no start code, header or trailing bits
 * are written. The areas must not overlap.
 *
 * @param source                the bytes behind a NAL unit header
 * @param source_length         how many
 * @param destination           receives them
 * @param destination_capacity  its size in bytes
 * @return the number of bytes written; or 0, with the destination as it was, when they do not fit, when a
 *         length is zero or negative, or when a pointer is NULL (reported as a failed assertion)
 */
int RBSP_encapsulation_within_NAL(const unsigned char *source, int source_length, unsigned char *destination,
                                  int destination_capacity);

#define RBSP_ENCAPSULATION_MODE_BYTES 1 /**< source_length counts bytes; the only mode there is */

/**
 * The same with a mode.
 *
 * @param source                the bytes behind a NAL unit header
 * @param source_length         how many
 * @param destination           receives them
 * @param destination_capacity  its size in bytes
 * @param mode                  any other than RBSP_ENCAPSULATION_MODE_BYTES is reported and gives 0
 * @return as RBSP_encapsulation_within_NAL has it
 */
int RBSP_encapsulation_within_NAL_Ex(const unsigned char *source, int source_length,
                                     unsigned char *destination, int destination_capacity, int mode);

/** @} */
/** @} */

XTYPES_API_END

#endif
