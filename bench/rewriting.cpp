// Rewriting parameter sets, the parse excluded, beside the copy of the bytes.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "h265.h"
#include "samples.h"

namespace {

using bench::Bytes;

using Rewrite = decltype(H265Lib_modify_sps_NAL);

void RewriteSps(benchmark::State &state, Rewrite rewrite, const char *sample) {
    const Bytes nal = bench::FirstNal(bench::ReadSample(sample), 33);
    const auto sps = std::make_unique<sps_h265_t>();
    H265Lib_Parse_sps_nal(nal.data(), nal.size(), sps.get());
    for (auto _ : state) {
        unsigned char *result = nullptr;
        UINT length = 0;
        benchmark::DoNotOptimize(
            rewrite(nal.data(), static_cast<unsigned int>(nal.size()), sps.get(), &result, &length));
        H265Lib_Release_sps_buffer(result);
    }
    state.SetLabel(std::to_string(nal.size()) + " bytes");
}

void RewriteVps(benchmark::State &state) {
    Bytes nal = bench::FirstNal(bench::ReadSample("progressive-hrd-vui.hevc"), 32);
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_modify_vps_NAL(nal.data(), static_cast<unsigned int>(nal.size())));
}

// The limit: the result's heap block, cleared and filled.
void CallocMemcpyFree(benchmark::State &state) {
    const Bytes nal = bench::FirstNal(bench::ReadSample("progressive-hrd-vui.hevc"), 33);
    for (auto _ : state) {
        void *result = std::calloc(1, nal.size() + 256);
        std::memcpy(result, nal.data(), nal.size());
        benchmark::DoNotOptimize(result);
        std::free(result);
    }
}

BENCHMARK_CAPTURE(RewriteSps, whole, H265Lib_modify_sps_NAL, "progressive-hrd-vui.hevc");
BENCHMARK_CAPTURE(RewriteSps, whole_heavy, H265Lib_modify_sps_NAL, "units/sps-heavy.nal");
BENCHMARK_CAPTURE(RewriteSps, vui, H265Lib_Set_sps_vui_parameters_NAL, "progressive-hrd-vui.hevc");
BENCHMARK_CAPTURE(RewriteSps, vui_heavy, H265Lib_Set_sps_vui_parameters_NAL, "units/sps-heavy.nal");
BENCHMARK(RewriteVps);
BENCHMARK(CallocMemcpyFree);

}  // namespace
