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
