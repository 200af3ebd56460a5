// H265Lib_format_sei_pictiming_nal: what goes in comes out of a scan and a parse.

#include <memory>

#include "h265.h"
#include "support/built_sei.h"
#include "support/check.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"

namespace {

using fuzz::ExactBuffer;
using fuzz::FuzzInput;

// A VUI whose HRD the message can be read back with.
void MakeUsual(FuzzInput *input, vui_h265_t *vui) {
    hrd_h265_t &hrd = vui->nal_hrd;
    hrd.nal_hrd_parameters_present_flag = input->Flag();
    hrd.vcl_hrd_parameters_present_flag = input->Flag();
    hrd.au_cpb_removal_delay_length_minus1 = static_cast<unsigned char>(input->Below(32));
    hrd.dpb_output_delay_length_minus1 = static_cast<unsigned char>(input->Below(32));
    hrd.sub_pic_hrd_params_present_flag = 0;
    vui->frame_field_info_present_flag = 1;
    vui->CpbDpbDelaysPresentFlag =
        hrd.nal_hrd_parameters_present_flag != 0 || hrd.vcl_hrd_parameters_present_flag != 0;
}

UINT64 LowBits(UINT64 value, unsigned int length_minus1) {
    return value & UINT64_MAX >> (63 - length_minus1);
}

void CheckParsed(fuzz::BuiltSei *sei, const vui_h265_t &vui, const sei_h265_pic_timing_t &given) {
    const auto pt = std::make_unique<sei_h265_pic_timing_t>();
    FUZZ_CHECK(sei->suid == SUID_PICTURE_TIMING);
    FUZZ_CHECK(
        H265Lib_Parse_sei_pictiming_nal(sei->nal.data(), sei->nal.length(), &sei->header, &vui, pt.get()));
    FUZZ_CHECK(pt->pic_struct == (given.pic_struct & 15) &&
               pt->source_scan_type == (given.source_scan_type & 3) &&
               pt->duplicate_flag == (given.duplicate_flag != 0));
    if (!vui.CpbDpbDelaysPresentFlag)
        return;
    FUZZ_CHECK(pt->au_cpb_removal_delay_minus1 ==
               LowBits(given.au_cpb_removal_delay_minus1, vui.nal_hrd.au_cpb_removal_delay_length_minus1));
    FUZZ_CHECK(pt->pic_dpb_output_delay ==
               LowBits(given.pic_dpb_output_delay, vui.nal_hrd.dpb_output_delay_length_minus1));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    constexpr unsigned int kReservedPicStructs = 13;  // from here on; a first byte 0xFF joins the size
    FuzzInput input(data, size);
    const fuzz::DiscardedTrace trace(&input);
    const auto vui = fuzz::AnyRecord<vui_h265_t>(&input);
    const bool usual = input.Byte() < 192;
    if (usual)
        MakeUsual(&input, vui.get());
    const auto pt = fuzz::AnyRecord<sei_h265_pic_timing_t>(&input);
    if (input.Flag())
        pt->pic_struct = static_cast<unsigned char>(input.Below(13));
    ExactBuffer buffer(input.Flag() ? 64 : input.Below(64));

    UINT length = buffer.unsigned_length();
    if (!H265Lib_format_sei_pictiming_nal(buffer.data(), &length, vui.get(), pt.get())) {
        FUZZ_CHECK(length == buffer.size());
        return 0;
    }
    FUZZ_CHECK(length > 5 && length <= buffer.size());
    if (usual && (pt->pic_struct & 15U) < kReservedPicStructs) {
        fuzz::BuiltSei sei(buffer.Content(length));
        CheckParsed(&sei, *vui, *pt);
    }
    return 0;
}
