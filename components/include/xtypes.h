/*
 * xtypes.h - the fixed-width base types of every public record and function.
 *
 * Flags in records are plain `int` holding 0 or 1; single bytes are `unsigned char`.
 */
#ifndef XTYPES_H
#define XTYPES_H

#include <stddef.h>
#include <stdint.h>

/* Around the declarations of a public header: C linkage, and visible outside a shared library. */
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

typedef int32_t BOOL; /* TRUE or FALSE; the result of every exported parse and rewrite function */

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

typedef uint8_t BYTE;
typedef uint32_t UINT;
typedef uint32_t DWORD;
typedef int64_t INT64;
typedef uint64_t UINT64;

#endif
