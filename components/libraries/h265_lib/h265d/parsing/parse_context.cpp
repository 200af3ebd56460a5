// Parameter sets through a parse context: an unchanged one is not parsed again.

#include <cstring>

#include "common/trace.h"

namespace {

constexpr size_t kShortestLength = 5;  // anything shorter is refused unseen, as by the parsers themselves

// Whether the NAL unit is the one remembered. A length that no store can have, in a context that was not
// zeroed, never matches.
template <size_t capacity>
bool IsRemembered(const unsigned char *nal, size_t length, const BYTE (&last)[capacity], size_t last_length) {
    return last_length == length && length <= capacity && std::memcmp(nal, last, length) == 0;
}

// Remembers a NAL unit and its record. A NAL unit longer than the store is not remembered: the earlier entry
// stays valid.
template <size_t capacity, typename Record>
void Remember(const unsigned char *nal, size_t length, const Record &record, BYTE (&last)[capacity],
              size_t *last_length, Record *last_record) {
    if (length > capacity)
        return;
    std::memset(last, 0, capacity);
    std::memcpy(last, nal, length);
    *last_length = length;
    if (last_record != &record)  // the caller may parse right into the context
        std::memcpy(last_record, &record, sizeof record);
}

template <typename Record>
void Recall(const Record &last_record, Record *record) {
    if (record != &last_record)
        std::memcpy(record, &last_record, sizeof last_record);
}

}  // namespace

BOOL H265Lib_Parse_sps_nal_ex(const unsigned char *buffer, size_t buffer_len, H265D_PARSE_CONTEXT *pContext,
                              sps_h265_t *pSps) {
    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(pContext != NULL);
    ASSERT_ARGUMENT(pSps != NULL);
    if (buffer_len < kShortestLength) {
        TRACE(kError, "buffer_len:%d is too small. Malformed NAL.\n", static_cast<int>(buffer_len));
        return FALSE;
    }
    if (buffer == nullptr || pContext == nullptr || pSps == nullptr)
        return FALSE;
    if (IsRemembered(buffer, buffer_len, pContext->LastSPS, pContext->LastSPSLength)) {
        TRACE(kFunction, "SPS has not changed no need to parse it again.\n");
        Recall(pContext->last_parsed_sps, pSps);
        return TRUE;
    }
    if (pSps == &pContext->last_parsed_sps)
        pContext->LastSPSLength = 0;  // parsed right into the context: the remembered record is gone
    if (!H265Lib_Parse_sps_nal(buffer, buffer_len, pSps)) {
        TRACE(kError, "Failed to parse SPS NAL!\n");
        return FALSE;
    }
    Remember(buffer, buffer_len, *pSps, pContext->LastSPS, &pContext->LastSPSLength,
             &pContext->last_parsed_sps);
    return TRUE;
}

BOOL H265Lib_Parse_pps_nal_ex(const unsigned char *buffer, unsigned int buffer_len,
                              H265D_PARSE_CONTEXT *pContext, pps_h265_t *pps) {
    ASSERT_ARGUMENT(buffer != NULL);
    ASSERT_ARGUMENT(pContext != NULL);
    ASSERT_ARGUMENT(pps != NULL);
    if (buffer_len < kShortestLength) {
        TRACE(kError, "buffer_len:%d is too small. Malformed NAL.\n", static_cast<int>(buffer_len));
        return FALSE;
    }
    if (buffer == nullptr || pContext == nullptr || pps == nullptr)
        return FALSE;
    if (IsRemembered(buffer, buffer_len, pContext->LastPPS, pContext->LastPPSLength)) {
        TRACE(kFunction, "PPS has not changed no need to parse it again.\n");
        Recall(pContext->last_parsed_pps, pps);
        return TRUE;
    }
    if (pps == &pContext->last_parsed_pps)
        pContext->LastPPSLength = 0;  // parsed right into the context: the remembered record is gone
    if (!H265Lib_Parse_pps_nal(buffer, static_cast<int>(buffer_len), pps)) {
        TRACE(kError, "Failed to parse PPS NAL!\n");
        return FALSE;
    }
    Remember(buffer, buffer_len, *pps, pContext->LastPPS, &pContext->LastPPSLength,
             &pContext->last_parsed_pps);
    return TRUE;
}
