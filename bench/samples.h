// The bytes that the benchmarks work on: sample streams of independent encoders.

#ifndef BENCH_SAMPLES_H
#define BENCH_SAMPLES_H

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<unsigned char>;

inline Bytes ReadSample(const std::string &name) {
    std::ifstream file(SAMPLES_DIR "/" + name, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

// The first NAL unit of a type, with its start code.
inline Bytes FirstNal(const Bytes &stream, int nal_unit_type) {
    for (size_t i = 0; i + 4 < stream.size(); i++) {
        if (std::memcmp(&stream[i], "\0\0\1", 3) != 0 || stream[i + 3] >> 1 != nal_unit_type)
            continue;
        size_t end = i + 3;
        while (end < stream.size() &&
               !(end + 2 < stream.size() && stream[end] == 0 && stream[end + 1] == 0 && stream[end + 2] <= 1))
            end++;
        return Bytes(&stream[i], stream.data() + end);
    }
    std::abort();  // the sample is not what the benchmark was written for
}

}  // namespace bench

#endif
