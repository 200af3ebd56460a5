// Removal and insertion of emulation prevention bytes, beside memcpy (the limit) and a byte loop.

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "bitbuffer.h"
#include "h265.h"

namespace {

using Bytes = std::vector<unsigned char>;

enum Pattern : int { kClean, kEvery16, kDensest };

// A NAL unit from its header on. Clean: random bytes without two zeros in a row; else 00 00 03 in every 16
// bytes, or nothing but 00 00 03.
Bytes Nal(size_t size, Pattern pattern) {
    std::mt19937 random(1);
    Bytes bytes(size);
    for (size_t i = 0; i < size; i++) {
        bytes[i] = static_cast<unsigned char>(random());
        if (bytes[i] == 0 && i > 0 && bytes[i - 1] == 0)
            bytes[i] = 1;
        if (pattern == kDensest)
            bytes[i] = i % 3 == 2 ? 3 : 0;
    }
    if (pattern == kEvery16) {
        for (size_t i = 2; i + 3 <= size; i += 16)
            std::memcpy(&bytes[i], "\0\0\3", 3);
    }
    return bytes;
}

size_t ByteLoopRemoval(const unsigned char *in, size_t size, unsigned char *out) {
    size_t length = 0;
    size_t i = 0;
    for (; i + 2 < size; i++) {
        out[length++] = in[i];
        if (in[i] == 0 && in[i + 1] == 0 && in[i + 2] == 3) {
            out[length++] = 0;
            i += 2;
        }
    }
    for (; i < size; i++)
        out[length++] = in[i];
    return length;
}

size_t ByteLoopInsertion(const unsigned char *in, size_t size, unsigned char *out) {
    size_t length = 0;
    int zeros = 0;
    for (size_t i = 0; i < size; i++) {
        if (zeros == 2 && in[i] <= 3) {
            out[length++] = 3;
            zeros = 0;
        }
        out[length++] = in[i];
        zeros = in[i] == 0 ? zeros + 1 : 0;
    }
    return length;
}

template <typename Work>
void Run(benchmark::State &state, Work work) {
    const size_t size = static_cast<size_t>(state.range(0));
    const Bytes in = Nal(size, static_cast<Pattern>(state.range(1)));
    Bytes out(size * 2);
    for (auto _ : state) {
        benchmark::DoNotOptimize(work(in.data(), size, out.data()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Memcpy(benchmark::State &state) {
    Run(state, [](const unsigned char *in, size_t size, unsigned char *out) {
        std::memcpy(out, in, size);
        return size;
    });
}

void RemovalByteLoop(benchmark::State &state) {
    Run(state, ByteLoopRemoval);
}

void Removal(benchmark::State &state) {
    Run(state, [](const unsigned char *in, size_t size, unsigned char *out) {
        return H265Lib_SODB_deencapsulation_from_NAL(in, static_cast<unsigned int>(size), out,
                                                     static_cast<unsigned int>(size));
    });
}

void InsertionByteLoop(benchmark::State &state) {
    Run(state, ByteLoopInsertion);
}

void Insertion(benchmark::State &state) {
    Run(state, [](const unsigned char *in, size_t size, unsigned char *out) {
        return RBSP_encapsulation_within_NAL(in, static_cast<int>(size), out, static_cast<int>(2 * size));
    });
}

void Sizes(benchmark::internal::Benchmark *benchmark) {
    benchmark->ArgNames({"bytes", "pattern"});
    for (const int pattern : {kClean, kEvery16, kDensest}) {
        for (const int64_t size : {1 << 10, 32 << 10, 1 << 20, 32 << 20})
            benchmark->Args({size, pattern});
    }
}

void CleanSizes(benchmark::internal::Benchmark *benchmark) {
    benchmark->ArgNames({"bytes", "pattern"});
    for (const int64_t size : {1 << 10, 32 << 10, 1 << 20, 32 << 20})
        benchmark->Args({size, kClean});
}

BENCHMARK(Memcpy)->Apply(CleanSizes);
BENCHMARK(RemovalByteLoop)->Apply(Sizes);
BENCHMARK(Removal)->Apply(Sizes);
BENCHMARK(InsertionByteLoop)->Apply(Sizes);
BENCHMARK(Insertion)->Apply(Sizes);

}  // namespace
