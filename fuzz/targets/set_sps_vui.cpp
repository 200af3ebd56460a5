// H265Lib_Set_sps_vui_parameters_NAL with H265Lib_Release_sps_buffer: the VUI is replaced, nothing else; with
// the VUI as it was, the SPS stays as it was.

#include "support/sps_rewriting.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    static constexpr SpsRewriting kVuiReplacement = {
        H265Lib_Set_sps_vui_parameters_NAL,
        [](FuzzInput *, sps_h265_t *) {},
        [](sps_h265_t *) {},
        [](const Bytes &sodb, const sps_h265_t &) { return sodb; },
    };
    CheckSpsRewriting(data, size, kVuiReplacement);
    return 0;
}
