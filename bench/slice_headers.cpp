// Parsing slice segment headers, whose time must not depend on the length of the slice.

#include <memory>

#include "h265.h"
#include "operation.h"
#include "samples.h"

namespace bench {

void AddSliceHeaders() {
    for (const NalCase &slice : SliceHeaders()) {
        Add(slice.name + "/ours", [&slice] {
            const Bytes &sps_nal = slice.parameter_sets[1];
            const Bytes &pps_nal = slice.parameter_sets[2];
            const auto sps = std::make_shared<sps_h265_t>();
            const auto pps = std::make_shared<pps_h265_t>();
            H265Lib_Parse_sps_nal(sps_nal.data(), sps_nal.size(), sps.get());
            H265Lib_Parse_pps_nal(pps_nal.data(), static_cast<int>(pps_nal.size()), pps.get());
            return [&nal = slice.nal, sps, pps, header = ssh_h265_t{}]() mutable {
                return H265Lib_Parse_slice_header_nal(nal.data(), static_cast<int>(nal.size()), sps.get(),
                                                      pps.get(), &header) != FALSE;
            };
        });
    }
}

}  // namespace bench
