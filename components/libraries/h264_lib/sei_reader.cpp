#include "sei_reader.h"

#include <climits>
#include <cstring>

namespace h264 {
namespace {

constexpr unsigned char kH264SeiHeader = 0x06;  // forbidden_zero_bit 0, nal_ref_idc 0, nal_unit_type 6
constexpr int kH265PrefixSei = 39;
constexpr int kH265SuffixSei = 40;

// The length of the start code; 0 when there is none.
int StartCodeLength(const unsigned char *nal, int length) {
    if (length < 4 || nal[0] != 0 || nal[1] != 0)
        return 0;
    if (nal[2] == 1)
        return 3;
    return nal[2] == 0 && nal[3] == 1 ? 4 : 0;
}

// The length of a SEI NAL unit header, which tells the standard; 0 for other NAL units.
int SeiHeaderLength(unsigned char first_byte) {
    if (first_byte == kH264SeiHeader)
        return 1;
    const int h265_type = first_byte >> 1;  // with forbidden_zero_bit, which has to be 0
    return h265_type == kH265PrefixSei || h265_type == kH265SuffixSei ? 2 : 0;
}

// payloadType and payloadSize, clause 7.3.5: 0xFF bytes and a last one, added up.
bool ReadSum(SeiReader *reader, unsigned int *sum) {
    *sum = 0;
    unsigned char byte = 0;
    do {
        if (!RawByte(reader, &byte) || *sum > UINT_MAX - byte)
            return false;
        *sum += byte;
    } while (byte == 0xFF);
    return true;
}

}  // namespace

bool OpenSei(SeiReader *reader, const unsigned char *nal, int length) {
    const int start_code = StartCodeLength(nal, length);
    if (start_code == 0 || start_code >= length)
        return false;
    const int header = SeiHeaderLength(nal[start_code]);
    if (header == 0 || start_code + header > length)
        return false;
    *reader = {nal + start_code + header, nal + length, 0, 0, 0};
    while (reader->end > reader->next && reader->end[-1] == 0)  // trailing_zero_8bits
        reader->end--;
    if (reader->end > reader->next && reader->end[-1] == 0x80)  // payloads end on byte boundaries
        reader->end--;
    return true;
}

bool NextBytes(SeiReader *reader, unsigned char *bytes, unsigned int count) {
    SeiReader local = *reader;
    const bool plain = count <= local.payload_left && count <= static_cast<size_t>(local.end - local.next) &&
                       std::memchr(local.next, 3, count) == nullptr;
    if (plain) {  // without an emulation prevention byte
        std::memcpy(bytes, local.next, count);
        local.next += count;
        local.index += count;
        local.payload_left -= count;
        unsigned int in_front = count;  // of the zeros at the end
        while (in_front > 0 && bytes[in_front - 1] == 0)
            in_front--;
        local.zeros = static_cast<int>(count - in_front) + (in_front == 0 ? local.zeros : 0);
    } else {
        for (unsigned int i = 0; i < count; i++) {
            if (!NextByte(&local, bytes + i))
                return false;
        }
    }
    *reader = local;
    return true;
}

bool SkipPayload(SeiReader *reader) {
    unsigned char byte = 0;
    while (reader->payload_left > 0) {
        if (!NextByte(reader, &byte))
            return false;
    }
    return true;
}

bool NextMessage(SeiReader *reader, SEI_message_t *header, unsigned int *payload_type) {
    unsigned int payload_size = 0;
    if (!SkipPayload(reader) || reader->next == reader->end || !ReadSum(reader, payload_type) ||
        !ReadSum(reader, &payload_size))
        return false;
    reader->payload_left = payload_size;
    *header = {static_cast<unsigned char>(*payload_type), payload_size, reader->index};
    return true;
}

}  // namespace h264
