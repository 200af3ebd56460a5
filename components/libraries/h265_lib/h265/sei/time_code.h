// Time code: time_code( payloadSize ), ITU-T H.265 clause D.2.27.

#ifndef H265_SEI_TIME_CODE_H
#define H265_SEI_TIME_CODE_H

#include "bitbuffer.h"
#include "h265.h"

extern "C" {

// Puts the time of a VITC record into SEIData->WallTime. Returns 0; or -1 when a pointer is null, or when the
// time is out of range (it has been put there all the same).
int _SMPTEVitcToSEIPictiming(const vitc_t *pVitcData, SEI_time_code_info_t *SEIData);

// Builds the NAL unit. Returns its length, or -1.
int _AssembleTimecodeSEI(unsigned char *buffer, int len, const vitc_t *pVitc_data,
                         SEI_time_code_info_t *pTimecode_data);

// The number of clock timestamps for a picture: 1, for frames and fields alike.
BOOL _DeriveNumClockTs(const sps_h265_t *pSps, unsigned char *pNumClockTS);

// floor(Log2(v)), and 0 for 0: one less than the bits that v needs, which is how the time offset is written.
unsigned int _FindNumberOfBitsToHoldInteger(unsigned int v);

// Writes the message and the trailing bits of the NAL unit. Returns the number of bytes, or -1.
int _set_sei_timecode_elements(bitbuffer_t *sei_nalu_bb, const sei_h265_time_code_t *pTc);

}  // extern "C"

#endif
