// Buffers that the rewriting functions hand out.

#include <cstdlib>

#include "h264.h"

void H26XLib_Release_sps_buffer(void *pvBuffer) {
    std::free(pvBuffer);
}
