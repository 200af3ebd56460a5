// H265Lib_modify_sps_NAL with H265Lib_Release_sps_buffer: source flags, picture size, conformance window and
// VUI come from the record, two constraint flags become 0, nothing else changes.

#include "support/byte_stream.h"
#include "support/sps_rewriting.h"
#include "support/target.h"

namespace {

using fuzz::Bytes;
using fuzz::FuzzInput;

void Edit(FuzzInput *input, sps_h265_t *sps) {
    if (input->Flag())
        return;
    sps->ptl.general_progressive_source_flag = input->Flag();
    sps->ptl.general_interlaced_source_flag = input->Flag();
    sps->pic_width_in_luma_samples = input->Number();
    sps->pic_height_in_luma_samples = input->Number();
    if (sps->conformance_window_flag)
        sps->conf_win_bottom_offset = input->Number();
}

void ClearConstraints(sps_h265_t *sps) {
    sps->ptl.general_non_packed_constraint_flag = 0;
    sps->ptl.general_frame_only_constraint_flag = 0;
}

Bytes WithoutConstraints(const Bytes &sodb, const sps_h265_t &sps) {
    Bytes cleared = sodb;
    fuzz::SetBits(&cleared, static_cast<size_t>(sps.ptl.general_scantype_bitoffset) + 2, 2, 0);
    return cleared;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static constexpr fuzz::SpsRewriting kSpsModification = {H265Lib_modify_sps_NAL, Edit, ClearConstraints,
                                                            WithoutConstraints};
    fuzz::CheckSpsRewriting(data, size, kSpsModification);
    return 0;
}
