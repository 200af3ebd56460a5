#include "common/read.h"

[[gnu::cold]] void ReportUnreadable(const TraceSite &site, const char *element) {
    TraceAt(site, kError, "cannot parse %s.\n", element);
}

[[gnu::cold]] void ReportUnreadable(const TraceSite &site, const char *element, int i) {
    TraceAt(site, kError, "cannot parse %s[%d].\n", element, i);
}

[[gnu::cold]] void ReportUnreadable(const TraceSite &site, const char *element, int i, int j) {
    TraceAt(site, kError, "cannot parse %s[%d][%d].\n", element, i, j);
}

int ReadToEnd(bitbuffer_t *bb, int &flag) {
    if (bb->bit_offset >= bb->num_bits)
        return 0;
    const unsigned int count = bb->num_bits - bb->bit_offset;
    AdvanceBitOffset(bb, count - 1);
    GetNextBitEx(bb, &flag);
    return static_cast<int>(count);
}
