#include "h265d/framing/nal_type_offset.h"

#include "common/trace.h"

BOOL _GetNALTypeOffset(const unsigned char *pBuffer, int buffer_len, int *pnOffset) {
    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(buffer_len >= 4);
    ASSERT_ARGUMENT(pnOffset != NULL);
    if (pBuffer == nullptr || pnOffset == nullptr || buffer_len < 3)
        return FALSE;

    if (pBuffer[0] != 0 || pBuffer[1] != 0)
        return FALSE;
    if (pBuffer[2] == 1) {
        *pnOffset = 3;
        TRACE(kDetail, "Found Annex-B 3 bytes start code prefix.\n");
        return TRUE;
    }
    if (pBuffer[2] == 0 && buffer_len >= 4 && pBuffer[3] == 1) {
        *pnOffset = 4;
        TRACE(kDetail, "Found Annex-B 4 bytes start code prefix.\n");
        return TRUE;
    }
    return FALSE;
}
