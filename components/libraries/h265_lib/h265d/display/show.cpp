#include "h265d/display/show.h"

void ShowSigned(const TraceSite &site, int level, const char *element, INT64 value) {
    TraceAt(site, level, "%s=%d.\n", element, AS_D(value));
}

void ShowSigned(const TraceSite &site, int level, const char *element, INT64 value, int i) {
    TraceAt(site, level, "%s[%d]=%d.\n", element, i, AS_D(value));
}

void ShowUnsigned(const TraceSite &site, int level, const char *element, UINT64 value) {
    TraceAt(site, level, "%s=%u.\n", element, AS_U(value));
}

void ShowUnsigned(const TraceSite &site, int level, const char *element, UINT64 value, int i) {
    TraceAt(site, level, "%s[%d]=%u.\n", element, i, AS_U(value));
}
