#include "h265d/framing/nal_type_offset.h"

#include "common/trace.h"

namespace {

// In whose name the functions here report, each with its own line.
constexpr char kName[] = "_GetNALTypeOffset";

#define SITE_HERE                      \
    TraceSite {                        \
        kName, __FILE_NAME__, __LINE__ \
    }

[[gnu::cold, gnu::noinline]] void ReportStartCode(int length) {
    if (length == 3)
        TraceAt(SITE_HERE, kDetail, "Found Annex-B 3 bytes start code prefix.\n");
    else
        TraceAt(SITE_HERE, kDetail, "Found Annex-B 4 bytes start code prefix.\n");
}

// The buffer has at least three bytes.
inline BOOL FindStartCode(const unsigned char *pBuffer, int buffer_len, int *pnOffset) {
    if (pBuffer[0] != 0 || pBuffer[1] != 0)
        return FALSE;
    if (pBuffer[2] == 1) {
        *pnOffset = 3;
        if (TraceLetsThrough(kDetail))
            ReportStartCode(3);
        return TRUE;
    }
    if (pBuffer[2] == 0 && buffer_len >= 4 && pBuffer[3] == 1) {
        *pnOffset = 4;
        if (TraceLetsThrough(kDetail))
            ReportStartCode(4);
        return TRUE;
    }
    return FALSE;
}

// What to do with arguments that are not as they have to be. Apart, so that usual ones need no registers
// saved.
[[gnu::cold, gnu::noinline]] BOOL ReportArguments(const unsigned char *pBuffer, int buffer_len,
                                                  int *pnOffset) {
    if (pBuffer == nullptr)
        AssertAt(SITE_HERE, "pBuffer != NULL");
    if (buffer_len < 4)
        AssertAt(SITE_HERE, "buffer_len >= 4");
    if (pnOffset == nullptr)
        AssertAt(SITE_HERE, "pnOffset != NULL");
    if (pBuffer == nullptr || pnOffset == nullptr || buffer_len < 3)
        return FALSE;
    return FindStartCode(pBuffer, buffer_len, pnOffset);
}

}  // namespace

BOOL _GetNALTypeOffset(const unsigned char *pBuffer, int buffer_len, int *pnOffset) {
    if (pBuffer == nullptr || buffer_len < 4 || pnOffset == nullptr) [[unlikely]]
        return ReportArguments(pBuffer, buffer_len, pnOffset);
    return FindStartCode(pBuffer, buffer_len, pnOffset);
}
