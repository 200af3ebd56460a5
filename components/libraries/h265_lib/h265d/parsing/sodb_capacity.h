// The scratch of the parameter set parsers, which bounds the NAL units they accept (start code not counted).

#ifndef H265D_PARSING_SODB_CAPACITY_H
#define H265D_PARSING_SODB_CAPACITY_H

// Longer than any VPS or SPS with all scaling lists, reference picture sets and HRDs of usual streams.
inline constexpr unsigned int VPS_SODB_CAPACITY = 1512;
inline constexpr unsigned int SPS_SODB_CAPACITY = 1512;

// A PPS without scaling lists and with few tiles takes some ten bytes.
inline constexpr unsigned int PPS_SODB_CAPACITY = 256;

#endif
