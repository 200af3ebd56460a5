#include "h265/sei/user_data.h"

#include <climits>

#include "common/trace.h"
#include "h265/sei/sei_nal_unit.h"

namespace {

enum : unsigned char { USER_DATA_REGISTERED = 4, USER_DATA_UNREGISTERED = 5 };

constexpr unsigned int kSizeByte = kSeiNalPrefixSize + 1;  // behind the payload type
constexpr unsigned int kHeaderSize = kSizeByte + 1;        // up to the first byte of the message's payload

void PutHeader(unsigned char *buffer, unsigned char payload_type, unsigned int payload_size) {
    std::memcpy(buffer, kSeiNalPrefix, kSeiNalPrefixSize);
    buffer[kSeiNalPrefixSize] = payload_type;
    buffer[kSizeByte] = static_cast<unsigned char>(payload_size);
}

// A length that came from a negative int counts as too small as well.
bool IsTooSmall(unsigned int buffer_len, uint64_t needed) {
    return buffer_len > INT_MAX || needed > buffer_len;
}

// Puts the payload behind a header of `header` bytes, and the trailing bits behind it. `no_room` is the text
// for trailing bits that do not fit; they are counted all the same.
int FinishWithPayload(const TraceSite &site, const char *no_room, unsigned char *buffer,
                      unsigned int buffer_len, unsigned int header, const unsigned char *payload,
                      unsigned int payload_size) {
    const int encapsulated =
        RBSP_encapsulation_within_NAL(payload, static_cast<int>(payload_size), buffer + header,
                                      static_cast<int>(buffer_len) - static_cast<int>(header));
    if (encapsulated == 0) {
        TraceAt(site, kError, "SEI RBSP Encapsulation failed!\n");
        return 0;
    }
    const int end = encapsulated + static_cast<int>(header);
    if (end < static_cast<int>(buffer_len))
        buffer[end] = kTrailingBits;
    else
        TraceAt(site, kError, no_room, buffer_len, end, header);
    return end + 1;
}

}  // namespace

int _format_sei_user_data_registered_nal(unsigned char *buffer, unsigned int buffer_len,
                                         BYTE itu_t_t35_country_code,
                                         BYTE itu_t_t35_country_code_extension_byte,
                                         unsigned char *user_data_payload, unsigned int payload_size) {
    constexpr BYTE kExtended = 0xFF;

    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(buffer_len > 3);
    ASSERT_ARGUMENT(user_data_payload != NULL);
    ASSERT_ARGUMENT(payload_size > 0);
    if (IsTooSmall(buffer_len, uint64_t{payload_size} + 11)) {
        TRACE(kError, "SEI output buffer length:%d is too small!\n", buffer_len);
        return 0;
    }
    if (buffer == nullptr || user_data_payload == nullptr)
        return 0;
    const bool extended = itu_t_t35_country_code == kExtended;
    const unsigned int mandatory_bytes = extended ? 2 : 1;
    PutHeader(buffer, USER_DATA_REGISTERED, payload_size + mandatory_bytes);
    // the extension byte takes the place of the country code, on purpose
    buffer[kHeaderSize] = extended ? itu_t_t35_country_code_extension_byte : itu_t_t35_country_code;
    return FinishWithPayload(
        TRACE_SITE,
        "Ouput Buffer length:%d is too small for SEI NAL length:%d plus header length:%d. "
        "Failed to encapsulate.\n",
        buffer, buffer_len, kHeaderSize + mandatory_bytes, user_data_payload, payload_size);
}

int _format_sei_user_data_unregistered_nal(unsigned char *buffer, unsigned int buffer_len,
                                           const unsigned char *pUuid_iso_iec_11578, unsigned int uuid_len,
                                           unsigned char *user_data_payload, unsigned int payload_size) {
    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(buffer_len > 3);
    ASSERT_ARGUMENT(pUuid_iso_iec_11578 != NULL);
    ASSERT_ARGUMENT(uuid_len > 0);
    ASSERT_ARGUMENT(user_data_payload != NULL);
    if (IsTooSmall(buffer_len, uint64_t{uuid_len} + payload_size + 8)) {
        TRACE(kError, "SEI output buffer length:%d is too small!\n", buffer_len);
        return 0;
    }
    if (buffer == nullptr || pUuid_iso_iec_11578 == nullptr || user_data_payload == nullptr)
        return 0;
    PutHeader(buffer, USER_DATA_UNREGISTERED, payload_size + uuid_len);
    std::memcpy(buffer + kHeaderSize, pUuid_iso_iec_11578, uuid_len);
    return FinishWithPayload(
        TRACE_SITE,
        "Ouputbuffer length:%d is too small for SEI NAL length:%d plus header length:%d. "
        "Fail to encapsulate.\n",
        buffer, buffer_len, kHeaderSize + uuid_len, user_data_payload, payload_size);
}
