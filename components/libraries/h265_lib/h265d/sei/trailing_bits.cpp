#include "h265d/sei/trailing_bits.h"

#include <strings.h>

TrailingBits FindTrailingBits(const TraceSite &site, const unsigned char *nal, int length,
                              int header_offset) {
    const int payload_start = header_offset + 2;
    int last = length - 1;
    for (;; last--) {
        if (TraceLetsThrough(kFunction))
            TraceAt(site, kFunction, "Attempting to find the stop bit position for the LastByte[%d]:%02X.\n",
                    last, nal[last]);
        if (nal[last] != 0 || last < payload_start)
            break;
    }
    TrailingBits found = {last, ffs(nal[last]), last + 1 - header_offset};
    if (found.StopBitPos == 8 && last >= payload_start)
        found.length_without--;
    return found;
}
