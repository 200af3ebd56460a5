// Closed captions: cc_data( ) of ATSC A/53 clause 6.2.3 (CTA-708) in registered user data.

#include <ctime>

#include "common/trace.h"
#include "h265/sei/ancillary_data.h"
#include "h265/sei/sei_nal_unit.h"
#include "words.h"

namespace {

constexpr int MAX_SEI_RBSP = 1850;
constexpr int MAX_CC_COUNT = 31;      // 5 bits
constexpr int ENCODER_ID_UNIT = 512;  // a count above it has an encoder id folded in
constexpr int CC_DATA_OFFSET = 12;    // of the first construct
constexpr int SIZE_BYTE = 1;

// A construct is the upper three bytes of a word: moved in one piece, which is a third of the work.
constexpr uint32_t kMarkerBits = 0xF8U << 24;  // in front of cc_valid and cc_type
constexpr uint32_t kPadding = 2U << 24;        // cc_type 2, DTVCC packet data, that is not valid
constexpr unsigned char kEndMarker = 0xFF;

uint32_t TripletOf(const caption_t &caption) {
    uint32_t fields = 0;
    static_assert(sizeof fields == sizeof caption);
    std::memcpy(&fields, &caption, sizeof fields);
    fields = bitbuffer::BigEndian(fields);  // flag, type, data1, data2
    return (fields >> 24 & 1) << 26 | (fields & 0x03FFFF) << 8;
}

// Returns what is behind it, where a byte has been overwritten.
unsigned char *PutTriplet(unsigned char *place, uint32_t triplet) {
    bitbuffer::StoreHalfWord(place, kMarkerBits | triplet);
    return place + 3;
}

}  // namespace

int H265Lib_format_sei_cc_nal(unsigned char *buffer, int buffer_len, const vanc_t *vanc_data, int vanc_size,
                              int cc_count, int *pCc_records) {
    static LastLogged last_capped{0};
    static LastLogged last_status{0};
    static LastLogged last_other_kind{0};

    ASSERT_ARGUMENT(buffer != NULL);
    const std::time_t now = std::time(nullptr);
    if (pCc_records != nullptr)
        *pCc_records = 0;

    if (cc_count > ENCODER_ID_UNIT) {
        const int nEncoderID = cc_count / ENCODER_ID_UNIT - 1;
        TRACE(kFunction, "Derived nEncoderID:%d from cc_count:%d.\n", nEncoderID, cc_count);
        cc_count -= (nEncoderID + 1) * ENCODER_ID_UNIT;  // not capped on this path
    } else if (cc_count > MAX_CC_COUNT) {
        if (IsDue(last_capped, 0, now))
            TRACE(kWarning, "cc_count:%d is greater than maximum of 31.\n", cc_count);
        cc_count = MAX_CC_COUNT;
    }
    // as an unsigned number: counts below -4 need too many bytes, and the others give no caption
    const unsigned int BytesNeeded = 3U * static_cast<unsigned int>(cc_count) + CC_DATA_OFFSET;
    const int vanc_entries = VancEntries(vanc_size);
    TRACE(
        kFunction,
        "Sanity, vanc_data:%p, vanc_size:%d, vanc_entries:%d, cc_count:%d, buffer_len:%d, BytesNeeded:%d.\n",
        static_cast<const void *>(vanc_data), vanc_size, vanc_entries, cc_count, buffer_len, BytesNeeded);
    if (BytesNeeded > MAX_SEI_RBSP) {
        TRACE(kError, "BytesNeeded:%d is greater than MAX SEI RBSP:%d.\n", BytesNeeded, MAX_SEI_RBSP);
        return 0;
    }
    if (buffer == nullptr)
        return 0;

    // payload type and size; country code, provider code, identifier, user_data_type_code; the head of
    // cc_data( ): process_em_data_flag, process_cc_data_flag, cc_count; em_data
    const bool has_input = vanc_data != nullptr && vanc_entries > 0;
    const unsigned char head[CC_DATA_OFFSET] = {
        0x04, 0, ITU_T_T35_COUNTRY_CODE_USA, 0x00, 0x31, 'G', 'A', '9', '4', 0x03, 0, 0xFF};
    unsigned char sei_Byte[MAX_SEI_RBSP];
    std::memcpy(sei_Byte, head, sizeof head);
    sei_Byte[10] = static_cast<unsigned char>((has_input ? 0xC0 : 0x80) | cc_count);
    unsigned char *triplet = sei_Byte + CC_DATA_OFFSET;
    if (IsDue(last_status, 4, now))
        TRACE(kInformation, "vanc_data:%p, vanc_entries:%d, cc_count:%d.\n",
              static_cast<const void *>(vanc_data), vanc_entries, cc_count);

    int cc_records = 0;
    for (int i = 0; has_input && i < vanc_entries && cc_records < cc_count; i++) {
        const vanc_t &entry = vanc_data[i];
        if (entry.suid != SUID_CLOSED_CAPTION) {
            if (IsDue(last_other_kind, 4, now))
                TRACE(kInformation, "Entry:%d, SUID:%d is NOT Caption SUID:%d.\n", i, entry.suid,
                      SUID_CLOSED_CAPTION);
            continue;
        }
        const caption_t &caption = entry.vanc_data.caption;
        triplet = PutTriplet(triplet, TripletOf(caption));
        TRACE(kDetail, "vanc_data:%p, Entry:%d, cc_type:%d.\n", static_cast<const void *>(&entry), i,
              caption.type);
        cc_records++;
    }
    for (int j = cc_records; j < cc_count; j++)
        triplet = PutTriplet(triplet, kPadding);
    int sei_offset = static_cast<int>(triplet - sei_Byte);
    sei_Byte[sei_offset++] = kEndMarker;
    sei_Byte[sei_offset++] = kTrailingBits;
    sei_Byte[SIZE_BYTE] = static_cast<unsigned char>(sei_offset - 3);  // without type, size and trailing bits

    if (cc_records == 0) {
        TRACE(kFunction, "SEI cc_records:%d is 0. No entries were closed captions.\n", cc_records);
        if (buffer_len >= kSeiNalPrefixSize)
            std::memcpy(buffer, kSeiNalPrefix, kSeiNalPrefixSize);
        return 0;
    }
    const int encapsulated = EncapsulateSei(sei_Byte, sei_offset, buffer, buffer_len);
    if (encapsulated == 0) {
        TRACE(kWarning, "SEI CC RBSP Encapsulation failed!\n");
        return 0;
    }
    if (pCc_records != nullptr)
        *pCc_records = cc_records;
    return encapsulated + kSeiNalPrefixSize;
}
