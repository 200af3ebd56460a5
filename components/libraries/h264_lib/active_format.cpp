// Active format description in SEI: afd_data( ) of ATSC A/53 clause 6.2.4, ETSI TS 101 154 annex B.

#include "h264.h"
#include "registered_user_data.h"
#include "trace.h"

BOOL parse_sei_afd_nal(unsigned char *buffer, int buffer_len, SEI_afd_t *sei_afd) {
    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(sei_afd != NULL);
    if (buffer == nullptr || sei_afd == nullptr)
        return FALSE;
    h264::SeiReader reader{};
    if (!h264::OpenSei(&reader, buffer, buffer_len)) {
        TRACE_ERROR("buffer:%p of length:%d is no SEI NAL unit.\n", static_cast<void *>(buffer), buffer_len);
        return FALSE;
    }
    h264::RegisteredUserData user_data{};
    do {
        if (!h264::NextRegisteredUserData(&reader, &user_data)) {
            TRACE_ERROR("No active format description in the SEI NAL unit.\n");
            return FALSE;
        }
    } while (user_data.user_identifier != h264::kIdentifierDTG1);

    unsigned char flag = 0;
    unsigned char format = 0;
    if (!h264::NextByte(&reader, &flag)) {
        TRACE_ERROR("cannot parse active_format_flag.\n");
        return FALSE;
    }
    const int active_format_flag = flag >> 6 & 1;  // behind a zero bit, in front of six reserved ones
    if (active_format_flag && !h264::NextByte(&reader, &format)) {
        TRACE_ERROR("cannot parse active_format.\n");
        return FALSE;
    }
    if (!h264::SkipPayload(&reader)) {
        TRACE_ERROR("payload_size:%d runs past the NAL unit.\n", user_data.header.payload_size);
        return FALSE;
    }
    *sei_afd = {user_data.itu_t_t35_country_code,
                user_data.itu_t_t35_provider_code,
                user_data.user_identifier,
                {active_format_flag, static_cast<unsigned char>(format & 0x0F)},
                user_data.header};
    return TRUE;
}
