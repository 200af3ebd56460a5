#include "h265d/framing/au_delimiter.h"

#include "h265d/framing/parse_frame.h"

namespace {

constexpr unsigned int AUD_SODB_CAPACITY = 16;

}  // namespace

BOOL _parse_aud(bitbuffer_t *aud_bb, aud_h265_t *aud_data) {
    if (aud_bb == nullptr || aud_data == nullptr) {
        TRACE(kError, "Failed to parse aud NAL! aud_bb:%p, aud_data:%p.\n", static_cast<void *>(aud_bb),
              static_cast<void *>(aud_data));
        return FALSE;
    }
    AdvanceBitOffset(aud_bb, 1);  // forbidden_zero_bit
    if (GetNextNBitsAsUint8(aud_bb, 6, &aud_data->nal_type) == -1)
        return FALSE;
    AdvanceBitOffset(aud_bb, 15);  // nuh_layer_id, nuh_temporal_id_plus1 and six bits more, on purpose
    if (GetNextNBitsAsUint8(aud_bb, 3, &aud_data->pic_type) == -1)
        return FALSE;
    TRACE(kInformation, "Sanity Check, Bitbuffer length:%d, Current offset:%d.\n", aud_bb->num_bits,
          aud_bb->bit_offset);
    return TRUE;
}

BOOL H265Lib_Parse_au_delimiter_nal(unsigned char *buffer, int buffer_len, aud_h265_t *aud_data) {
    static constexpr ParseFrameTexts kTexts = {
        TRACE_SITE, kBufferLenTooSmall, "Failed to parse au delimiter nal! buffer:%p.\n", kNoSodbFromRbsp};

    if (buffer == nullptr) {
        TRACE(kError, "Failed to parse aud NAL! buffer:%p.\n", static_cast<void *>(buffer));
        return FALSE;
    }
    unsigned char sodb[AUD_SODB_CAPACITY];
    bitbuffer_t bb;
    if (!OpenSodb({buffer, buffer_len}, kTexts, sodb, sizeof sodb, &bb))
        return FALSE;
    if (!_parse_aud(&bb, aud_data)) {
        TRACE(kError, "Failed to parse aud NAL! aud_bb:%p, num_bits:%d, bit_offset:%d, aud_data:%p.\n",
              static_cast<void *>(&bb), bb.num_bits, bb.bit_offset, static_cast<void *>(aud_data));
        return FALSE;
    }
    return TRUE;
}
