// H265Lib_format_sei_afd_nal: what goes in comes out of a scan and a parse.

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

std::vector<vanc_t> AncillaryData(FuzzInput *input) {
    std::vector<vanc_t> entries(input->Below(6));
    for (vanc_t &entry : entries) {
        fuzz::Fill(input, reinterpret_cast<unsigned char *>(&entry), sizeof entry);
        if (input->Byte() < 192)
            entry.suid = SUID_AFD;
        if (input->Flag())
            entry.vanc_data.afd_data = {input->Flag(), input->Byte()};
    }
    return entries;
}

// The first entry that has a format; none: no active format.
afd_t Expected(const std::vector<vanc_t> &entries) {
    for (const vanc_t &entry : entries) {
        const afd_t &afd = entry.vanc_data.afd_data;
        if (entry.suid == SUID_AFD && (afd.active_format_flag & 1) != 0)
            return {1, static_cast<unsigned char>(afd.active_format & 15)};
    }
    return {0, 0};
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzInput input(data, size);
    const fuzz::DiscardedTrace trace(&input);
    ExactBuffer buffer(input.Flag() ? 19 : input.Below(64));
    const std::vector<vanc_t> entries = AncillaryData(&input);
    const auto *const first = reinterpret_cast<const unsigned char *>(entries.data());
    ExactBuffer array(Bytes(first, first + entries.size() * sizeof(vanc_t)));
    const afd_t expected = Expected(entries);

    const int length = H265Lib_format_sei_afd_nal(
        buffer.data(), buffer.length(), reinterpret_cast<const vanc_t *>(array.data()), array.length());
    const int needed = expected.active_format_flag ? 17 : 16;
    FUZZ_CHECK(length == (buffer.length() >= needed + 2 ? needed : 0));
    if (length == 0)
        return 0;
    fuzz::BuiltSei sei(buffer.Content(static_cast<size_t>(length)));
    FUZZ_CHECK(sei.suid == SUID_AFD);
    SEI_afd_t afd{};
    FUZZ_CHECK(H265Lib_Parse_sei_afd_nal(sei.nal.data(), sei.nal.length(), &afd));
    FUZZ_CHECK(afd.afd_data.active_format_flag == expected.active_format_flag &&
               afd.afd_data.active_format == expected.active_format);
    return 0;
}
