// Printing of records. A line of a display is one element:
//
//     SHOW_FLAG(vui, field_seq_flag);
//     SHOW_U(hrd, cpb_cnt_minus1, i);
//
// prints "field_seq_flag=1.\n" and "cpb_cnt_minus1[i]=3.\n" in the display's name, at the level that the file
// calls kLevel. SHOW_FLAG (and SHOW_D, for other signed values) prints with %d, SHOW_U with %u. Texts that
// differ are written out with SHOW.

#ifndef H265D_DISPLAY_SHOW_H
#define H265D_DISPLAY_SHOW_H

#include "common/entry.h"
#include "common/trace.h"

#define SHOW_FLAG(record, element, ...) SHOW_ELEMENT_(ShowSigned, INT64, record, element, __VA_ARGS__)
#define SHOW_D(record, element, ...) SHOW_ELEMENT_(ShowSigned, INT64, record, element, __VA_ARGS__)
#define SHOW_U(record, element, ...) SHOW_ELEMENT_(ShowUnsigned, UINT64, record, element, __VA_ARGS__)

#define SHOW(...) TRACE(kLevel, __VA_ARGS__)

// Numbers as the formats take them: 64-bit values lose their high half.
#define AS_D(value) static_cast<int>(value)
#define AS_U(value) static_cast<unsigned int>(value)

#define SHOW_ELEMENT_(show, Number, record, element, ...)                                               \
    do {                                                                                                \
        if (TraceLetsThrough(kLevel))                                                                   \
            show(TRACE_SITE, kLevel, #element,                                                          \
                 static_cast<Number>(ENTRY_(record, element, __VA_ARGS__)) __VA_OPT__(, ) __VA_ARGS__); \
    } while (0)

void ShowSigned(const TraceSite &site, int level, const char *element, INT64 value);
void ShowSigned(const TraceSite &site, int level, const char *element, INT64 value, int i);
void ShowUnsigned(const TraceSite &site, int level, const char *element, UINT64 value);
void ShowUnsigned(const TraceSite &site, int level, const char *element, UINT64 value, int i);

// A count of a record, which may hold anything, cut to the entries that there are.
inline int Shown(UINT64 count, int entries) {
    return count < static_cast<UINT64>(entries) ? static_cast<int>(count) : entries;
}

#endif
