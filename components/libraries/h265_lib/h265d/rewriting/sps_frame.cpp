#include "h265d/rewriting/sps_frame.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "h264.h"
#include "h265d/framing/nal_type_offset.h"

namespace {

constexpr size_t NAL_HEADER_SIZE = 2;

struct Free {
    void operator()(unsigned char *block) const { std::free(block); }
};

SpsRewriting Cleared(SpsRewriting result, unsigned char **ppNewSpsBuffer, UINT *pNewSPSLength) {
    *ppNewSpsBuffer = nullptr;
    *pNewSPSLength = 0;
    return result;
}

}  // namespace

SpsRewriting RewriteSpsNal(const TraceSite &site, const unsigned char *pBuffer, unsigned int buffer_len,
                           const sps_h265_t *pSpsElements, RewriteSps rewrite, unsigned char **ppNewSpsBuffer,
                           UINT *pNewSPSLength) {
    const size_t NewSpsBufLength = size_t{buffer_len} + MIN_VUI_PARAMETERS_SIZE_BYTES;
    // malloc keeps blocks of usual sizes ready, which calloc does not look for
    std::unique_ptr<unsigned char, Free> new_sps(static_cast<unsigned char *>(std::malloc(NewSpsBufLength)));
    if (new_sps == nullptr) {
        AssertAt(site, "pNewSpsBuffer = calloc(1, NewSpsBufLength)");
        return Cleared(SpsRewriting::kFailed, ppNewSpsBuffer, pNewSPSLength);
    }
    int offset = 0;
    if (!_GetNALTypeOffset(pBuffer, static_cast<int>(std::min<unsigned int>(buffer_len, INT_MAX)), &offset)) {
        TraceAt(site, kError, "Failed to get NAL type offset from pBuffer:%p.\n",
                static_cast<const void *>(pBuffer));
        return Cleared(SpsRewriting::kRefused, ppNewSpsBuffer, pNewSPSLength);
    }
    unsigned char sodb[SPS_SODB_CAPACITY];
    const int sodb_length = H265Lib_SODB_deencapsulation_from_NAL(
        pBuffer + offset, buffer_len - static_cast<unsigned int>(offset), sodb, sizeof sodb);
    if (sodb_length <= 0) {
        TraceAt(site, kError, "Failed to get SODB from RBSP. Output buffer is too small.\n");
        return SpsRewriting::kRefused;
    }
    unsigned char new_sodb[NEW_SPS_SODB_CAPACITY] = {};
    bitbuffer_t reader;
    bitbuffer_t writer;
    if (__DoInitBitBuffer(&reader, sodb, static_cast<unsigned int>(sodb_length) * 8, site.function, site.file,
                          site.line) != 0 ||
        __DoInitBitBuffer(&writer, new_sodb, NEW_SPS_SODB_CAPACITY * 8, site.function, site.file,
                          site.line) != 0) {
        TraceAt(site, kError, "Failed to init Bitbuffer.\n");
        return SpsRewriting::kRefused;
    }
    const int new_sodb_length = rewrite(&reader, sodb_length, pSpsElements, &writer, NEW_SPS_SODB_CAPACITY);
    if (new_sodb_length < 0) {
        // speaks of the VUI, whatever failed
        TraceAt(site, kError, "Failed to set vui parameters SPS NAL!\n");
        return Cleared(SpsRewriting::kFailed, ppNewSpsBuffer, pNewSPSLength);
    }

    const size_t header = static_cast<size_t>(offset) + NAL_HEADER_SIZE;
    std::memcpy(new_sps.get(), pBuffer, header);
    const int encapsulated = RBSP_encapsulation_within_NAL(new_sodb, new_sodb_length, new_sps.get() + header,
                                                           static_cast<int>(NewSpsBufLength - header));
    const size_t length = header + static_cast<size_t>(encapsulated);  // a header alone when it did not fit
    std::memset(new_sps.get() + length, 0, NewSpsBufLength - length);
    *pNewSPSLength = static_cast<UINT>(length);
    *ppNewSpsBuffer = new_sps.release();
    return SpsRewriting::kDone;
}

void H265Lib_Release_sps_buffer(void *pvBuffer) {
    H26XLib_Release_sps_buffer(pvBuffer);
}
