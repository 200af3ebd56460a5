#include "samples.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

namespace bench {

namespace {

// The samples are not what the benchmarks were written for.
[[noreturn]] void Fail(const std::string &what) {
    std::fprintf(stderr, "bench: %s\n", what.c_str());
    std::exit(1);
}

std::vector<Bytes> ParameterSetsOf(const Bytes &stream) {
    return {FirstNal(stream, 32), FirstNal(stream, 33), FirstNal(stream, 34)};
}

NalCase FromStream(const std::string &name, const std::string &sample, int nal_unit_type) {
    const Bytes stream = ReadSample(sample);
    return {name, FirstNal(stream, nal_unit_type), ParameterSetsOf(stream)};
}

// The same slice segment header in front of slice data of any length.
NalCase SliceOf(size_t size) {
    NalCase slice = FromStream("slice_header/" + std::to_string(size) + "B", "progressive-hrd-vui.hevc", 1);
    const Bytes data = CleanBytes(size);
    const size_t kept = 64;  // more than the header
    slice.nal.resize(kept);
    slice.nal.insert(slice.nal.end(), data.begin() + static_cast<std::ptrdiff_t>(kept), data.end());
    slice.nal.back() = 0x80;
    return slice;
}

NalCase HeavySps(const std::string &name) {
    NalCase sps = FromStream(name, "progressive-hrd-vui.hevc", 33);
    sps.nal = sps.parameter_sets[1] = ReadSample("units/sps-heavy.nal");
    return sps;
}

// The picture timing of the first picture behind an IDR picture.
NalCase PictureTiming() {
    const Bytes stream = ReadSample("progressive-hrd-vui.hevc");
    const Bytes delimiter = FirstNal(stream, 35);
    const char *begin = reinterpret_cast<const char *>(stream.data());
    const void *place = memmem(begin, stream.size(), delimiter.data(), delimiter.size());
    const size_t offset = static_cast<size_t>(static_cast<const char *>(place) - begin);
    const Bytes rest(stream.begin() + static_cast<std::ptrdiff_t>(offset), stream.end());
    return {"sei_parse/picture_timing", FirstNal(rest, 39), ParameterSetsOf(stream)};
}

NalCase SeiUnit(const std::string &name, const std::string &sample) {
    return {name, ReadSample(sample), ParameterSetsOf(ReadSample("progressive-hrd-vui.hevc"))};
}

}  // namespace

Bytes ReadSample(const std::string &name) {
    std::ifstream file(SAMPLES_DIR "/" + name, std::ios::binary);
    Bytes bytes(std::istreambuf_iterator<char>(file), {});
    if (bytes.empty())
        Fail("cannot read the sample " + name);
    return bytes;
}

Bytes FirstNal(const Bytes &stream, int nal_unit_type) {
    for (size_t i = 0; i + 4 < stream.size(); i++) {
        if (std::memcmp(&stream[i], "\0\0\1", 3) != 0 || stream[i + 3] >> 1 != nal_unit_type)
            continue;
        size_t end = i + 3;
        while (end < stream.size() &&
               !(end + 2 < stream.size() && stream[end] == 0 && stream[end + 1] == 0 && stream[end + 2] <= 1))
            end++;
        return Bytes(&stream[i], stream.data() + end);
    }
    Fail("no NAL unit of type " + std::to_string(nal_unit_type));
}

Bytes CleanBytes(size_t size) {
    std::mt19937 random(1);
    Bytes bytes(size);
    for (size_t i = 0; i < size; i++) {
        bytes[i] = static_cast<unsigned char>(random());
        if (bytes[i] == 0 && i > 0 && bytes[i - 1] == 0)
            bytes[i] = 1;
    }
    return bytes;
}

const std::vector<NalCase> &ParameterSets() {
    static const std::vector<NalCase> cases = {FromStream("vps/plain", "progressive-hrd-vui.hevc", 32),
                                               FromStream("sps/plain", "coding-tools.hevc", 33),
                                               FromStream("sps/hrd", "progressive-hrd-vui.hevc", 33),
                                               HeavySps("sps/heavy"),
                                               FromStream("sps/scaling_lists", "scaling-lists.hevc", 33),
                                               FromStream("pps/plain", "progressive-hrd-vui.hevc", 34)};
    return cases;
}

const std::vector<NalCase> &SliceHeaders() {
    static const std::vector<NalCase> cases = {
        SliceOf(176),
        SliceOf(2145),
        SliceOf(65536),
        SliceOf(3'899'651),
        FromStream("slice_header/weighted_prediction", "weighted-prediction.hevc", 1),
        FromStream("slice_header/long_references", "long-references.hevc", 0)};
    return cases;
}

const std::vector<NalCase> &SeiMessages() {
    static const std::vector<NalCase> cases = {PictureTiming(),
                                               SeiUnit("sei_parse/time_code", "units/sei-time-code.nal"),
                                               SeiUnit("sei_parse/captions", "units/sei-captions.nal")};
    return cases;
}

const std::vector<NalCase> &RewrittenSps() {
    static const std::vector<NalCase> cases = {FromStream("sps_rewrite/hrd", "progressive-hrd-vui.hevc", 33),
                                               HeavySps("sps_rewrite/heavy")};
    return cases;
}

}  // namespace bench
