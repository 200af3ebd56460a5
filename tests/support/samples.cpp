#include "support/samples.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace test {

std::vector<Bytes> SampleNalUnits(const std::string &file) {
    std::ifstream stream(SAMPLES_DIR "/" + file, std::ios::binary);
    const Bytes bytes(std::istreambuf_iterator<char>(stream), {});
    const Bytes start_code = {0, 0, 1};
    std::vector<Bytes> nal_units;
    auto begin = std::search(bytes.begin(), bytes.end(), start_code.begin(), start_code.end());
    while (begin != bytes.end()) {
        const auto next = std::search(begin + 3, bytes.end(), start_code.begin(), start_code.end());
        Bytes nal(begin, next);
        while (nal.back() == 0)
            nal.pop_back();
        nal_units.push_back(nal);
        begin = next;
    }
    return nal_units;
}

std::vector<Bytes> SampleNalUnits(const std::string &file, int nal_unit_type) {
    std::vector<Bytes> nal_units = SampleNalUnits(file);
    std::erase_if(nal_units, [nal_unit_type](const Bytes &nal) { return nal[3] >> 1 != nal_unit_type; });
    return nal_units;
}

}  // namespace test
