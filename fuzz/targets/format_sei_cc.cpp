// H265Lib_format_sei_cc_nal: what goes in comes out of a scan and a parse, padded to the count.

#include "h265.h"
#include "support/built_sei.h"
#include "support/check.h"
#include "support/record.h"
#include "support/target.h"
#include "support/trace.h"

namespace {

using fuzz::Bytes;
using fuzz::ExactBuffer;
using fuzz::FuzzInput;

constexpr int kMostCaptions = 31;
constexpr int kEncoderIdUnit = 512;  // a count above it has an encoder id folded in, and is not limited

std::vector<vanc_t> AncillaryData(FuzzInput *input) {
    std::vector<vanc_t> entries(input->Below(40));
    for (vanc_t &entry : entries) {
        fuzz::Fill(input, reinterpret_cast<unsigned char *>(&entry), sizeof entry);
        if (input->Byte() < 192)
            entry.suid = SUID_CLOSED_CAPTION;
        if (input->Flag())
            entry.vanc_data.caption = {input->Byte(), input->Byte(), input->Byte(), input->Byte()};
    }
    return entries;
}

void CheckCaption(const caption_t &parsed, const caption_t &given) {
    FUZZ_CHECK(parsed.flag == (given.flag & 1) && parsed.type == (given.type & 3) &&
               parsed.data1 == given.data1 && parsed.data2 == given.data2);
}

void CheckParsed(const Bytes &nal, const std::vector<vanc_t> &entries, int cc_count, int cc_records) {
    constexpr caption_t kPadding = {0, 2, 0, 0};
    fuzz::BuiltSei sei(nal);
    FUZZ_CHECK(sei.suid == SUID_CLOSED_CAPTION);
    SEI_cc_t captions{};
    FUZZ_CHECK(H265Lib_Parse_sei_cc_nal(sei.nal.data(), sei.nal.length(), &captions));
    FUZZ_CHECK(captions.cc_data.process_cc_data_flag == 1 && captions.cc_data.marker_bits == 0xFF);
    FUZZ_CHECK(captions.cc_data.cc_count == cc_count);
    int i = 0;
    for (const vanc_t &entry : entries) {
        if (entry.suid == SUID_CLOSED_CAPTION && i < cc_count)
            CheckCaption(captions.cc_bytes[i++], entry.vanc_data.caption);
    }
    FUZZ_CHECK(i == cc_records);
    for (; i < cc_count; i++)
        CheckCaption(captions.cc_bytes[i], kPadding);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzInput input(data, size);
    const fuzz::DiscardedTrace trace(&input);
    const uint8_t kind = input.Byte();
    const int cc_count = kind < 192   ? static_cast<int>(input.Below(40))
                         : kind < 224 ? static_cast<int>(input.Bits(16))
                                      : static_cast<int>(input.Number());
    ExactBuffer buffer(input.Flag() ? 256 : input.Below(2048));
    const std::vector<vanc_t> entries = AncillaryData(&input);
    // an array of exactly its size, which may end in a part of an entry
    const auto *const first = reinterpret_cast<const unsigned char *>(entries.data());
    const size_t part = entries.empty() ? 0 : input.Byte() < 16 ? input.Below(sizeof(vanc_t)) : 0;
    ExactBuffer array(Bytes(first, first + entries.size() * sizeof(vanc_t) - part));
    const bool missing = input.Byte() == 0xFF;

    int cc_records = -1;
    const int length = H265Lib_format_sei_cc_nal(
        buffer.data(), buffer.length(), missing ? nullptr : reinterpret_cast<const vanc_t *>(array.data()),
        array.length(), cc_count, &cc_records);
    FUZZ_CHECK(length >= 0 && length <= buffer.length());
    FUZZ_CHECK((length == 0) == (cc_records == 0));
    if (length > 0 && cc_count <= kEncoderIdUnit) {
        const std::vector<vanc_t> whole(entries.begin(), entries.end() - (part > 0 ? 1 : 0));
        CheckParsed(buffer.Content(static_cast<size_t>(length)), whole, std::min(cc_count, kMostCaptions),
                    cc_records);
    }
    return 0;
}
