/**
 * @struct H265D_PARSE_CONTEXT
 * Remembers the last parameter sets of one stream, so that an unchanged one is not
 * parsed again.
 */
#ifndef H265_PARSE_CONTEXT_H
#define H265_PARSE_CONTEXT_H

#include "../xtypes.h"
#include "pps.h"
#include "sps.h"
#include "vps.h"

/** @addtogroup parsing */ /** @{ */

#define H265_CONTEXT_VPS_SIZE 256  /**< bytes of the store of a VPS */
#define H265_CONTEXT_SPS_SIZE 1512 /**< bytes of the store of an SPS */
#define H265_CONTEXT_PPS_SIZE 256  /**< bytes of the store of a PPS */

/**
 * Owned by the caller, one a stream, zeroed before its first use. It is large (about 260 KiB): give it
 * static or heap storage. It must not be used by two threads at once.
 *
 * A NAL unit (with its start code) that is longer than its store is parsed and not remembered; the earlier
 * entry stays.
 */
typedef struct H265D_PARSE_CONTEXT {
    size_t LastVPSLength;                /**< the VPS members are not used by this library */
    BYTE LastVPS[H265_CONTEXT_VPS_SIZE]; /**< not used */
    size_t LastSPSLength;                /**< bytes of LastSPS in use; 0: none */
    BYTE LastSPS[H265_CONTEXT_SPS_SIZE]; /**< the SPS, start code included */
    size_t LastPPSLength;                /**< bytes of LastPPS in use; 0: none */
    BYTE LastPPS[H265_CONTEXT_PPS_SIZE]; /**< the PPS, start code included */
    vps_h265_t last_parsed_vps;          /**< not used */
    sps_h265_t last_parsed_sps;          /**< what LastSPS was parsed to */
    pps_h265_t last_parsed_pps;          /**< what LastPPS was parsed to */
} H265D_PARSE_CONTEXT;

/** @} */

#endif
