// What a trace costs that is not printed: the same loop with and without one.

#include <benchmark/benchmark.h>

#include "h265.h"

namespace {

// The library's own test, as its functions have it inline.
inline bool LetsThrough(int level) {
    return __builtin_expect(g_hH265LibDbg != nullptr && g_hH265LibDbg->nMaxLevel >= level, false);
}

void LoopAlone(benchmark::State &state) {
    int i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(i++);
}

void LoopWithTrace(benchmark::State &state) {
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(i++);
        if (LetsThrough(7))
            _DoDbgPrintEx(g_hH265LibDbg, 7, __func__, "trace.cpp", __LINE__, "Called.\n");
        benchmark::ClobberMemory();
    }
}

BENCHMARK(LoopAlone);
BENCHMARK(LoopWithTrace);

}  // namespace
