/**
 * @file
 * xtypes.h - the fixed-width base types of every public record and function.
 *
 * Flags in records are plain `int` holding 0 or 1; single bytes are `unsigned char`.
 */
#ifndef XTYPES_H
#define XTYPES_H

#include <stddef.h>
#include <stdint.h>

/* Around the declarations of a public header: C linkage, and visible outside a shared library. */
/** @cond */
#if defined(__GNUC__)
#define XTYPES_VISIBLE_BEGIN _Pragma("GCC visibility push(default)")
#define XTYPES_VISIBLE_END _Pragma("GCC visibility pop")
#else
#define XTYPES_VISIBLE_BEGIN
#define XTYPES_VISIBLE_END
#endif
#ifdef __cplusplus
#define XTYPES_API_BEGIN XTYPES_VISIBLE_BEGIN extern "C" {
#define XTYPES_API_END \
    }                  \
    XTYPES_VISIBLE_END
#else
#define XTYPES_API_BEGIN XTYPES_VISIBLE_BEGIN
#define XTYPES_API_END XTYPES_VISIBLE_END
#endif
/** @endcond */

/** @addtogroup base_types */ /** @{ */

typedef int32_t BOOL; /**< TRUE or FALSE; the result of every exported parse and rewrite function */

#ifndef TRUE
#define TRUE 1 /**< a BOOL: yes, or done */
#endif
#ifndef FALSE
#define FALSE 0 /**< a BOOL: no, or failed */
#endif

typedef uint8_t BYTE;    /**< 8 bits */
typedef uint32_t UINT;   /**< 32 bits */
typedef uint32_t DWORD;  /**< 32 bits */
typedef int64_t INT64;   /**< 64 bits with a sign */
typedef uint64_t UINT64; /**< 64 bits */

/** @} */

#endif
