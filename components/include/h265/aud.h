/**
 * @struct aud_h265_t
 * access_unit_delimiter_rbsp( ), ITU-T H.265 clause 7.3.2.5, with its NAL unit type.
 */
#ifndef H265_AUD_H
#define H265_AUD_H

#include "../xtypes.h"

/** @addtogroup delimiters */ /** @{ */

typedef struct aud_h265_t {
    unsigned char nal_type; /**< 6 bits */
    unsigned char pic_type; /**< u(3): 0 I, 1 P and I, 2 B, P and I slices */
} aud_h265_t;

/** @} */

#endif
