// H265Lib_Parse_sei_pictiming_nal with a VUI and a message header that hold anything, then
// H265Lib_Display_sei_pictiming.

#include "h265.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

namespace {

// Delays that are there, of lengths that can be read.
void MakeUsual(fuzz::FuzzInput *input, vui_h265_t *vui) {
    vui->frame_field_info_present_flag = input->Flag();
    vui->CpbDpbDelaysPresentFlag = 1;
    hrd_h265_t &hrd = vui->nal_hrd;
    hrd.au_cpb_removal_delay_length_minus1 = static_cast<unsigned char>(input->Below(32));
    hrd.dpb_output_delay_length_minus1 = static_cast<unsigned char>(input->Below(32));
    hrd.sub_pic_hrd_params_present_flag = input->Flag();
    hrd.sub_pic_cpb_params_in_pic_timing_sei_flag = input->Flag();
    hrd.dpb_output_delay_du_length_minus1 = static_cast<unsigned char>(input->Below(32));
    hrd.du_cpb_removal_delay_increment_length_minus1 = static_cast<unsigned char>(input->Below(32));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    ForEachNalUnit(data, size, {kPrefixSeiNut, kSuffixSeiNut}, GenerateSei,
                   [](const Bytes &nal, FuzzInput *input) {
                       const DiscardedTrace trace(input);
                       const auto vui = AnyRecord<vui_h265_t>(input);
                       if (input->Byte() < 192)
                           MakeUsual(input, vui.get());
                       const auto header = AnyRecord<SEI_message_t>(input);
                       if (input->Byte() < 192)
                           header->payload_index = input->Below(64);
                       const auto pt = AnyRecord<sei_h265_pic_timing_t>(input);
                       ExactBuffer buffer(nal);
                       H265Lib_Parse_sei_pictiming_nal(buffer.data(), buffer.length(), header.get(),
                                                       vui.get(), pt.get());
                       H265Lib_Display_sei_pictiming(pt.get(), vui.get());
                   });
    return 0;
}
