#include "support/interposed_services.h"

#include <unistd.h>

#include <cerrno>
#include <climits>

#include "bitbuffer.h"

namespace {

int openings_until_refusal = INT_MAX;
int interrupted_writes = 0;
int pretended_sodb_length = 0;  // 0: none
unsigned int last_input_length = 0;

}  // namespace

extern "C" {

// The linker directs the libraries' calls here (--wrap).
int __real___DoInitBitBuffer(bitbuffer_t *bb, unsigned char *buffer, unsigned int num_bits,
                             const char *function, const char *file, int line);
ssize_t __real_write(int file, const void *bytes, size_t length);
int __real_H265Lib_SODB_deencapsulation_from_NAL(const unsigned char *input_buf, unsigned int inbuf_len,
                                                 unsigned char *output_buf, unsigned int outbuf_len);

int __wrap___DoInitBitBuffer(bitbuffer_t *bb, unsigned char *buffer, unsigned int num_bits,
                             const char *function, const char *file, int line);
int __wrap___DoInitBitBuffer(bitbuffer_t *bb, unsigned char *buffer, unsigned int num_bits,
                             const char *function, const char *file, int line) {
    if (openings_until_refusal == INT_MAX || --openings_until_refusal > 0)
        return __real___DoInitBitBuffer(bb, buffer, num_bits, function, file, line);
    *bb = {};
    return -1;
}

ssize_t __wrap_write(int file, const void *bytes, size_t length);
ssize_t __wrap_write(int file, const void *bytes, size_t length) {
    if (interrupted_writes == 0)
        return __real_write(file, bytes, length);
    interrupted_writes--;
    errno = EINTR;
    return -1;
}

int __wrap_H265Lib_SODB_deencapsulation_from_NAL(const unsigned char *input_buf, unsigned int inbuf_len,
                                                 unsigned char *output_buf, unsigned int outbuf_len);
int __wrap_H265Lib_SODB_deencapsulation_from_NAL(const unsigned char *input_buf, unsigned int inbuf_len,
                                                 unsigned char *output_buf, unsigned int outbuf_len) {
    if (pretended_sodb_length == 0)
        return __real_H265Lib_SODB_deencapsulation_from_NAL(input_buf, inbuf_len, output_buf, outbuf_len);
    last_input_length = inbuf_len;
    return pretended_sodb_length;
}

}  // extern "C"

namespace test {

RefusedBitBuffers::RefusedBitBuffers(int first_refused) {
    openings_until_refusal = first_refused;
}

RefusedBitBuffers::~RefusedBitBuffers() {
    openings_until_refusal = INT_MAX;
}

void InterruptWrites(int calls) {
    interrupted_writes = calls;
}

PretendedSodbLength::PretendedSodbLength(int length) {
    pretended_sodb_length = length;
}

PretendedSodbLength::~PretendedSodbLength() {
    pretended_sodb_length = 0;
}

unsigned int PretendedSodbLength::InputLength() {
    return last_input_length;
}

}  // namespace test
