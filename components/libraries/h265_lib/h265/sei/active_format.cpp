// Active format description: ATSC A/53 clause 6.2.4 in registered user data.

#include "common/trace.h"
#include "h265/sei/ancillary_data.h"
#include "h265/sei/user_data.h"

namespace {

// The first entry that says what the active format is; null when there is none.
const afd_t *FindActiveFormat(const vanc_t *entries, int count) {
    for (int i = 0; i < count; i++) {
        if (entries[i].suid == SUID_AFD && (entries[i].vanc_data.afd_data.active_format_flag & 1) != 0)
            return &entries[i].vanc_data.afd_data;
    }
    return nullptr;
}

}  // namespace

int H265Lib_format_sei_afd_nal(unsigned char *pBuffer, int BufferLen, const vanc_t *pVancData, int VancSize) {
    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(BufferLen > 0);
    // provider code 0x0031, identifier, no active format: the flag's byte ends with the bits 000001
    unsigned char payload[8] = {0x00, 0x31, 'D', 'T', 'G', '1', 0x01};
    unsigned int payload_size = 7;

    const int vanc_entries = VancEntries(VancSize);
    if (pVancData == nullptr || vanc_entries <= 0) {
        TRACE(kWarning, "vanc_data:%p, vanc_entries:%d, No ANC data is present.\n",
              static_cast<const void *>(pVancData), vanc_entries);
    } else if (const afd_t *const afd = FindActiveFormat(pVancData, vanc_entries); afd != nullptr) {
        payload[6] = 0x41;
        payload[7] = afd->active_format | 0xF0;
        payload_size = 8;
    }
    return _format_sei_user_data_registered_nal(pBuffer, static_cast<unsigned int>(BufferLen),
                                                ITU_T_T35_COUNTRY_CODE_USA, 0, payload, payload_size);
}
