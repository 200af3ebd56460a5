// What a trace costs that is not printed: the same loop with and without one.

#include "h265.h"
#include "operation.h"

namespace bench {

namespace {

// The library's own test, as its functions have it inline.
inline bool LetsThrough(int level) {
    return __builtin_expect(g_hH265LibDbg != nullptr && g_hH265LibDbg->nMaxLevel >= level, false);
}

}  // namespace

void AddTraces() {
    Add("trace/silent/ours", [] {
        return [i = 0]() mutable {
            benchmark::DoNotOptimize(i++);
            if (LetsThrough(7))
                _DoDbgPrintEx(g_hH265LibDbg, 7, "AddTraces", "trace.cpp", __LINE__, "Called.\n");
            return true;
        };
    });
    Add("trace/silent/no_trace", [] {
        return [i = 0]() mutable {
            benchmark::DoNotOptimize(i++);
            return true;
        };
    });
}

}  // namespace bench
