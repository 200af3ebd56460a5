// The access unit delimiter, ITU-T H.265 clause 7.3.2.5.

#include <cstring>

#include "common/trace.h"

int H265Lib_format_au_delimiter_nalu(unsigned char *buffer, unsigned int len, unsigned int primary_pic_type) {
    constexpr unsigned int kMaxPicType = 2;
    constexpr unsigned char kDelimiter[] = {0x00, 0x00, 0x00, 0x01, 0x46, 0x01};

    if (buffer == nullptr || len < 8) {  // one byte more than is written
        TRACE(kError, "ERROR - buffer:%p should not be NULL or len:%d, should be greater than 8!\n",
              static_cast<void *>(buffer), len);
        return -1;
    }
    if (primary_pic_type > kMaxPicType) {
        TRACE(kError, "primary_pic_type:%d, should not be greater than %d!\n", primary_pic_type, kMaxPicType);
        return -1;
    }
    std::memcpy(buffer, kDelimiter, sizeof kDelimiter);
    buffer[sizeof kDelimiter] = static_cast<unsigned char>(primary_pic_type << 5 | 0x10);  // with stop bit
    return sizeof kDelimiter + 1;
}
