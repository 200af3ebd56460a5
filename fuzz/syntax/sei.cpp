// Generated SEI NAL units, ITU-T H.265 clause 7.3.5.

#include "support/nal_cases.h"
#include "support/nal_unit.h"
#include "syntax/nal_units.h"
#include "syntax/syntax_writer.h"

namespace fuzz {
namespace {

void Append(Bytes *bytes, const Bytes &more) {
    bytes->insert(bytes->end(), more.begin(), more.end());
}

// user_data_registered_itu_t_t35( ) of ATSC: country and provider code, identifier.
Bytes RegisteredUserData(const char *identifier) {
    const auto letter = [identifier](int i) { return static_cast<unsigned char>(identifier[i]); };
    return {0xB5, 0x00, 0x31, letter(0), letter(1), letter(2), letter(3)};
}

Bytes CaptionPayload(FuzzInput *input) {
    Bytes payload = RegisteredUserData("GA94");
    payload.push_back(input->Byte() < 16 ? input->Byte() : 3);  // user_data_type_code
    const uint32_t cc_count = input->Below(32);
    payload.push_back(static_cast<unsigned char>(0x40 | (input->Byte() & 0xC0) | cc_count));
    payload.push_back(0xFF);
    Append(&payload, input->Take(3 * size_t{cc_count}));
    payload.push_back(0xFF);
    return payload;
}

Bytes ActiveFormatPayload(FuzzInput *input) {
    Bytes payload = RegisteredUserData("DTG1");
    Append(&payload, input->Take(input->Below(4)));
    return payload;
}

Bytes TimeCodePayload(FuzzInput *input) {
    SyntaxWriter w(input);
    const uint64_t num_clock_ts = w.U(2);
    for (uint64_t i = 0; i < num_clock_ts; i++) {
        if (!w.Flag())  // clock_timestamp_flag
            continue;
        w.U(6);  // units_field_based_flag, counting_type
        const bool full_timestamp_flag = w.Flag();
        w.U(11);  // discontinuity_flag, cnt_dropped_flag, n_frames
        if (full_timestamp_flag)
            w.U(17);
        else if (w.Flag() && (w.U(6), w.Flag()) && (w.U(6), w.Flag()))
            w.U(5);
        const auto time_offset_length = static_cast<unsigned int>(w.U(5));
        if (time_offset_length > 0)
            w.U(time_offset_length);
    }
    return w.bits().TrailingBits().Bytes();
}

// Sums of bytes as the standard codes them, 0xFF for each 255; rarely some of other numbers.
void AppendSum(FuzzInput *input, size_t sum, Bytes *sei) {
    if (input->Byte() == 0xFF)
        sum = input->Below(1024);
    for (; sum >= 0xFF; sum -= 0xFF)
        sei->push_back(0xFF);
    sei->push_back(static_cast<unsigned char>(sum));
}

void AppendMessage(FuzzInput *input, Bytes *sei) {
    enum Kind { kCaptions, kActiveFormat, kTimeCode, kPicTiming, kOther, kKinds };
    constexpr int kRegisteredUserData = 4;
    size_t payload_type = 0;
    Bytes payload;
    switch (input->Below(kKinds)) {
        case kCaptions:
            payload_type = kRegisteredUserData;
            payload = CaptionPayload(input);
            break;
        case kActiveFormat:
            payload_type = kRegisteredUserData;
            payload = ActiveFormatPayload(input);
            break;
        case kTimeCode:
            payload_type = 136;
            payload = TimeCodePayload(input);
            break;
        case kPicTiming:
            payload_type = 1;
            payload = input->Take(input->Below(24));
            break;
        default:
            payload_type = input->Byte();
            payload = input->Take(input->Below(300));
            break;
    }
    AppendSum(input, payload_type, sei);
    AppendSum(input, payload.size(), sei);
    Append(sei, payload);
}

Bytes Messages(FuzzInput *input) {
    Bytes sei;
    for (uint32_t count = 1 + input->Below(6); count > 0; count--)
        AppendMessage(input, &sei);
    sei.push_back(0x80);
    return sei;
}

}  // namespace

Bytes GenerateSei(FuzzInput *input) {
    const int nal_unit_type = input->Byte() < 224 ? kPrefixSeiNut : kSuffixSeiNut;
    const int start_code_length = input->Flag() ? 4 : 3;
    return test::NalUnit(nal_unit_type, Messages(input), start_code_length);
}

Bytes GenerateH264Sei(FuzzInput *input) {
    Bytes nal = {0, 0, 1, 6};
    Append(&nal, test::Encapsulated(Messages(input)));
    return nal;
}

}  // namespace fuzz
