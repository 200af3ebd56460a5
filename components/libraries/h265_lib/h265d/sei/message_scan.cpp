#include "h265d/sei/message_scan.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "common/trace.h"
#include "h265d/framing/nal_type_offset.h"
#include "h265d/sei/trailing_bits.h"

namespace {

enum NalUnitType : int { PREFIX_SEI_NUT = 39, SUFFIX_SEI_NUT = 40 };

enum PayloadType : int { PIC_TIMING = 1, USER_DATA_REGISTERED_ITU_T_T35 = 4, TIME_CODE = 136 };

// The largest payload types that are looked at, by NAL unit type.
constexpr int MAX_PAYLOAD_TYPE_PREFIX = 202;
constexpr int MAX_PAYLOAD_TYPE_SUFFIX = 146;

constexpr int MAX_NAL_TYPE_OFFSET = 4;  // the longest start code

constexpr unsigned int SEI_SODB_CAPACITY = 1024;  // SEI NAL units up to this length need no heap

constexpr int SMALLEST_REGISTERED_USER_DATA = 7;  // country code, provider code, user identifier
constexpr int MORE_MESSAGES_THRESHOLD = 2;        // so many bytes behind a payload are taken as padding

int NalUnitTypeAt(const unsigned char *header) {
    return header[0] >> 1 & 0x3F;
}

// Scratch for the de-encapsulated data: a local array, or a heap block for long NAL units.
struct Scratch {
    unsigned char local[SEI_SODB_CAPACITY];
    unsigned char *heap = nullptr;

    ~Scratch() { std::free(heap); }
};

// What is known of the NAL unit during one call.
struct Walk {
    const unsigned char *sodb;
    int length;
    int idx;
};

// Reads a payload type or size: one byte, and every 0xFF that directly follows. This is not how H.265 codes
// values of 255 and more; it is intended so.
template <typename Value>
bool ReadSum(const TraceSite &site, Walk *walk, Value *value) {
    do {
        if (walk->idx < 0 || walk->idx >= walk->length) {
            TraceAt(site, kError,
                    "It seems that we are out of the SODB buffer! index:%d, SODB buffer length:%d.\n",
                    walk->idx, walk->length);
            return false;
        }
        *value = static_cast<Value>(*value + walk->sodb[walk->idx]);
        walk->idx++;
    } while (walk->idx < walk->length && walk->sodb[walk->idx] == 0xFF);
    return true;
}

}  // namespace

BOOL _FindSEIUserDataRegisteredSUID(const unsigned char *pBuffer, int BufferLen, int *penSUID) {
    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(penSUID != NULL);
    if (pBuffer == nullptr || penSUID == nullptr)
        return FALSE;
    // behind country and provider code, which are not examined
    if (BufferLen > 7 && std::memcmp(pBuffer + 3, "GA94\x03", 5) == 0) {
        *penSUID = SUID_CLOSED_CAPTION;
        return TRUE;
    }
    if (BufferLen > 6 && std::memcmp(pBuffer + 3, "DTG1", 4) == 0) {
        *penSUID = SUID_AFD;
        return TRUE;
    }
    TRACE(kError, "Failed to determine SEI data registered type!\n");
    *penSUID = SUID_UNKNOWN;
    return FALSE;
}

