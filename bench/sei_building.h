// The SEI NAL units that the library and its peers build.

#ifndef BENCH_SEI_BUILDING_H
#define BENCH_SEI_BUILDING_H

#include <string>
#include <vector>

#include "samples.h"

namespace bench {

struct BuiltSei {
    std::string name;  // work/case
    Bytes nal;         // as the library builds it
};

// Those that have a peer: time code, captions, active format.
std::vector<BuiltSei> BuiltSeis();

}  // namespace bench

#endif
