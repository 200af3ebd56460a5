// Walking and classifying the messages of a SEI NAL unit, ITU-T H.265 clause 7.3.5.

#ifndef H265D_SEI_MESSAGE_SCAN_H
#define H265D_SEI_MESSAGE_SCAN_H

#include "xtypes.h"

extern "C" {

// Tells registered user data apart, given the payload from its country code on and the bytes that are left:
// sets *penSUID to SUID_CLOSED_CAPTION or SUID_AFD and returns TRUE, else to SUID_UNKNOWN and returns FALSE.
BOOL _FindSEIUserDataRegisteredSUID(const unsigned char *pBuffer, int BufferLen, int *penSUID);

}  // extern "C"

#endif
