// H265Lib_Parse_slice_header_nal: slices with parameter sets that hold anything, and the slices of streams
// with the parameter sets in front of them.

#include "h265.h"
#include "support/byte_stream.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"
#include "syntax/nal_units.h"

namespace {

using fuzz::Bytes;
using fuzz::ExactBuffer;
using fuzz::FuzzInput;

// What a slice header depends on, with values that an SPS may have.
void MakeUsual(FuzzInput *input, sps_h265_t *sps, pps_h265_t *pps) {
    sps->pic_width_in_luma_samples = input->Bits(16);
    sps->pic_height_in_luma_samples = input->Bits(16);
    sps->log2_min_luma_coding_block_size_minus3 = input->Below(4);
    sps->log2_diff_max_min_luma_coding_block_size = input->Below(4);
    sps->log2_max_pic_order_cnt_lsb_minus4 = input->Below(13);
    sps->separate_colour_plane_flag = input->Flag();
    pps->dependent_slice_segments_enabled_flag = input->Flag();
    pps->output_flag_present_flag = input->Flag();
    pps->num_extra_slice_header_bits = static_cast<unsigned char>(input->Below(8));
}

void ParseStream(const Bytes &stream) {
    FuzzInput choices = FuzzInput::Random(stream.size());
    const auto sps = fuzz::AnyRecord<sps_h265_t>(&choices);
    const auto pps = fuzz::AnyRecord<pps_h265_t>(&choices);
    const auto header = fuzz::AnyRecord<ssh_h265_t>(&choices);
    for (const Bytes &nal : fuzz::Split(stream)) {
        ExactBuffer buffer(nal);
        const int nal_unit_type = fuzz::NalUnitType(nal);
        if (nal_unit_type == fuzz::kSpsNut)
            H265Lib_Parse_sps_nal(buffer.data(), buffer.size(), sps.get());
        else if (nal_unit_type == fuzz::kPpsNut)
            H265Lib_Parse_pps_nal(buffer.data(), buffer.length(), pps.get());
        else
            H265Lib_Parse_slice_header_nal(buffer.data(), buffer.length(), sps.get(), pps.get(),
                                           header.get());
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::ForEachNalUnit(data, size, {0}, fuzz::GenerateSlice, [](const Bytes &nal, FuzzInput *input) {
        const fuzz::DiscardedTrace trace(input);
        const auto sps = fuzz::AnyRecord<sps_h265_t>(input);
        const auto pps = fuzz::AnyRecord<pps_h265_t>(input);
        const auto header = fuzz::AnyRecord<ssh_h265_t>(input);
        if (input->Byte() < 192)
            MakeUsual(input, sps.get(), pps.get());
        ExactBuffer buffer(nal);
        H265Lib_Parse_slice_header_nal(buffer.data(), buffer.length(), sps.get(), pps.get(), header.get());
        ParseStream(nal);
    });
    return 0;
}
