#include "rewriting/write_bytes.h"

#include <algorithm>
#include <array>

namespace h265tool {

void WriteZeros(const WriteBytes &write, uint64_t count) {
    static constexpr std::array<unsigned char, 4096> kZeros{};
    for (; count > 0; count -= std::min<uint64_t>(count, kZeros.size()))
        write(std::span(kZeros).first(std::min<uint64_t>(count, kZeros.size())));
}

}  // namespace h265tool
