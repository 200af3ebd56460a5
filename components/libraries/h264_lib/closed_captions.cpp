// Closed captions in SEI: cc_data( ) of ATSC A/53 clause 6.2.3, CTA-708.

#include "h264.h"
#include "registered_user_data.h"
#include "trace.h"

namespace {

using h264::RegisteredUserData;
using h264::SeiReader;

constexpr unsigned char kCcData = 0x03;  // user_data_type_code
constexpr int MAX_CC_COUNT = 31;         // 5 bits

// Goes to the first caption message; the reader then stands behind user_data_type_code.
bool FindCaptions(SeiReader *reader, RegisteredUserData *user_data) {
    while (h264::NextRegisteredUserData(reader, user_data)) {
        unsigned char user_data_type_code = 0;
        if (user_data->user_identifier == h264::kIdentifierGA94 &&
            h264::NextByte(reader, &user_data_type_code) && user_data_type_code == kCcData)
            return true;
    }
    return false;
}

// What stands behind user_data_type_code. Returns the name of the element that cannot be read, null on
// success.
const char *ReadCcData(SeiReader *reader, SEI_cc_t *captions) {
    unsigned char flags_and_count = 0;
    unsigned char em_data = 0;
    if (!h264::NextByte(reader, &flags_and_count))
        return "cc_count";
    captions->cc_data.process_cc_data_flag = flags_and_count >> 6 & 1;
    captions->cc_data.cc_count = flags_and_count & 0x1F;
    if (!h264::NextByte(reader, &em_data))
        return "em_data";
    unsigned char packets[3 * MAX_CC_COUNT];
    if (!h264::NextBytes(reader, packets, 3U * captions->cc_data.cc_count))
        return "cc_data_pkt";
    const unsigned char *packet = packets;
    for (int i = 0; i < captions->cc_data.cc_count; i++, packet += 3) {
        captions->cc_bytes[i].flag = packet[0] >> 2 & 1;
        captions->cc_bytes[i].type = packet[0] & 3;
        captions->cc_bytes[i].data1 = packet[1];
        captions->cc_bytes[i].data2 = packet[2];
    }
    if (!h264::NextByte(reader, &captions->cc_data.marker_bits))
        return "marker_bits";
    return nullptr;
}

}  // namespace

BOOL parse_sei_cc_nal(unsigned char *buffer, int buffer_len, SEI_cc_t *sei_cc) {
    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(sei_cc != NULL);
    if (buffer == nullptr || sei_cc == nullptr)
        return FALSE;
    SeiReader reader{};
    if (!h264::OpenSei(&reader, buffer, buffer_len)) {
        TRACE_ERROR("buffer:%p of length:%d is no SEI NAL unit.\n", static_cast<void *>(buffer), buffer_len);
        return FALSE;
    }
    RegisteredUserData user_data{};
    if (!FindCaptions(&reader, &user_data)) {
        TRACE_ERROR("No closed caption message in the SEI NAL unit.\n");
        return FALSE;
    }
    SEI_cc_t captions{};
    captions.itu_t_t35_country_code = user_data.itu_t_t35_country_code;
    captions.itu_t_t35_provider_code = user_data.itu_t_t35_provider_code;
    captions.user_identifier = user_data.user_identifier;
    captions.user_data_type_code = kCcData;
    captions.header = user_data.header;
    if (const char *const element = ReadCcData(&reader, &captions); element != nullptr) {
        TRACE_ERROR("cannot parse %s.\n", element);
        return FALSE;
    }
    if (!h264::SkipPayload(&reader)) {
        TRACE_ERROR("payload_size:%d runs past the NAL unit.\n", user_data.header.payload_size);
        return FALSE;
    }
    *sei_cc = captions;
    return TRUE;
}
