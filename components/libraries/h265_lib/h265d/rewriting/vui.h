// Writing vui_parameters( ), ITU-T H.265 clause E.2.1.

#ifndef H265D_REWRITING_VUI_H
#define H265D_REWRITING_VUI_H

#include "bitbuffer.h"
#include "h265/sps.h"

// Writes vui_parameters_present_flag and the VUI of the record. Returns 0, or -1 at the first element that
// cannot be written.
int SetVui(bitbuffer_t *bb, const sps_h265_t *sps);

#endif
