#include "entry_points/call.h"
#include "entry_points/parsed_records.h"
#include "h264.h"

namespace test {
namespace {

using SpsRewriting = BOOL (*)(const unsigned char *, unsigned int, const sps_h265_t *, unsigned char **,
                              UINT *);

// The result is the caller's; where none comes to be, the outputs are cleared.
Call Rewrite(SpsRewriting rewrite, Fill fill) {
    static unsigned char no_result[1];
    struct Outputs {
        unsigned char *buffer = no_result;
        UINT length = sizeof no_result;
    };
    const auto sps = ParsedSpsRecord(fill);
    sps->vui.vui_time_scale = 60000;
    const auto outputs = std::make_shared<Outputs>();
    return {[=] {
                return rewrite(SpsNal().data(), static_cast<unsigned int>(SpsNal().size()), sps.get(),
                               &outputs->buffer, &outputs->length);
            },
            [=] { return Bytes(outputs->buffer, outputs->buffer + outputs->length); },
            [=] { return outputs->buffer == nullptr && outputs->length == 0; },
            [=] {
                if (outputs->buffer != no_result)
                    H265Lib_Release_sps_buffer(outputs->buffer);
            }};
}

Call Release(void (*release)(void *)) {
    return {[=, block = std::calloc(1, 16)] {
        release(block);
        return 0;
    }};
}

// A NAL unit that is changed where it stands.
template <typename Modify>
Call InPlace(const Bytes &original, Modify modify) {
    const auto nal = std::make_shared<Bytes>(original);
    const auto length = std::make_shared<UINT>(static_cast<UINT>(nal->size()));
    return {[=] { return modify(nal->data(), length.get()); },
            [=] {
                Bytes outputs = *nal;
                outputs.push_back(static_cast<unsigned char>(*length));
                return outputs;
            }};
}

}  // namespace

std::vector<EntryPoint> RewritingEntryPoints() {
    return {
        {"H265Lib_modify_vps_NAL", "",
         [](Fill) {
             return InPlace(VpsNal(), [](unsigned char *nal, const UINT *length) {
                 return H265Lib_modify_vps_NAL(nal, *length);
             });
         }},
        {"H265Lib_modify_sps_NAL", "", [](Fill fill) { return Rewrite(H265Lib_modify_sps_NAL, fill); }, 2, 1},
        {"H265Lib_Set_sps_vui_parameters_NAL", "",
         [](Fill fill) { return Rewrite(H265Lib_Set_sps_vui_parameters_NAL, fill); }, 2, 1},
        {"H265Lib_Release_sps_buffer", "", [](Fill) { return Release(H265Lib_Release_sps_buffer); }, 0, -1},
        {"H26XLib_Release_sps_buffer", "", [](Fill) { return Release(H26XLib_Release_sps_buffer); }, 0, -1},
        {"H265Lib_modify_pictiming_sei_NAL", "",
         [](Fill fill) {
             const auto sps = ParsedSpsRecord(fill, FieldSpsNal());
             const auto pt = Filled<sei_h265_pic_timing_t>(fill);
             pt->pic_struct = 12;
             return InPlace(FieldPicTimingNal(), [=](unsigned char *nal, UINT *length) {
                 constexpr UINT kPayloadIndex = 2;
                 return H265Lib_modify_pictiming_sei_NAL(nal, length, &sps->vui, kPayloadIndex, pt.get());
             });
         }},
    };
}

}  // namespace test
