#include <array>

#include "entry_points/call.h"
#include "entry_points/parsed_records.h"
#include "h265.h"

namespace test {
namespace {

using Output = std::array<unsigned char, 512>;

}  // namespace

std::vector<EntryPoint> FramingEntryPoints() {
    return {
        {"GetH265NalTypeString", "",
         [](Fill) {
             const auto name = std::make_shared<std::string>();
             return Call{[=] {
                             *name = GetH265NalTypeString(33);
                             return 0;
                         },
                         [=] { return Bytes(name->begin(), name->end()); }};
         }},
        {"H265Lib_SODB_deencapsulation_from_NAL", "",
         [](Fill fill) {
             const auto output = Filled<Output>(fill);
             return Call{[=] {
                             constexpr size_t kStartCodeLength = 3;
                             const Bytes &nal = SpsNal();
                             return H265Lib_SODB_deencapsulation_from_NAL(
                                 nal.data() + kStartCodeLength,
                                 static_cast<unsigned int>(nal.size() - kStartCodeLength), output->data(),
                                 sizeof *output);
                         },
                         MemoryOf(output)};
         }},
        {"H265Lib_format_au_delimiter_nalu", "",
         [](Fill fill) {
             const auto output = Filled<Output>(fill);
             return Call{[=] { return H265Lib_format_au_delimiter_nalu(output->data(), sizeof *output, 1); },
                         MemoryOf(output)};
         }},
        {"H265Lib_format_end_of_sequence_nalu", "",
         [](Fill fill) {
             const auto output = Filled<Output>(fill);
             return Call{[=] { return H265Lib_format_end_of_sequence_nalu(output->data(), sizeof *output); },
                         MemoryOf(output)};
         }},
        {"H265Lib_Parse_au_delimiter_nal", "",
         [](Fill fill) {
             const auto aud = Filled<aud_h265_t>(fill);
             return Call{[=] {
                             unsigned char nal[] = {0, 0, 0, 1, 0x46, 1, 0x46, 1, 0x50};
                             return H265Lib_Parse_au_delimiter_nal(nal, sizeof nal, aud.get());
                         },
                         MemoryOf(aud)};
         }},
    };
}

}  // namespace test
