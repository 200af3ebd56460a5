// A SEI NAL unit walked with H265Lib_DetermineSEIType, and each message handed to the parser of its kind:
// H265Lib_Parse_sei_pictiming_nal, H265Lib_Parse_sei_timecode_nal, H265Lib_Parse_sei_cc_nal,
// H265Lib_Parse_sei_afd_nal.

#include <memory>

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

void ParseMessage(ExactBuffer *nal, const SEI_message_t &header, int suid, FuzzInput *input) {
    switch (suid) {
        case SUID_PICTURE_TIMING: {
            const auto vui = fuzz::AnyRecord<vui_h265_t>(input);
            const auto pt = fuzz::AnyRecord<sei_h265_pic_timing_t>(input);
            H265Lib_Parse_sei_pictiming_nal(nal->data(), nal->length(), &header, vui.get(), pt.get());
            H265Lib_Display_sei_pictiming(pt.get(), vui.get());
            break;
        }
        case SUID_TIME_CODE: {
            const auto tc = fuzz::AnyRecord<sei_h265_time_code_t>(input);
            H265Lib_Parse_sei_timecode_nal(nal->data(), nal->length(), &header, tc.get());
            break;
        }
        case SUID_CLOSED_CAPTION: {
            const auto captions = fuzz::AnyRecord<SEI_cc_t>(input);
            if (H265Lib_Parse_sei_cc_nal(nal->data(), nal->length(), captions.get()))
                FUZZ_CHECK(captions->cc_data.cc_count < H265_SEI_CAPTIONS);
            break;
        }
        case SUID_AFD: {
            const auto afd = fuzz::AnyRecord<SEI_afd_t>(input);
            if (H265Lib_Parse_sei_afd_nal(nal->data(), nal->length(), afd.get()))
                FUZZ_CHECK(afd->afd_data.active_format <= 15);
            break;
        }
        default:
            FUZZ_CHECK(suid == SUID_UNKNOWN);
            break;
    }
}

void Walk(const Bytes &nal, FuzzInput *input) {
    const fuzz::DiscardedTrace trace(input);
    ExactBuffer buffer(nal);
    const size_t sodb_size = fuzz::Sodb(nal).size();
    int payload_offset = 0;
    int nal_type_offset = 0;
    BOOL more = TRUE;
    while (more) {
        const int before = payload_offset;
        SEI_message_t header{};
        int suid = SUID_UNKNOWN;
        if (!H265Lib_DetermineSEIType(buffer.data(), buffer.length(), &payload_offset, &nal_type_offset,
                                      &header, &suid, &more)) {
            FUZZ_CHECK(!more);
            return;
        }
        FUZZ_CHECK(payload_offset >= before + 2);  // the walk comes to an end
        FUZZ_CHECK(size_t{header.payload_index} + header.payload_size <= sodb_size);
        ParseMessage(&buffer, header, suid, input);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::ForEachNalUnit(data, size, {fuzz::kPrefixSeiNut, fuzz::kSuffixSeiNut}, fuzz::GenerateSei, Walk);
    return 0;
}
