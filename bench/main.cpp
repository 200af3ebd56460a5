// Measures the library beside its peers and limits: by time, with the options of Google Benchmark, or with
//
//   bench_h265 --count-instructions TIMES WORK...
//
// for callgrind. Each operation of these works is done TIMES times, then three times as often, and Mark( ) is
// called in front of, between and behind the two, where callgrind is told to dump. The names are printed in
// their order.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "operation.h"

// Callgrind knows it by this name.
extern "C" [[gnu::noinline]] void Mark();
void Mark() {
    benchmark::ClobberMemory();
}

namespace {

int CountInstructions(int64_t times, int works, char **work) {
    for (const bench::Operation &operation : bench::Operations()) {
        bool chosen = false;
        for (int i = 0; i < works; i++) {
            const size_t length = std::strlen(work[i]);
            chosen =
                chosen || (operation.name.compare(0, length, work[i]) == 0 && operation.name[length] == '/');
        }
        if (!chosen)
            continue;
        const auto repeat = operation.prepare();
        repeat(times);  // caches and lazy binding settle
        Mark();
        repeat(times);
        Mark();
        repeat(3 * times);
        Mark();
        std::printf("%s\n", operation.name.c_str());
    }
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    bench::AddEmulationPrevention();
    bench::AddParameterSets();
    bench::AddSliceHeaders();
    bench::AddSeiParsing();
    bench::AddSeiBuilding();
    bench::AddRewriting();
    bench::AddThreads();
    bench::AddTraces();
#ifdef BENCH_FFMPEG
    bench::AddFfmpeg();
#endif
#ifdef BENCH_GSTREAMER
    bench::AddGStreamer();
#endif
    if (argc > 2 && std::strcmp(argv[1], "--count-instructions") == 0)
        return CountInstructions(std::atoll(argv[2]), argc - 3, argv + 3);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
