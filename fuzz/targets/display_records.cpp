// H265Lib_Display_vps, H265Lib_Display_sps, H265Lib_Display_pps and H265Lib_Display_sei_pictiming of records
// that hold anything, at the level that prints everything.

#include "h265.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"

namespace {

// Else most runs would print hundreds of thousands of lines that are all alike.
void MakeShort(fuzz::FuzzInput *input, vps_h265_t *vps) {
    vps->vps_num_layers_sets_minus1 = input->Below(10);
    vps->vps_num_hrd_parameters = input->Below(4);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    FuzzInput input(data, size);
    const DiscardedTrace trace(&input);
    g_hH265LibDbg->nMaxLevel = kMostDetailedLevel;
    switch (input.Below(4)) {
        case 0: {
            const auto vps = AnyRecord<vps_h265_t>(&input);
            MakeShort(&input, vps.get());
            H265Lib_Display_vps(vps.get());
            break;
        }
        case 1:
            H265Lib_Display_sps(AnyRecord<sps_h265_t>(&input).get());
            break;
        case 2:
            H265Lib_Display_pps(AnyRecord<pps_h265_t>(&input).get());
            break;
        default: {
            const auto pt = AnyRecord<sei_h265_pic_timing_t>(&input);
            H265Lib_Display_sei_pictiming(pt.get(), AnyRecord<vui_h265_t>(&input).get());
            break;
        }
    }
    return 0;
}
