// H265Lib_modify_pictiming_sei_NAL: the four bits of pic_struct change at the payload's place, and zero bytes
// behind the trailing bits go away; or nothing changes.

#include "h265.h"
#include "support/byte_stream.h"
#include "support/check.h"
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

// Where the first picture timing message stands, sometimes elsewhere.
UINT PayloadIndex(const Bytes &nal, FuzzInput *input) {
    if (input->Byte() >= 192)
        return input->Number();
    ExactBuffer buffer(nal);
    SEI_message_t header{};
    int payload_offset = 0;
    int nal_type_offset = 0;
    int suid = SUID_UNKNOWN;
    BOOL more = TRUE;
    while (more && suid != SUID_PICTURE_TIMING)
        H265Lib_DetermineSEIType(buffer.data(), buffer.length(), &payload_offset, &nal_type_offset, &header,
                                 &suid, &more);
    return header.payload_index;
}

Bytes WithoutTrailingZeros(Bytes bytes) {
    while (!bytes.empty() && bytes.back() == 0)
        bytes.pop_back();
    return bytes;
}

// `room`: the length that the NAL unit had. A header alone says that the result did not fit.
void CheckModified(const Bytes &before, const Bytes &after, UINT payload_index, unsigned int pic_struct) {
    const size_t header = fuzz::StartCodeLength(before) + fuzz::kNalUnitHeaderSize;
    FUZZ_CHECK(after.size() <= before.size());
    FUZZ_CHECK(Bytes(after.begin(), after.begin() + static_cast<std::ptrdiff_t>(header)) ==
               Bytes(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(header)));
    if (after.size() == header)
        return;
    Bytes expected = fuzz::Sodb(WithoutTrailingZeros(before));
    fuzz::SetBits(&expected, size_t{payload_index} * 8, 4, pic_struct);
    FUZZ_CHECK(fuzz::Sodb(after) == expected);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::ForEachNalUnit(
        data, size, {fuzz::kPrefixSeiNut, fuzz::kSuffixSeiNut}, fuzz::GenerateSei,
        [](const Bytes &unit, FuzzInput *input) {
            const fuzz::DiscardedTrace trace(input);
            Bytes nal = unit;
            if (input->Flag())
                nal.push_back(0);  // room for an emulation prevention byte
            const UINT payload_index = PayloadIndex(nal, input);
            const auto vui = fuzz::AnyRecord<vui_h265_t>(input);
            if (input->Byte() < 192)
                vui->frame_field_info_present_flag = 1;
            const auto pt = fuzz::AnyRecord<sei_h265_pic_timing_t>(input);
            if (input->Flag())
                pt->pic_struct = static_cast<unsigned char>(input->Below(16));

            ExactBuffer buffer(nal);
            UINT length = buffer.unsigned_length();
            if (H265Lib_modify_pictiming_sei_NAL(buffer.data(), &length, vui.get(), payload_index, pt.get()))
                CheckModified(nal, buffer.Content(length), payload_index, pt->pic_struct & 15U);
            else
                FUZZ_CHECK(length == nal.size() && buffer.Content() == nal);
        });
    return 0;
}
