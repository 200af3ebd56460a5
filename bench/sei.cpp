// Walking, parsing and building SEI NAL units.

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>

#include "h265.h"
#include "samples.h"

namespace {

using bench::Bytes;

constexpr int kPrefixSei = 39;

// Walks all messages of a NAL unit, as a caller does; returns their number.
template <typename Visit>
int Walk(const Bytes &nal, Visit visit) {
    int offset = 0;
    int nal_type_offset = 0;
    int messages = 0;
    SEI_message_t header{};
    int kind = 0;
    BOOL more = TRUE;
    while (more && H265Lib_DetermineSEIType(nal.data(), static_cast<int>(nal.size()), &offset,
                                            &nal_type_offset, &header, &kind, &more)) {
        visit(header, kind);
        messages++;
    }
    return messages;
}

void WalkMessages(benchmark::State &state, const char *sample) {
    const Bytes nal = bench::ReadSample(sample);
    int messages = 0;
    for (auto _ : state)
        messages = Walk(nal, [](const SEI_message_t &, int) {});
    state.SetLabel(std::to_string(messages) + " messages, " + std::to_string(nal.size()) + " bytes");
}

void ScanAndParseTimeCode(benchmark::State &state) {
    const Bytes nal = bench::ReadSample("units/sei-time-code.nal");
    sei_h265_time_code_t time_code{};
    for (auto _ : state)
        Walk(nal, [&](const SEI_message_t &header, int) {
            benchmark::DoNotOptimize(H265Lib_Parse_sei_timecode_nal(nal.data(), static_cast<int>(nal.size()),
                                                                    &header, &time_code));
        });
}

void ScanAndParsePictureTiming(benchmark::State &state) {
    const Bytes stream = bench::ReadSample("interlaced-field-hrd.hevc");
    const Bytes sps_nal = bench::FirstNal(stream, 33);
    const auto sps = std::make_unique<sps_h265_t>();
    H265Lib_Parse_sps_nal(sps_nal.data(), sps_nal.size(), sps.get());
    const auto timing = std::make_unique<sei_h265_pic_timing_t>();
    const Bytes nal = bench::FirstNal(
        Bytes(stream.begin() + static_cast<std::ptrdiff_t>(stream.size() / 2), stream.end()), kPrefixSei);
    for (auto _ : state)
        Walk(nal, [&](const SEI_message_t &header, int) {
            benchmark::DoNotOptimize(H265Lib_Parse_sei_pictiming_nal(nal.data(), static_cast<int>(nal.size()),
                                                                     &header, &sps->vui, timing.get()));
        });
}

void ScanAndParseCaptions(benchmark::State &state) {
    Bytes nal = bench::ReadSample("units/sei-captions.nal");
    SEI_cc_t captions{};
    for (auto _ : state)
        Walk(nal, [&](const SEI_message_t &, int) {
            benchmark::DoNotOptimize(
                H265Lib_Parse_sei_cc_nal(nal.data(), static_cast<int>(nal.size()), &captions));
        });
}

void BuildCaptions(benchmark::State &state) {
    std::vector<vanc_t> entries(20);
    for (vanc_t &entry : entries) {
        entry.suid = SUID_CLOSED_CAPTION;
        entry.vanc_data.caption = {1, 0, 0x94, 0x20};
    }
    unsigned char buffer[256];
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_format_sei_cc_nal(buffer, sizeof buffer, entries.data(),
                                                           static_cast<int>(entries.size() * sizeof(vanc_t)),
                                                           20, nullptr));
}

void BuildActiveFormat(benchmark::State &state) {
    vanc_t entry{};
    entry.suid = SUID_AFD;
    entry.vanc_data.afd_data = {1, 8};
    unsigned char buffer[64];
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_format_sei_afd_nal(buffer, sizeof buffer, &entry, sizeof entry));
}

void BuildTimeCode(benchmark::State &state) {
    const auto sps = std::make_unique<sps_h265_t>();
    sps->vui.vui_num_units_in_tick = 1001;
    vitc_t vitc{};
    vitc.HourTens = 1;
    vitc.FrameUnits = 7;
    SEI_time_code_info_t info{};
    info.FrameRate = 29970;
    info.enTimeSource = EMBEDDED_TIME_CODE;
    info.pParsedSps = sps.get();
    unsigned char buffer[64];
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_format_sei_time_code_nal(buffer, sizeof buffer, &vitc, &info));
}

void BuildPictureTiming(benchmark::State &state) {
    const auto vui = std::make_unique<vui_h265_t>();
    vui->nal_hrd.nal_hrd_parameters_present_flag = 1;
    vui->nal_hrd.au_cpb_removal_delay_length_minus1 = 23;
    vui->nal_hrd.dpb_output_delay_length_minus1 = 4;
    const auto timing = std::make_unique<sei_h265_pic_timing_t>();
    unsigned char buffer[64];
    for (auto _ : state) {
        UINT length = sizeof buffer;
        benchmark::DoNotOptimize(H265Lib_format_sei_pictiming_nal(buffer, &length, vui.get(), timing.get()));
    }
}

void BuildPrecisionTime(benchmark::State &state) {
    const INT64 time = 1'700'000'000'000'000;
    unsigned char buffer[64];
    for (auto _ : state)
        benchmark::DoNotOptimize(H265Lib_formatMISPMicroSecondTimeSEI(buffer, sizeof buffer, &time, 0x9F));
}

// The limit of all builders.
void MemcpyFinishedCaptions(benchmark::State &state) {
    const Bytes nal = bench::ReadSample("units/sei-captions.nal");
    unsigned char buffer[256];
    for (auto _ : state) {
        std::memcpy(buffer, nal.data(), nal.size());
        benchmark::ClobberMemory();
    }
}

BENCHMARK_CAPTURE(WalkMessages, several, "units/sei-multiple.nal");
BENCHMARK_CAPTURE(WalkMessages, one, "units/sei-captions.nal");
BENCHMARK(ScanAndParsePictureTiming);
BENCHMARK(ScanAndParseTimeCode);
BENCHMARK(ScanAndParseCaptions);
BENCHMARK(BuildCaptions);
BENCHMARK(BuildActiveFormat);
BENCHMARK(BuildTimeCode);
BENCHMARK(BuildPictureTiming);
BENCHMARK(BuildPrecisionTime);
BENCHMARK(MemcpyFinishedCaptions);

}  // namespace
