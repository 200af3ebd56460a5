// The bytes that the benchmarks work on: sample streams of independent encoders, and what is made from them.

#ifndef BENCH_SAMPLES_H
#define BENCH_SAMPLES_H

#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<unsigned char>;

// A file of tests/samples.
Bytes ReadSample(const std::string &name);

// The first NAL unit of a type, with its start code.
Bytes FirstNal(const Bytes &stream, int nal_unit_type);

// A NAL unit that the library and its peers parse.
struct NalCase {
    std::string name;                   // work/case
    Bytes nal;                          // with its start code
    std::vector<Bytes> parameter_sets;  // VPS, SPS and PPS that it refers to
};

const std::vector<NalCase> &ParameterSets();  // the works vps, sps and pps
const std::vector<NalCase> &SliceHeaders();
const std::vector<NalCase> &SeiMessages();
const std::vector<NalCase> &RewrittenSps();

// Bytes with no two zeros in a row.
Bytes CleanBytes(size_t size);

}  // namespace bench

#endif
