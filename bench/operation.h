// What is measured: a piece of work, done by the library, by a peer, or by what limits both.
//
// An operation is named work/case/who. Those that have work and case in common do the same to the same bytes,
// so that the ratio of their times means something.

#ifndef BENCH_OPERATION_H
#define BENCH_OPERATION_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench {

struct Operation {
    std::string name;
    // Gets it ready; what comes back does it that many times.
    std::function<std::function<void(int64_t times)>()> prepare;
};

inline std::vector<Operation> &Operations() {
    static std::vector<Operation> operations;
    return operations;
}

// `prepare` returns the work: a function that does it once and says whether that went well.
template <typename Prepare>
benchmark::internal::Benchmark *Add(const std::string &name, Prepare prepare) {
    Operations().push_back({name, [prepare] {
                                const auto work = std::make_shared<decltype(prepare())>(prepare());
                                return [work](int64_t times) {
                                    for (; times > 0; times--)
                                        benchmark::DoNotOptimize((*work)());
                                };
                            }});
    return benchmark::RegisterBenchmark(name.c_str(), [prepare](benchmark::State &state) {
        auto work = prepare();
        if (!work()) {
            state.SkipWithError("the work fails");
            return;
        }
        for (auto _ : state) {
            benchmark::DoNotOptimize(work());
            benchmark::ClobberMemory();
        }
    });
}

void AddEmulationPrevention();
void AddParameterSets();
void AddSliceHeaders();
void AddSeiParsing();
void AddSeiBuilding();
void AddRewriting();
void AddThreads();
void AddTraces();
void AddFfmpeg();
void AddGStreamer();

}  // namespace bench

#endif
