// Captions and AFD: their payloads are the same in H.264, whose library has the parsers.

#include "common/trace.h"
#include "h264.h"

BOOL H265Lib_Parse_sei_cc_nal(unsigned char *buffer, int buffer_len, SEI_cc_t *sei_cc) {
    return parse_sei_cc_nal(buffer, buffer_len, sei_cc);
}

BOOL H265Lib_Parse_sei_afd_nal(unsigned char *buffer, int buffer_len, SEI_afd_t *sei_afd) {
    if (buffer_len < 5) {
        TRACE(kError, "buffer_len:%d is too small. Malformed NAL.\n", buffer_len);
        return FALSE;
    }
    return parse_sei_afd_nal(buffer, buffer_len, sei_afd);
}
