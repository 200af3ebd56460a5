// Readers of syntax elements. A line of a reader is one element of the standard's syntax table:
//
//     BitReader bb(vps_nalu_bb);
//     READ_FLAG(bb, vps, vps_temporal_id_nesting_flag);
//     READ_U(bb, 16, vps, vps_reserved_0xffff_16bits);
//     READ_UE(bb, sps, sps_max_num_reorder_pics, i);
//
// reads into the record's field of that name (entry [i], or [i][j]) and, when it cannot, reports
// "cannot parse sps_max_num_reorder_pics[i].\n" in the reader's name at level 3 and returns -1. The field is
// then left as it was.
//
// The _AS forms take the field itself and the whole text of the report, for texts that differ from the field.
// READ_UE_MAX and READ_UE_MAX_AS refuse a value above a maximum as if it could not be read; READ_V_AS is
// u(v): a length that other elements give, unreadable above 32 bits.

#ifndef H265_COMMON_READ_H
#define H265_COMMON_READ_H

#include <iterator>

#include "bit_reader.h"
#include "common/entry.h"
#include "common/trace.h"

// What a reader returns when an element cannot be read; defined beforehand by readers that return a BOOL.
#ifndef READ_FAILURE
#define READ_FAILURE (-1)
#endif

#define READ_FLAG(bb, record, element, ...) \
    READ_ELEMENT_(ReadFlag(bb, ENTRY_(record, element, __VA_ARGS__)), element, __VA_ARGS__)
#define READ_U(bb, n, record, element, ...) \
    READ_ELEMENT_(ReadU(bb, n, ENTRY_(record, element, __VA_ARGS__)), element, __VA_ARGS__)
#define READ_UE(bb, record, element, ...) \
    READ_ELEMENT_(ReadUe(bb, ENTRY_(record, element, __VA_ARGS__)), element, __VA_ARGS__)
#define READ_UE_MAX(bb, max, record, element, ...) \
    READ_ELEMENT_(ReadUe(bb, ENTRY_(record, element, __VA_ARGS__), max), element, __VA_ARGS__)
#define READ_SE(bb, record, element, ...) \
    READ_ELEMENT_(ReadSe(bb, ENTRY_(record, element, __VA_ARGS__)), element, __VA_ARGS__)

// All entries of an array of flags, with one word where they are all there, else up to the one that is not.
#define READ_FLAGS(bb, record, element, ...)                                  \
    do {                                                                      \
        auto &flags_ = ENTRY_(record, element, __VA_ARGS__);                  \
        if (!(bb).GetFlags(flags_)) {                                         \
            for (int j_ = 0; j_ < static_cast<int>(std::size(flags_)); j_++)  \
                READ_FLAG(bb, record, element, __VA_OPT__(__VA_ARGS__, ) j_); \
        }                                                                     \
    } while (0)

#define READ_FLAG_AS(bb, field, ...) READ_AS_(ReadFlag(bb, field), __VA_ARGS__)
#define READ_U_AS(bb, n, field, ...) READ_AS_(ReadU(bb, n, field), __VA_ARGS__)
#define READ_V_AS(bb, n, field, ...) READ_AS_(ReadV(bb, n, field), __VA_ARGS__)
#define READ_UE_AS(bb, field, ...) READ_AS_(ReadUe(bb, field), __VA_ARGS__)
#define READ_UE_MAX_AS(bb, max, field, ...) READ_AS_(ReadUe(bb, field, max), __VA_ARGS__)
#define READ_SE_AS(bb, field, ...) READ_AS_(ReadSe(bb, field), __VA_ARGS__)

// Calls the reader of a nested syntax structure, to which bb is lent; the rest is the text of the report when
// it fails.
#define READ_STRUCTURE(call, ...) READ_AS_(call, __VA_ARGS__)

// ---- how the macros are made -----------------------------------------------------------------------------

#define READ_ELEMENT_(read, element, ...)                                      \
    do {                                                                       \
        if ((read) == -1) [[unlikely]] {                                       \
            ReportUnreadable(TRACE_SITE, #element __VA_OPT__(, ) __VA_ARGS__); \
            return READ_FAILURE;                                               \
        }                                                                      \
    } while (0)

#define READ_AS_(read, ...)              \
    do {                                 \
        if ((read) == -1) [[unlikely]] { \
            TRACE(kError, __VA_ARGS__);  \
            return READ_FAILURE;         \
        }                                \
    } while (0)

void ReportUnreadable(const TraceSite &site, const char *element);
void ReportUnreadable(const TraceSite &site, const char *element, int i);
void ReportUnreadable(const TraceSite &site, const char *element, int i, int j);

using bitbuffer::BitReader;

inline int ReadFlag(BitReader &bb, int &flag) {
    return bb.GetFlag(&flag);
}

// At a cursor that no reader has taken over.
inline int ReadFlag(bitbuffer_t *bb, int &flag) {
    return GetNextBitEx(bb, &flag);
}

inline int ReadU(BitReader &bb, unsigned int n, uint8_t &value) {
    return bb.GetBits<8>(n, &value);
}

inline int ReadU(BitReader &bb, unsigned int n, uint16_t &value) {
    return bb.GetBits<16>(n, &value);
}

inline int ReadU(BitReader &bb, unsigned int n, UINT64 &value) {
    return bb.GetBits<64>(n, &value);
}

inline int ReadI(BitReader &bb, unsigned int n, INT64 &value) {
    int32_t read = 0;
    if (bb.GetSigned(n, &read) == -1)
        return -1;
    value = read;
    return 0;
}

inline int ReadV(BitReader &bb, UINT64 n, UINT64 &value) {
    uint32_t read = 0;
    if (n > 32 || bb.GetBits<32>(static_cast<unsigned int>(n), &read) == -1)
        return -1;
    value = read;
    return 0;
}

[[gnu::always_inline]] inline int ReadUe(BitReader &bb, UINT64 &value, uint32_t max = UINT32_MAX) {
    uint32_t read = 0;
    if (bb.GetGolomb(&read) == -1 || read > max)
        return -1;
    value = read;
    return 0;
}

[[gnu::always_inline]] inline int ReadSe(BitReader &bb, INT64 &value) {
    int32_t read = 0;
    if (bb.GetSignedGolomb(&read) == -1)
        return -1;
    value = read;
    return 0;
}

// Reads single bits to the end of the buffer, trailing bits included: an extension of unknown syntax. Returns
// their number; the last one is left in `flag`, which stays as it was when there is none.
inline int ReadToEnd(BitReader &bb, int &flag) {
    const unsigned int count = bb.BitsLeft();
    if (count == 0)
        return 0;
    bb.Skip(count - 1);
    bb.GetFlag(&flag);
    return static_cast<int>(count);
}

#endif
