// Every kind of NAL unit through the parsers, displays and rewriters while g_hH265LibDbg is NULL: nothing is
// traced, and nothing needs the channel.

#include <string_view>

#include "h265.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/target.h"
#include "syntax/nal_units.h"

namespace {

using fuzz::Bytes;
using fuzz::ExactBuffer;
using fuzz::FuzzInput;

void UseParameterSets(ExactBuffer *nal, FuzzInput *input) {
    const auto vps = fuzz::AnyRecord<vps_h265_t>(input);
    const auto sps = fuzz::AnyRecord<sps_h265_t>(input);
    const auto pps = fuzz::AnyRecord<pps_h265_t>(input);
    if (H265Lib_Parse_vps_nal(nal->data(), nal->size(), vps.get()))
        H265Lib_Display_vps(vps.get());
    H265Lib_Parse_pps_nal(nal->data(), nal->length(), pps.get());
    H265Lib_Display_pps(pps.get());
    const BOOL parsed = H265Lib_Parse_sps_nal(nal->data(), nal->size(), sps.get());
    H265Lib_Display_sps(sps.get());
    unsigned char *new_sps = nullptr;
    UINT new_length = 0;
    if (parsed) {
        H265Lib_modify_sps_NAL(nal->data(), nal->unsigned_length(), sps.get(), &new_sps, &new_length);
        H265Lib_Release_sps_buffer(new_sps);
    }
    const auto header = fuzz::AnyRecord<ssh_h265_t>(input);
    H265Lib_Parse_slice_header_nal(nal->data(), nal->length(), sps.get(), pps.get(), header.get());
    H265Lib_modify_vps_NAL(nal->data(), nal->unsigned_length());
}

void UseSei(ExactBuffer *nal, FuzzInput *input) {
    const auto vui = fuzz::AnyRecord<vui_h265_t>(input);
    const auto pt = fuzz::AnyRecord<sei_h265_pic_timing_t>(input);
    const auto tc = fuzz::AnyRecord<sei_h265_time_code_t>(input);
    SEI_message_t header{};
    int payload_offset = 0;
    int nal_type_offset = 0;
    int suid = 0;
    BOOL more = FALSE;
    H265Lib_DetermineSEIType(nal->data(), nal->length(), &payload_offset, &nal_type_offset, &header, &suid,
                             &more);
    H265Lib_Parse_sei_pictiming_nal(nal->data(), nal->length(), &header, vui.get(), pt.get());
    H265Lib_Display_sei_pictiming(pt.get(), vui.get());
    H265Lib_Parse_sei_timecode_nal(nal->data(), nal->length(), &header, tc.get());
    H265Lib_Parse_sei_cc_nal(nal->data(), nal->length(), fuzz::AnyRecord<SEI_cc_t>(input).get());
    H265Lib_Parse_sei_afd_nal(nal->data(), nal->length(), fuzz::AnyRecord<SEI_afd_t>(input).get());
    UINT length = nal->unsigned_length();
    H265Lib_modify_pictiming_sei_NAL(nal->data(), &length, vui.get(), header.payload_index, pt.get());
}

// Other channels may speak.
void ExpectNoMessage(const DbgTraceMessage *message, void *) {
    FUZZ_CHECK(std::string_view(message->channel) != "H265LIB");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const HDBG channel = g_hH265LibDbg;
    g_hH265LibDbg = nullptr;
    DbgTraceSetSink(ExpectNoMessage, nullptr);
    fuzz::ForEachNalUnit(data, size, {}, fuzz::GenerateNalUnit, [](const Bytes &nal, FuzzInput *input) {
        ExactBuffer buffer(nal);
        UseParameterSets(&buffer, input);
        UseSei(&buffer, input);
    });
    DbgTraceSetSink(nullptr, nullptr);
    g_hH265LibDbg = channel;
    return 0;
}
