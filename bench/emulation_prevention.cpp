// Removal and insertion of emulation prevention bytes, beside memcpy (the limit) and a byte loop.

#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>

#include "bitbuffer.h"
#include "h265.h"
#include "operation.h"
#include "samples.h"

namespace bench {

namespace {

enum class Pattern { kClean, kEvery16, kDensest };

constexpr size_t kKiB = 1024;
constexpr size_t kMiB = 1024 * kKiB;

struct Size {
    const char *name;
    size_t bytes;
};

constexpr Size kSizes[] = {{"1KiB", kKiB}, {"32KiB", 32 * kKiB}, {"1MiB", kMiB}, {"32MiB", 32 * kMiB}};

// A NAL unit from its header on. Clean: random bytes without two zeros in a row; else 00 00 03 in every 16
// bytes, or nothing but 00 00 03.
Bytes Nal(size_t size, Pattern pattern) {
    Bytes bytes = CleanBytes(size);
    if (pattern == Pattern::kDensest) {
        for (size_t i = 0; i < size; i++)
            bytes[i] = i % 3 == 2 ? 3 : 0;
    }
    if (pattern == Pattern::kEvery16) {
        for (size_t i = 2; i + 3 <= size; i += 16)
            std::memcpy(&bytes[i], "\0\0\3", 3);
    }
    return bytes;
}

// Where the bytes lie counts, too: all that are compared read the same and write to the same, and every run
// has them at the same place in a page. They stay until the program ends.
struct Memory {
    unsigned char *in;
    unsigned char *out;
};

constexpr size_t kPage = 4096;
constexpr size_t kOutOffset =
    kPage / 2;  // loads and stores that have the same place in a page get into each other's way

unsigned char *Pages(size_t size) {
    void *pages = std::aligned_alloc(kPage, (size / kPage + 1) * kPage);
    if (pages == nullptr)
        std::abort();
    return static_cast<unsigned char *>(pages);
}

const Memory &MemoryOf(size_t size, Pattern pattern) {
    static std::map<std::pair<size_t, Pattern>, Memory> memories;
    const auto [place, made] = memories.try_emplace({size, pattern});
    if (made) {
        const Bytes nal = Nal(size, pattern);
        place->second = {Pages(size), Pages(2 * size + kOutOffset) + kOutOffset};
        std::memcpy(place->second.in, nal.data(), size);
        std::memset(place->second.out, 0, 2 * size);
    }
    return place->second;
}

size_t Memcpy(const unsigned char *in, size_t size, unsigned char *out) {
    std::memcpy(out, in, size);
    return size;
}

// What a removal copies: all behind the NAL unit header.
size_t MemcpyOfPayload(const unsigned char *in, size_t size, unsigned char *out) {
    return Memcpy(in + 2, size - 2, out);
}

size_t RemovalByteLoop(const unsigned char *in, size_t size, unsigned char *out) {
    size_t length = 0;
    size_t i = 2;  // behind the NAL unit header
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

size_t InsertionByteLoop(const unsigned char *in, size_t size, unsigned char *out) {
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

int Removal(const unsigned char *in, size_t size, unsigned char *out) {
    return H265Lib_SODB_deencapsulation_from_NAL(in, static_cast<unsigned int>(size), out,
                                                 static_cast<unsigned int>(size));
}

int Insertion(const unsigned char *in, size_t size, unsigned char *out) {
    return RBSP_encapsulation_within_NAL(in, static_cast<int>(size), out, static_cast<int>(2 * size));
}

template <typename Way>
void AddWay(const std::string &work, const char *who, Size size, Pattern pattern, Way way) {
    const char *patterns[] = {"clean_", "every16_", "densest_"};
    Add(work + "/" + patterns[static_cast<int>(pattern)] + size.name + "/" + who, [size, pattern, way] {
        const Memory &memory = MemoryOf(size.bytes, pattern);
        return [memory, size, way] { return way(memory.in, size.bytes, memory.out) > 0; };
    });
}

}  // namespace

void AddEmulationPrevention() {
    for (const Size &size : kSizes) {
        AddWay("removal", "ours", size, Pattern::kClean, Removal);
        AddWay("removal", "memcpy", size, Pattern::kClean, MemcpyOfPayload);
        AddWay("insertion", "ours", size, Pattern::kClean, Insertion);
        AddWay("insertion", "memcpy", size, Pattern::kClean, Memcpy);
    }
    for (const Size &size : {kSizes[0], kSizes[2]}) {
        for (const Pattern pattern : {Pattern::kEvery16, Pattern::kDensest}) {
            AddWay("removal", "ours", size, pattern, Removal);
            AddWay("removal", "byte_loop", size, pattern, RemovalByteLoop);
        }
        AddWay("insertion", "ours", size, Pattern::kEvery16, Insertion);
        AddWay("insertion", "byte_loop", size, Pattern::kEvery16, InsertionByteLoop);
    }
}

}  // namespace bench
