// RBSP_encapsulation_within_NAL and RBSP_encapsulation_within_NAL_Ex into every kind of room, against a plain
// loop; then H265Lib_SODB_deencapsulation_from_NAL, which gives back what went in. Both also on bytes that no
// encapsulation has made.

#include <algorithm>

#include "bitbuffer.h"
#include "h265.h"
#include "support/byte_stream.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/nal_unit.h"
#include "support/target.h"
#include "support/trace.h"

namespace {

using fuzz::Bytes;
using fuzz::ExactBuffer;
using fuzz::FuzzInput;

constexpr Bytes::value_type kUntouched = 0xA5;

// Mostly the bytes that matter, 0 to 3.
Bytes AnySource(FuzzInput *input) {
    const bool dense = input->Flag();
    Bytes source = input->TakeRest();
    for (unsigned char &byte : source) {
        if (dense && byte < 0xF0)
            byte = static_cast<unsigned char>((byte & 0x0F) < 10 ? 0 : byte & 3);
    }
    return source;
}

ExactBuffer Untouched(size_t size) {
    return ExactBuffer(Bytes(size, kUntouched));
}

bool IsUntouched(const ExactBuffer &buffer) {
    const Bytes content = buffer.Content();
    return std::all_of(content.begin(), content.end(), [](auto byte) { return byte == kUntouched; });
}

void CheckEncapsulation(const Bytes &source, size_t room, bool with_mode, int mode) {
    const Bytes expected = test::Encapsulated(source);
    ExactBuffer in(source);
    ExactBuffer out = Untouched(room);
    const int length =
        with_mode ? RBSP_encapsulation_within_NAL_Ex(in.data(), in.length(), out.data(), out.length(), mode)
                  : RBSP_encapsulation_within_NAL(in.data(), in.length(), out.data(), out.length());
    const bool possible =
        !source.empty() && expected.size() <= room && (!with_mode || mode == RBSP_ENCAPSULATION_MODE_BYTES);
    FUZZ_CHECK(length == (possible ? static_cast<int>(expected.size()) : 0));
    Bytes content = possible ? expected : Bytes();
    content.resize(room, kUntouched);
    FUZZ_CHECK(out.Content() == content);
}

// `nal`: from the NAL unit header on.
void CheckDeencapsulation(const Bytes &nal, size_t room) {
    ExactBuffer in(nal);
    ExactBuffer out = Untouched(room);
    const int length = H265Lib_SODB_deencapsulation_from_NAL(in.data(), in.unsigned_length(), out.data(),
                                                             out.unsigned_length());
    if (nal.size() < fuzz::kNalUnitHeaderSize || nal.size() > room) {
        FUZZ_CHECK(length == -1);
        FUZZ_CHECK(IsUntouched(out));
        return;
    }
    const Bytes sodb = fuzz::Decapsulated(Bytes(nal.begin() + fuzz::kNalUnitHeaderSize, nal.end()));
    FUZZ_CHECK(length == static_cast<int>(sodb.size()));
    FUZZ_CHECK(out.Content(sodb.size()) == sodb);
}

void CheckIdentity(const Bytes &source) {
    const Bytes encapsulated = test::Encapsulated(source);
    ExactBuffer in(source);
    ExactBuffer nal(fuzz::kNalUnitHeaderSize + encapsulated.size());
    const int length =
        RBSP_encapsulation_within_NAL(in.data(), in.length(), nal.data() + fuzz::kNalUnitHeaderSize,
                                      nal.length() - static_cast<int>(fuzz::kNalUnitHeaderSize));
    FUZZ_CHECK(static_cast<size_t>(length) == encapsulated.size());
    ExactBuffer out(nal.size());
    const int back = H265Lib_SODB_deencapsulation_from_NAL(nal.data(), nal.unsigned_length(), out.data(),
                                                           out.unsigned_length());
    FUZZ_CHECK(static_cast<size_t>(back) == source.size());
    FUZZ_CHECK(out.Content(source.size()) == source);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzInput input(data, size);
    const fuzz::DiscardedTrace trace(&input);
    const size_t less = input.Below(4);
    const size_t more = input.Below(4);
    const int mode = static_cast<int>(input.Number());
    const Bytes source = AnySource(&input);
    const size_t fitting = test::Encapsulated(source).size();
    const size_t room = fitting + more < less ? 0 : fitting + more - less;
    CheckEncapsulation(source, room, false, 0);
    CheckEncapsulation(source, room, true, mode);
    CheckDeencapsulation(source, source.size() + more < less ? 0 : source.size() + more - less);
    if (!source.empty())
        CheckIdentity(source);
    return 0;
}
