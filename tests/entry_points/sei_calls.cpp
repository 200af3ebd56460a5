#include <algorithm>
#include <array>

#include "entry_points/call.h"
#include "entry_points/parsed_records.h"
#include "h264.h"
#include "support/samples.h"

namespace test {
namespace {

constexpr size_t kCapacity = 256;  // of what the builders write to
using Output = std::array<unsigned char, kCapacity>;

Bytes Unit(const char *file) {
    return SampleNalUnits(file).at(0);
}

// ---- reading ---------------------------------------------------------------------------------------------

Call Scan(Fill fill, const Bytes &nal) {
    struct Outputs {
        int payload_offset;
        int nal_type_offset;
        SEI_message_t header;
        int suid;
        BOOL more;
    };
    const auto outputs = Filled<Outputs>(fill);
    outputs->payload_offset = 0;
    outputs->nal_type_offset = 0;  // checked not to be negative, although the first call sets it
    outputs->suid = -1;
    return {[=] {
                return H265Lib_DetermineSEIType(nal.data(), static_cast<int>(nal.size()),
                                                &outputs->payload_offset, &outputs->nal_type_offset,
                                                &outputs->header, &outputs->suid, &outputs->more);
            },
            [=] {
                return Packed(outputs->payload_offset, outputs->nal_type_offset, outputs->header.payload_type,
                              outputs->header.payload_size, outputs->header.payload_index, outputs->suid,
                              outputs->more);
            },
            [=] { return outputs->payload_offset == 0 && outputs->suid == -1 && !outputs->more; }};
}

// A message that needs more than the 1024 bytes for which there is no heap.
Bytes LongSei() {
    const Bytes head = {0, 0, 1, 0x4E, 1, 5, 0xF0, 0xFF, 0xFF, 0xFF};
    Bytes nal(1024 + 2, 0x55);
    std::copy(head.begin(), head.end(), nal.begin());
    nal.back() = 0x80;
    return nal;
}

Bytes Values(const SEI_cc_t &cc) {
    Bytes bytes = Packed(cc.itu_t_t35_country_code, cc.itu_t_t35_provider_code, cc.user_identifier,
                         cc.user_data_type_code, cc.cc_data.process_cc_data_flag, cc.cc_data.cc_count,
                         cc.cc_data.marker_bits, cc.header.payload_type, cc.header.payload_size,
                         cc.header.payload_index);
    const Bytes captions = Packed(cc.cc_bytes);
    bytes.insert(bytes.end(), captions.begin(), captions.end());
    return bytes;
}

Bytes Values(const SEI_afd_t &afd) {
    return Packed(afd.itu_t_t35_country_code, afd.itu_t_t35_provider_code, afd.user_identifier,
                  afd.afd_data.active_format_flag, afd.afd_data.active_format, afd.header.payload_type,
                  afd.header.payload_size, afd.header.payload_index);
}

template <typename Record>
Call ParseUserData(Fill fill, const char *file, BOOL (*parse)(unsigned char *, int, Record *)) {
    const auto nal = std::make_shared<Bytes>(Unit(file));
    const auto record = Filled<Record>(fill);
    return {[=] { return parse(nal->data(), static_cast<int>(nal->size()), record.get()); },
            [=] { return Values(*record); }};
}

// ---- building --------------------------------------------------------------------------------------------

// A builder's buffer, and what becomes of it.
template <typename Build>
Call BuildInto(Fill fill, Build build) {
    const auto output = Filled<Output>(fill);
    return {[=] { return build(output->data()); }, MemoryOf(output)};
}

// Two entries of ancillary data, captions and active format, with everything else in them as it happens to
// be.
using AncillaryData = std::array<vanc_t, 2>;

std::shared_ptr<AncillaryData> CaptionAndFormat(Fill fill) {
    const auto entries = Filled<AncillaryData>(fill);
    vanc_t &caption = (*entries)[0];
    caption.suid = SUID_CLOSED_CAPTION;
    caption.vanc_data.caption = {1, 0, 0x94, 0x2C};
    vanc_t &format = (*entries)[1];
    format.suid = SUID_AFD;
    format.vanc_data.afd_data.active_format_flag = 1;
    format.vanc_data.afd_data.active_format = 10;
    return entries;
}

std::shared_ptr<vitc_t> DropFrameTime(Fill fill) {
    const auto vitc = Filled<vitc_t>(fill);
    vitc->FrameTens = 2;
    vitc->FrameUnits = 9;
    vitc->SecondTens = 5;
    vitc->SecondUnits = 9;
    vitc->MinuteTens = 5;
    vitc->MinuteUnits = 8;
    vitc->HourTens = 2;
    vitc->HourUnits = 3;
    vitc->Flag1 = 1;
    vitc->VitcCrc = 0;
    vitc->VitcCrcErr = 9;
    return vitc;
}

Call BuildTimeCode(Fill fill) {
    const auto sps = ParsedSpsRecord(fill, FieldSpsNal());
    const auto vitc = DropFrameTime(fill);
    const auto info = Filled<SEI_time_code_info_t>(fill);
    info->FrameRate = 29970;
    info->scan_type = 0;
    info->BottomFieldFlag = 0;
    info->enSystemTCCountingMode = SYSTEM_TC_SMPTE12M_1_COUNT_MODE;
    info->enTimeSource = EMBEDDED_TIME_CODE;
    info->pParsedSps = sps.get();
    return BuildInto(fill, [sps, vitc, info](unsigned char *buffer) {
        return H265Lib_format_sei_time_code_nal(buffer, kCapacity, vitc.get(), info.get());
    });
}

Call BuildPicTiming(Fill fill) {
    const auto sps = ParsedSpsRecord(fill, FieldSpsNal());
    const auto pt = Filled<sei_h265_pic_timing_t>(fill);
    pt->pic_struct = 1;
    pt->source_scan_type = 0;
    pt->duplicate_flag = 0;
    pt->au_cpb_removal_delay_minus1 = 3;
    pt->pic_dpb_output_delay = 5;
    return BuildInto(fill, [sps, pt](unsigned char *buffer) -> int64_t {
        UINT length = kCapacity;
        const BOOL built = H265Lib_format_sei_pictiming_nal(buffer, &length, &sps->vui, pt.get());
        return built ? static_cast<int64_t>(length) : -1;
    });
}

}  // namespace

std::vector<EntryPoint> SeiReadingEntryPoints() {
    return {
        {"H265Lib_DetermineSEIType", "",
         [](Fill fill) { return Scan(fill, Unit("units/sei-multiple.nal")); }},
        {"H265Lib_DetermineSEIType", "_of_more_than_1024_bytes",
         [](Fill fill) { return Scan(fill, LongSei()); }, 1},
        {"H265Lib_Parse_sei_pictiming_nal", "",
         [](Fill fill) {
             const auto sps = ParsedSpsRecord(fill, FieldSpsNal());
             const SEI_message_t message = {1, 4, 2};
             const auto pt = Filled<sei_h265_pic_timing_t>(fill);
             return Call{[=] {
                             const Bytes &nal = FieldPicTimingNal();
                             return H265Lib_Parse_sei_pictiming_nal(nal.data(), static_cast<int>(nal.size()),
                                                                    &message, &sps->vui, pt.get());
                         },
                         MemoryOf(pt)};
         },
         1},
        {"H265Lib_Display_sei_pictiming", "",
         [](Fill fill) {
             const auto sps = ParsedSpsRecord(fill, FieldSpsNal());
             const auto pt = Filled<sei_h265_pic_timing_t>(fill);
             const SEI_message_t message = {1, 4, 2};
             H265Lib_Parse_sei_pictiming_nal(FieldPicTimingNal().data(),
                                             static_cast<int>(FieldPicTimingNal().size()), &message,
                                             &sps->vui, pt.get());
             return Call{[=] {
                 H265Lib_Display_sei_pictiming(pt.get(), &sps->vui);
                 return 0;
             }};
         }},
        {"H265Lib_Parse_sei_timecode_nal", "",
         [](Fill fill) {
             const auto nal = std::make_shared<Bytes>(Unit("units/sei-time-code.nal"));
             const SEI_message_t message = {136, 8, 2};
             const auto tc = Filled<sei_h265_time_code_t>(fill);
             return Call{[=] {
                             return H265Lib_Parse_sei_timecode_nal(nal->data(), static_cast<int>(nal->size()),
                                                                   &message, tc.get());
                         },
                         MemoryOf(tc)};
         },
         1},
        {"H265Lib_Parse_sei_cc_nal", "",
         [](Fill fill) {
             return ParseUserData<SEI_cc_t>(fill, "units/sei-captions.nal", H265Lib_Parse_sei_cc_nal);
         }},
        {"H265Lib_Parse_sei_afd_nal", "",
         [](Fill fill) {
             return ParseUserData<SEI_afd_t>(fill, "units/sei-afd.nal", H265Lib_Parse_sei_afd_nal);
         }},
        {"parse_sei_cc_nal", "",
         [](Fill fill) { return ParseUserData<SEI_cc_t>(fill, "units/sei-captions.nal", parse_sei_cc_nal); }},
        {"parse_sei_afd_nal", "",
         [](Fill fill) { return ParseUserData<SEI_afd_t>(fill, "units/sei-afd.nal", parse_sei_afd_nal); }},
    };
}

std::vector<EntryPoint> SeiBuildingEntryPoints() {
    return {
        {"H265Lib_format_sei_cc_nal", "",
         [](Fill fill) {
             const auto entries = CaptionAndFormat(fill);
             return BuildInto(fill, [entries](unsigned char *buffer) {
                 int records = 0;
                 return H265Lib_format_sei_cc_nal(buffer, kCapacity, entries->data(), sizeof *entries, 20,
                                                  &records);
             });
         }},
        {"H265Lib_format_sei_afd_nal", "",
         [](Fill fill) {
             const auto entries = CaptionAndFormat(fill);
             return BuildInto(fill, [entries](unsigned char *buffer) {
                 return H265Lib_format_sei_afd_nal(buffer, kCapacity, entries->data(), sizeof *entries);
             });
         }},
        {"H265Lib_formatMISPMicroSecondTimeSEI", "",
         [](Fill fill) {
             return BuildInto(fill, [](unsigned char *buffer) {
                 const INT64 microseconds = 1'700'000'000'000'000;
                 return H265Lib_formatMISPMicroSecondTimeSEI(buffer, kCapacity, &microseconds, 0x9F);
             });
         }},
        {"H265Lib_format_sei_time_code_nal", "", BuildTimeCode},
        {"H265Lib_format_sei_pictiming_nal", "", BuildPicTiming},
    };
}

}  // namespace test
