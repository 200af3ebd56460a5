// The small entry points of NAL unit framing: GetH265NalTypeString, H265Lib_format_au_delimiter_nalu,
// H265Lib_format_end_of_sequence_nalu, H265Lib_Parse_au_delimiter_nal.

#include <cstring>

#include "h265.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"

namespace {

using fuzz::Bytes;
using fuzz::ExactBuffer;
using fuzz::FuzzInput;

void CheckNalTypeString(FuzzInput *input) {
    constexpr UINT kLastName = 48;
    const UINT nal_unit_type = input->Number();
    const char *const name = GetH265NalTypeString(nal_unit_type);
    FUZZ_CHECK(name != nullptr && name[0] != '\0');
    FUZZ_CHECK((std::strcmp(name, "Invalid") == 0) == (nal_unit_type > kLastName));
}

// Either writes all it says, or nothing.
void CheckDelimiter(FuzzInput *input) {
    ExactBuffer buffer(input->Below(12));
    const UINT primary_pic_type = input->Number();
    const int length =
        H265Lib_format_au_delimiter_nalu(buffer.data(), buffer.unsigned_length(), primary_pic_type);
    const bool possible = buffer.size() >= 8 && primary_pic_type <= 2;
    FUZZ_CHECK(length == (possible ? 7 : -1));
    const Bytes expected = {0, 0, 0, 1, 0x46, 1, static_cast<unsigned char>(primary_pic_type << 5 | 0x10)};
    FUZZ_CHECK(buffer.Content(7) == (possible ? expected : Bytes(std::min<size_t>(buffer.size(), 7))));
}

void CheckEndOfSequence(FuzzInput *input) {
    ExactBuffer buffer(input->Below(12));
    const int length = H265Lib_format_end_of_sequence_nalu(buffer.data(), buffer.unsigned_length());
    const bool possible = buffer.size() >= 5;
    FUZZ_CHECK(length == (possible ? 5 : -1));
    FUZZ_CHECK(buffer.Content(5) == (possible ? Bytes{0, 0, 1, 0x48, 1} : Bytes(buffer.size())));
}

// A delimiter that holds its header twice is read; anything is survived.
void ParseDelimiter(FuzzInput *input) {
    const auto aud = fuzz::AnyRecord<aud_h265_t>(input);
    const unsigned char pic_type = static_cast<unsigned char>(input->Below(8));
    ExactBuffer twice(Bytes{0, 0, 1, 0x46, 1, 0x46, 1, static_cast<unsigned char>(pic_type << 5 | 0x10),
                            static_cast<unsigned char>(pic_type << 5 | 0x10)});
    FUZZ_CHECK(H265Lib_Parse_au_delimiter_nal(twice.data(), twice.length(), aud.get()));
    FUZZ_CHECK(aud->nal_type == 35);

    ExactBuffer any(input->TakeRest());
    H265Lib_Parse_au_delimiter_nal(any.data(), any.length(), aud.get());
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzInput input(data, size);
    const fuzz::DiscardedTrace trace(&input);
    CheckNalTypeString(&input);
    CheckDelimiter(&input);
    CheckEndOfSequence(&input);
    ParseDelimiter(&input);
    return 0;
}
