// The NAL unit around a user data payload: user_data_registered_itu_t_t35( ) and user_data_unregistered( ),
// ITU-T H.265 clauses D.2.6 and D.2.7.

#ifndef H265_SEI_USER_DATA_H
#define H265_SEI_USER_DATA_H

#include "xtypes.h"

extern "C" {

// Both write a whole prefix SEI NAL unit and return its length, or 0 on failure with the buffer partly
// written. The size of the message is written as one byte: sizes of 256 and more wrap.

// The payload begins with the provider code. Country code 0xFF is followed by the extension byte: that byte
// then stands in the place of the country code, and the byte behind it is left as it was.
int _format_sei_user_data_registered_nal(unsigned char *buffer, unsigned int buffer_len,
                                         BYTE itu_t_t35_country_code,
                                         BYTE itu_t_t35_country_code_extension_byte,
                                         unsigned char *user_data_payload, unsigned int payload_size);

int _format_sei_user_data_unregistered_nal(unsigned char *buffer, unsigned int buffer_len,
                                           const unsigned char *pUuid_iso_iec_11578, unsigned int uuid_len,
                                           unsigned char *user_data_payload, unsigned int payload_size);

}  // extern "C"

#endif
