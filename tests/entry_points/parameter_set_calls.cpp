#include "entry_points/call.h"
#include "entry_points/parsed_records.h"
#include "support/samples.h"

namespace test {
namespace {

// Into a context, too. A context is zeroed before its first use, whatever the record holds.
template <typename Record, typename Parse>
Call ParseWithContext(Fill fill, const Bytes &nal, Parse parse) {
    const auto record = Filled<Record>(fill);
    Prepare(record.get());
    const auto context = Filled<H265D_PARSE_CONTEXT>(0);
    return {[=, &nal] { return parse(nal, context.get(), record.get()); },
            [=] {
                Bytes outputs = MemoryOf(record)();
                const Bytes remembered = MemoryOf(context)();
                outputs.insert(outputs.end(), remembered.begin(), remembered.end());
                return outputs;
            }};
}

// A segment of a picture, not the first one.
const Bytes &SliceNal() {
    static const Bytes nal = SampleNalUnits("slices.hevc", 1).at(1);
    return nal;
}

}  // namespace

std::vector<EntryPoint> ParameterSetEntryPoints() {
    return {
        {"H265Lib_Parse_vps_nal", "",
         [](Fill fill) {
             const auto vps = Filled<vps_h265_t>(fill);
             Prepare(vps.get());
             return Call{[=] { return H265Lib_Parse_vps_nal(VpsNal().data(), VpsNal().size(), vps.get()); },
                         MemoryOf(vps)};
         }},
        {"H265Lib_Parse_sps_nal", "",
         [](Fill fill) {
             const auto sps = Filled<sps_h265_t>(fill);
             Prepare(sps.get());
             return Call{[=] { return H265Lib_Parse_sps_nal(SpsNal().data(), SpsNal().size(), sps.get()); },
                         MemoryOf(sps)};
         }},
        {"H265Lib_Parse_sps_nal_ex", "",
         [](Fill fill) {
             return ParseWithContext<sps_h265_t>(
                 fill, SpsNal(), [](const Bytes &nal, H265D_PARSE_CONTEXT *context, sps_h265_t *sps) {
                     return H265Lib_Parse_sps_nal_ex(nal.data(), nal.size(), context, sps);
                 });
         }},
        {"H265Lib_Parse_pps_nal", "",
         [](Fill fill) {
             const auto pps = Filled<pps_h265_t>(fill);
             Prepare(pps.get());
             return Call{[=] {
                             return H265Lib_Parse_pps_nal(PpsNal().data(), static_cast<int>(PpsNal().size()),
                                                          pps.get());
                         },
                         MemoryOf(pps)};
         }},
        {"H265Lib_Parse_pps_nal_ex", "",
         [](Fill fill) {
             return ParseWithContext<pps_h265_t>(
                 fill, PpsNal(), [](const Bytes &nal, H265D_PARSE_CONTEXT *context, pps_h265_t *pps) {
                     return H265Lib_Parse_pps_nal_ex(nal.data(), static_cast<unsigned int>(nal.size()),
                                                     context, pps);
                 });
         }},
        {"H265Lib_Parse_slice_header_nal", "",
         [](Fill fill) {
             const auto sps = ParsedSpsRecord(fill, SampleNalUnits("slices.hevc", 33).at(0));
             const auto pps = ParsedPps(fill, SampleNalUnits("slices.hevc", 34).at(0));
             const auto slice = Filled<ssh_h265_t>(fill);
             return Call{[=] {
                             return H265Lib_Parse_slice_header_nal(SliceNal().data(),
                                                                   static_cast<int>(SliceNal().size()),
                                                                   sps.get(), pps.get(), slice.get());
                         },
                         MemoryOf(slice)};
         },
         1},
        {"H265Lib_Display_vps", "",
         [](Fill fill) {
             return Call{[vps = ParsedVps(fill)] {
                 H265Lib_Display_vps(vps.get());
                 return 0;
             }};
         }},
        {"H265Lib_Display_sps", "",
         [](Fill fill) {
             return Call{[sps = ParsedSpsRecord(fill)] {
                 H265Lib_Display_sps(sps.get());
                 return 0;
             }};
         }},
        {"H265Lib_Display_pps", "",
         [](Fill fill) {
             return Call{[pps = ParsedPps(fill)] {
                 H265Lib_Display_pps(pps.get());
                 return 0;
             }};
         }},
    };
}

}  // namespace test