BOOL H265Lib_DetermineSEIType(const unsigned char *pBuffer, int BufferLen, int *pPayloadOffset,
                              int *pNALTypeOffset, SEI_message_t *pSEIMessageHeader, int *penSUID,
                              BOOL *pbMoreSEIMessages) {
    static LastLogged last_logged{0};

    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(BufferLen >= 7);
    ASSERT_ARGUMENT(pPayloadOffset != NULL);
    if (pPayloadOffset != nullptr)
        ASSERT_ARGUMENT(*pPayloadOffset >= 0);
    ASSERT_ARGUMENT(pNALTypeOffset != NULL);
    if (pNALTypeOffset != nullptr)
        ASSERT_ARGUMENT(*pNALTypeOffset >= 0);
    ASSERT_ARGUMENT(pSEIMessageHeader != NULL);
    ASSERT_ARGUMENT(penSUID != NULL);
    ASSERT_ARGUMENT(pbMoreSEIMessages != NULL);
    if (pbMoreSEIMessages != nullptr)
        *pbMoreSEIMessages = FALSE;
    if (pBuffer == nullptr || pPayloadOffset == nullptr || pNALTypeOffset == nullptr ||
        pSEIMessageHeader == nullptr || penSUID == nullptr || pbMoreSEIMessages == nullptr)
        return FALSE;

    // Where the NAL unit header is: found on the first call, the caller's on later ones.
    const bool first_call = *pPayloadOffset == 0;
    if (first_call && !_GetNALTypeOffset(pBuffer, BufferLen, pNALTypeOffset))
        return FALSE;
    const int NALTypeOffset = *pNALTypeOffset;
    if (NALTypeOffset > MAX_NAL_TYPE_OFFSET) {
        TRACE(kError, "Was expecting NALTypeOffset:%d to be smaller than %d.\n", NALTypeOffset,
              MAX_NAL_TYPE_OFFSET);
        return FALSE;
    }
    if (NALTypeOffset < 0 || NALTypeOffset >= BufferLen)
        return FALSE;
    const unsigned char *const header = pBuffer + NALTypeOffset;
    const int nal_unit_type = NalUnitTypeAt(header);
    if (first_call && nal_unit_type != PREFIX_SEI_NUT && nal_unit_type != SUFFIX_SEI_NUT) {
        TRACE(kError, "Was expecting NAL type:%d to be %d(PREFIX_SEI) or %d(SUFFIX_SEI).\n", nal_unit_type,
              PREFIX_SEI_NUT, SUFFIX_SEI_NUT);
        return FALSE;
    }
    *pSEIMessageHeader = {};

    const TrailingBits trailing = FindTrailingBits(TRACE_SITE, pBuffer, BufferLen, NALTypeOffset);
    TRACE(kInformation,
          "Found StopBitPos:%d for LastByte[%d]:%02X, NALLenWoRBSPTrailingBits:%d, NALTypeOffset:%d, "
          "BufferLength:%d.\n",
          trailing.StopBitPos, trailing.last, pBuffer[trailing.last], trailing.length_without, NALTypeOffset,
          BufferLen);

    Scratch scratch;
    unsigned char *pSEISodbBuffer = scratch.local;
    unsigned int capacity = SEI_SODB_CAPACITY;
    if (static_cast<unsigned int>(BufferLen) > SEI_SODB_CAPACITY) {
        capacity = static_cast<unsigned int>(BufferLen);
        pSEISodbBuffer = scratch.heap = static_cast<unsigned char *>(std::calloc(1, capacity));
        if (pSEISodbBuffer == nullptr) {
            REPORT_ASSERTION("pSEISodbBuffer = calloc(1, BufferLen)");
            return FALSE;
        }
        if (IsDue(last_logged, 5))
            TRACE(kDisplay, "We needed to allocate a SODB buffer of length:%d to deencapsulate.\n",
                  BufferLen);
    }
    const int SeiSodbLength = H265Lib_SODB_deencapsulation_from_NAL(
        header, static_cast<unsigned int>(trailing.length_without), pSEISodbBuffer, capacity);
    if (SeiSodbLength < 0) {
        TRACE(kError, "Failed to get SODB from RBSP. Output buffer is too small.\n");
        return FALSE;
    }

    Walk walk = {pSEISodbBuffer, SeiSodbLength, *pPayloadOffset};
    if (TraceLetsThrough(kFunction)) {
        const auto next = [&walk](int i) {
            const int64_t index = int64_t{walk.idx} + i;
            return index >= 0 && index < walk.length ? walk.sodb[index] : 0;
        };
        TRACE(kFunction,  // GCOVR_EXCL_BR_LINE: just found to be let through
              "DEBUG CHECK - NAL type:%02X, BufferLength:%d, SODBLength:%d, Current idx:%d, Next SODB bytes: "
              "0x%02X %02X %02X %02X %02X.\n",
              header[0], BufferLen, SeiSodbLength, walk.idx, next(0), next(1), next(2), next(3), next(4));
    }
    if (!ReadSum(TRACE_SITE, &walk, &pSEIMessageHeader->payload_type) ||
        !ReadSum(TRACE_SITE, &walk, &pSEIMessageHeader->payload_size))
        return FALSE;
    pSEIMessageHeader->payload_index = static_cast<UINT>(walk.idx);
    const int payload_type = pSEIMessageHeader->payload_type;
    const int64_t payload_end = int64_t{walk.idx} + pSEIMessageHeader->payload_size;
    *pPayloadOffset = payload_end < INT_MAX ? static_cast<int>(payload_end) : INT_MAX;
    TRACE(kFunction,
          "Parsing SEI message, Payload index:%d, Payload_type:%#x(%d), Payload_size:%#x(%d), Payload "
          "Offset:%d.\n",
          walk.idx, payload_type, payload_type, pSEIMessageHeader->payload_size,
          pSEIMessageHeader->payload_size, *pPayloadOffset);

    const int max_payload_type =
        nal_unit_type == SUFFIX_SEI_NUT ? MAX_PAYLOAD_TYPE_SUFFIX : MAX_PAYLOAD_TYPE_PREFIX;
    if (payload_type > max_payload_type) {
        if (IsDue(last_logged, 4))
            TRACE(
                kWarning,
                "SEI Payload type:%d is greater than the current MAX_PAYLOAD_TYPE:%d. Reserved SEI message, "
                "skip decoding.\n",
                payload_type, max_payload_type);
        return FALSE;
    }

    switch (payload_type) {
        case USER_DATA_REGISTERED_ITU_T_T35: {
            const int left = SeiSodbLength - walk.idx;
            if (left < SMALLEST_REGISTERED_USER_DATA) {
                TRACE(kWarning, "NALU too short to find User data registered specific SEI!\n");
                return FALSE;
            }
            if (!_FindSEIUserDataRegisteredSUID(pSEISodbBuffer + walk.idx, left, penSUID)) {
                TRACE(kWarning, "Cannot find User data registered specific SEI!\n");
                return FALSE;
            }
            break;
        }
        case TIME_CODE:
            *penSUID = SUID_TIME_CODE;
            break;
        case PIC_TIMING:
            *penSUID = SUID_PICTURE_TIMING;
            break;
        default:
            TRACE(kDisplay, "SEI Payload type was not in the known types:%d.\n", payload_type);
            *penSUID = SUID_UNKNOWN;
            break;
    }
    TRACE(kFunction, "Found SEI payload type:%d and payload size:%d, enSUID:%d.\n", payload_type,
          pSEIMessageHeader->payload_size, *penSUID);

    if (payload_end == SeiSodbLength) {
        TRACE(kFunction, "We are at the end of SODB, there are no more \"sei_message\".\n");
    } else if (payload_end > SeiSodbLength) {
        TRACE(kError, "We are out of the SODB. Payload Offset:%d maximum value should be SeiSodbLength:%d.\n",
              *pPayloadOffset, SeiSodbLength);
        return FALSE;
    } else if (SeiSodbLength - payload_end > MORE_MESSAGES_THRESHOLD) {
        *pbMoreSEIMessages = TRUE;
    }
    return TRUE;
}
