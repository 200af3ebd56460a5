// Writers of syntax elements, the counterpart of read.h:
//
//     BitWriter bb(sps_nalu_bb);
//     SET_FLAG(bb, hrd, nal_hrd_parameters_present_flag);
//     SET_U(bb, 4, hrd, bit_rate_scale);
//     SET_UE(bb, hrd, cpb_cnt_minus1, i);
//
// writes the record's field of that name (entry [i]) and, when it cannot, reports
// "Failed to set cpb_cnt_minus1[i].\n" in the writer's name at level 3 and returns -1.
//
// The _AS forms take the value itself and the whole text of the report. Values of 64 bits are written through
// their low 32 bits.

#ifndef H265_COMMON_WRITE_H
#define H265_COMMON_WRITE_H

#include "bit_writer.h"
#include "common/entry.h"
#include "common/trace.h"

#define SET_FLAG(bb, record, element, ...) \
    SET_ELEMENT_(SetFlag(bb, ENTRY_(record, element, __VA_ARGS__)), element, __VA_ARGS__)
#define SET_U(bb, n, record, element, ...) \
    SET_ELEMENT_(SetU(bb, n, ENTRY_(record, element, __VA_ARGS__)), element, __VA_ARGS__)
#define SET_UE(bb, record, element, ...) \
    SET_ELEMENT_(SetUe(bb, ENTRY_(record, element, __VA_ARGS__)), element, __VA_ARGS__)

// ue(v) with the report "Failed to set <element> as golomb.\n".
#define SET_GOLOMB(bb, record, element) \
    SET_AS_(SetUe(bb, (record)->element), "Failed to set " #element " as golomb.\n")

#define SET_FLAG_AS(bb, flag, ...) SET_AS_(SetFlag(bb, flag), __VA_ARGS__)
#define SET_U_AS(bb, n, value, ...) SET_AS_(SetU(bb, n, value), __VA_ARGS__)
#define SET_UE_AS(bb, value, ...) SET_AS_(SetUe(bb, value), __VA_ARGS__)
#define SET_I_AS(bb, n, value, ...) SET_AS_(SetI(bb, n, value), __VA_ARGS__)

// Indexed elements whose report carries the value: "Failed to set n_frames[i]:<value>.\n".
#define SET_FLAG_VALUE(bb, record, element, i) \
    SET_VALUE_(SetFlag(bb, (record)->element[i]), record, element, i)
#define SET_U_VALUE(bb, n, record, element, i) \
    SET_VALUE_(SetU(bb, n, (record)->element[i]), record, element, i)
#define SET_I_VALUE(bb, n, record, element, i) \
    SET_VALUE_(SetI(bb, n, (record)->element[i]), record, element, i)

// Calls the writer of a nested syntax structure, to which bb is lent; the rest is the text of the report when
// it fails.
#define SET_STRUCTURE(call, ...) SET_AS_(call, __VA_ARGS__)

// ---- how the macros are made -----------------------------------------------------------------------------

#define SET_ELEMENT_(set, element, ...)                                        \
    do {                                                                       \
        if ((set) == -1) [[unlikely]] {                                        \
            ReportUnwritable(TRACE_SITE, #element __VA_OPT__(, ) __VA_ARGS__); \
            return -1;                                                         \
        }                                                                      \
    } while (0)

#define SET_AS_(set, ...)               \
    do {                                \
        if ((set) == -1) [[unlikely]] { \
            TRACE(kError, __VA_ARGS__); \
            return -1;                  \
        }                               \
    } while (0)

#define SET_VALUE_(set, record, element, i) \
    SET_AS_(set, "Failed to set " #element "[%d]:%d.\n", i, static_cast<int>((record)->element[i]))

inline void ReportUnwritable(const TraceSite &site, const char *element) {
    TraceAt(site, kError, "Failed to set %s.\n", element);
}

inline void ReportUnwritable(const TraceSite &site, const char *element, int i) {
    TraceAt(site, kError, "Failed to set %s[%d].\n", element, i);
}

using bitbuffer::BitWriter;

inline int SetFlag(BitWriter &bb, int flag) {
    return bb.PutBits(1, 1, flag != 0);
}

inline int SetU(BitWriter &bb, unsigned int n, UINT64 value) {
    return bb.PutBits(n, 32, static_cast<uint32_t>(value));
}

inline int SetI(BitWriter &bb, unsigned int n, INT64 value) {
    return bb.PutBits(n, 32, static_cast<uint32_t>(value));
}

inline int SetUe(BitWriter &bb, UINT64 value) {
    return bb.PutGolomb(static_cast<uint32_t>(value));
}

// At a cursor that no writer has taken over.
inline int SetFlag(bitbuffer_t *bb, int flag) {
    BitWriter writer(bb);
    return SetFlag(writer, flag);
}

inline int SetU(bitbuffer_t *bb, unsigned int n, UINT64 value) {
    BitWriter writer(bb);
    return SetU(writer, n, value);
}

inline int SetUe(bitbuffer_t *bb, UINT64 value) {
    BitWriter writer(bb);
    return SetUe(writer, value);
}

inline bool IsByteAligned(const bitbuffer_t &bb) {
    return bb.bit_offset % 8 == 0;
}

// The bytes written so far, a partly filled one included.
inline int BytesWritten(const bitbuffer_t &bb) {
    return static_cast<int>((bb.bit_offset + 7) / 8);
}

#endif
