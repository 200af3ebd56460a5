// vui_parameters( ), ITU-T H.265 clause E.2.1.

#ifndef H265D_PARSING_VUI_H
#define H265D_PARSING_VUI_H

#include "bitbuffer.h"
#include "h265/vui.h"

extern "C" {

// Returns 0, or -1 at the first element that cannot be read.
int _parse_vui_parameters(bitbuffer_t *sps_nalu_bb, unsigned char sps_max_sub_layers_minus1, vui_h265_t *vui);

}  // extern "C"

#endif
