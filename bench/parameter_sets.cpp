// Parsing parameter sets of an independent encoder's stream, beside the copy of a record.

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>

#include "h265.h"
#include "samples.h"

namespace {

using bench::Bytes;
using bench::FirstNal;

constexpr char kStream[] = "progressive-hrd-vui.hevc";

void ParseVps(benchmark::State &state) {
    const Bytes nal = FirstNal(bench::ReadSample(kStream), 32);
    const auto vps = std::make_unique<vps_h265_t>();
    vps->cprms_present_flag[0] = 1;
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_Parse_vps_nal(nal.data(), nal.size(), vps.get()));
}

void ParseSps(benchmark::State &state, const char *stream) {
    const Bytes nal = FirstNal(bench::ReadSample(stream), 33);
    const auto sps = std::make_unique<sps_h265_t>();
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_Parse_sps_nal(nal.data(), nal.size(), sps.get()));
    state.SetLabel(std::to_string(nal.size()) + " bytes");
}

void ParsePps(benchmark::State &state) {
    const Bytes nal = FirstNal(bench::ReadSample(kStream), 34);
    const auto pps = std::make_unique<pps_h265_t>();
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_Parse_pps_nal(nal.data(), static_cast<int>(nal.size()), pps.get()));
}

void CachedSps(benchmark::State &state) {
    const Bytes nal = FirstNal(bench::ReadSample(kStream), 33);
    const auto context = std::make_unique<H265D_PARSE_CONTEXT>();
    const auto sps = std::make_unique<sps_h265_t>();
    H265Lib_Parse_sps_nal_ex(nal.data(), nal.size(), context.get(), sps.get());
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_Parse_sps_nal_ex(nal.data(), nal.size(), context.get(), sps.get()));
}

void CachedPps(benchmark::State &state) {
    const Bytes nal = FirstNal(bench::ReadSample(kStream), 34);
    const auto context = std::make_unique<H265D_PARSE_CONTEXT>();
    const auto pps = std::make_unique<pps_h265_t>();
    const unsigned int size = static_cast<unsigned int>(nal.size());
    H265Lib_Parse_pps_nal_ex(nal.data(), size, context.get(), pps.get());
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_Parse_pps_nal_ex(nal.data(), size, context.get(), pps.get()));
}

template <typename Record>
void MemcpyRecord(benchmark::State &state) {
    const auto from = std::make_unique<Record>();
    const auto to = std::make_unique<Record>();
    for (auto _ : state) {
        std::memcpy(to.get(), from.get(), sizeof(Record));
        benchmark::ClobberMemory();
    }
}

void ParseSliceHeader(benchmark::State &state) {
    const Bytes stream = bench::ReadSample(kStream);
    const Bytes sps_nal = FirstNal(stream, 33);
    const Bytes pps_nal = FirstNal(stream, 34);
    const auto sps = std::make_unique<sps_h265_t>();
    const auto pps = std::make_unique<pps_h265_t>();
    H265Lib_Parse_sps_nal(sps_nal.data(), sps_nal.size(), sps.get());
    H265Lib_Parse_pps_nal(pps_nal.data(), static_cast<int>(pps_nal.size()), pps.get());
    const Bytes nal = FirstNal(stream, 1);
    ssh_h265_t slice{};
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_Parse_slice_header_nal(nal.data(), static_cast<int>(nal.size()),
                                                                sps.get(), pps.get(), &slice));
    state.SetLabel(std::to_string(nal.size()) + " bytes");
}

BENCHMARK(ParseVps);
BENCHMARK_CAPTURE(ParseSps, hrd_and_vui, kStream);
BENCHMARK_CAPTURE(ParseSps, vui, "vui-extended-sar.hevc");
BENCHMARK_CAPTURE(ParseSps, scaling_lists, "scaling-lists.hevc");
BENCHMARK_CAPTURE(ParseSps, heavy, "units/sps-heavy.nal");
BENCHMARK(ParsePps);
BENCHMARK(CachedSps);
BENCHMARK(MemcpyRecord<sps_h265_t>);
BENCHMARK(CachedPps);
BENCHMARK(MemcpyRecord<pps_h265_t>);
BENCHMARK(ParseSliceHeader);

}  // namespace
