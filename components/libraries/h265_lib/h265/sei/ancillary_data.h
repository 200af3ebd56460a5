// What the builders of captions and AFD share.

#ifndef H265_SEI_ANCILLARY_DATA_H
#define H265_SEI_ANCILLARY_DATA_H

#include "vanc.h"

inline constexpr unsigned char ITU_T_T35_COUNTRY_CODE_USA = 0xB5;

// The entries of an array that is given by its size in bytes; not positive when the size is negative.
inline int VancEntries(int vanc_size) {
    return vanc_size / static_cast<int>(sizeof(vanc_t));
}

#endif
