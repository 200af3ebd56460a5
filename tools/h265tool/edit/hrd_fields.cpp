#include "edit/hrd_fields.h"

#include <memory>
#include <optional>

#include "json/difference.h"
#include "json/get.h"
#include "text.h"
#include "text_file.h"
#include "usage_error.h"

namespace h265tool {
namespace {

constexpr uint64_t kFlag = 1;            // u(1)
constexpr uint64_t kU4 = (1U << 4) - 1;  // u(4)
constexpr uint64_t kU5 = (1U << 5) - 1;  // u(5)
constexpr uint64_t kU8 = (1U << 8) - 1;  // u(8)
constexpr uint64_t kUe = 0xFFFF'FFFE;    // ue(v) of 32 bits

// sub_layer_hrd_parameters( ), clause E.2.3.
void GetSubLayer(const JsonValue &json, bool sub_pic_hrd_params_present_flag, int cpb_cnt_minus1,
                 sub_layer_hrd_parameters_t *sub_layer) {
    for (int i = 0; i <= cpb_cnt_minus1; i++) {
        GET(json, kUe, sub_layer, bit_rate_value_minus1, i);
        GET(json, kUe, sub_layer, cpb_size_value_minus1, i);
        if (sub_pic_hrd_params_present_flag) {
            GET(json, kUe, sub_layer, cpb_size_du_value_minus1, i);
            GET(json, kUe, sub_layer, bit_rate_du_value_minus1, i);
        }
        GET(json, kFlag, sub_layer, cbr_flag, i);
    }
}

void GetCommonPart(const JsonValue &json, hrd_h265_t *hrd) {
    GET(json, kFlag, hrd, nal_hrd_parameters_present_flag);
    GET(json, kFlag, hrd, vcl_hrd_parameters_present_flag);
    if (!hrd->nal_hrd_parameters_present_flag && !hrd->vcl_hrd_parameters_present_flag)
        return;
    GET(json, kFlag, hrd, sub_pic_hrd_params_present_flag);
    if (hrd->sub_pic_hrd_params_present_flag) {
        GET(json, kU8, hrd, tick_divisor_minus2);
        GET(json, kU5, hrd, du_cpb_removal_delay_increment_length_minus1);
        GET(json, kFlag, hrd, sub_pic_cpb_params_in_pic_timing_sei_flag);
        GET(json, kU5, hrd, dpb_output_delay_du_length_minus1);
    }
    GET(json, kU4, hrd, bit_rate_scale);
    GET(json, kU4, hrd, cpb_size_scale);
    if (hrd->sub_pic_hrd_params_present_flag)
        GET(json, kU4, hrd, cpb_size_du_scale);
    GET(json, kU5, hrd, initial_cpb_removal_delay_length_minus1);
    GET(json, kU5, hrd, au_cpb_removal_delay_length_minus1);
    GET(json, kU5, hrd, dpb_output_delay_length_minus1);
}

// hrd_parameters( 1, maxNumSubLayersMinus1 ), clause E.2.2, into a cleared record.
void GetHrd(const JsonValue &json, int max_sub_layers_minus1, hrd_h265_t *hrd) {
    GetCommonPart(json, hrd);
    for (int i = 0; i <= max_sub_layers_minus1; i++) {
        GET(json, kFlag, hrd, fixed_pic_rate_general_flag, i);
        if (hrd->fixed_pic_rate_general_flag[i])
            hrd->fixed_pic_rate_within_cvs_flag[i] = 1;  // inferred, and the library wants to see it
        else
            GET(json, kFlag, hrd, fixed_pic_rate_within_cvs_flag, i);
        if (hrd->fixed_pic_rate_within_cvs_flag[i])
            GET(json, kUe, hrd, elemental_duration_in_tc_minus1, i);
        else
            GET(json, kFlag, hrd, low_delay_hrd_flag, i);
        if (!hrd->low_delay_hrd_flag[i])
            GET(json, H265_HRD_CPB_COUNT - 1, hrd, cpb_cnt_minus1, i);
        const int cpb_cnt_minus1 = static_cast<int>(hrd->cpb_cnt_minus1[i]);
        const bool sub_pic = hrd->sub_pic_hrd_params_present_flag != 0;
        if (hrd->nal_hrd_parameters_present_flag)
            GetSubLayer(json.Member("s_l_nal_hrd_parameters").Entry(i), sub_pic, cpb_cnt_minus1,
                        &hrd->s_l_nal_hrd_parameters[i]);
        if (hrd->vcl_hrd_parameters_present_flag)
            GetSubLayer(json.Member("s_l_vcl_hrd_parameters").Entry(i), sub_pic, cpb_cnt_minus1,
                        &hrd->s_l_vcl_hrd_parameters[i]);
    }
}

// What was not looked at stands where the syntax has no such element.
void CheckAllRead(const Json &members, const Json &read) {
    for (const auto &[name, value] : members.items()) {
        if (!read.contains(name))
            throw JsonError(name + " has no place beside the others");
        if (const auto difference = FirstDifference(value, read.at(name)))
            throw JsonError(Text(name, difference->path.starts_with('[') ? "" : ".", difference->path,
                                 " has no place beside the others"));
    }
}

}  // namespace

HrdFields ReadHrdFields(const std::string &path) {
    HrdFields fields{path, {}};
    try {
        fields.members = Json::parse(FileText(path));
    } catch (const Json::parse_error &error) {
        throw UsageError(path, Text("it is no JSON: byte ", error.byte, " cannot stand there"));
    }
    if (!fields.members.is_object())
        throw UsageError(path, "it is no JSON object");
    return fields;
}

void ApplyHrdFields(const HrdFields &fields, int max_sub_layers_minus1, vui_h265_t *vui) {
    Json members = Json::object();
    if (vui->vui_hrd_parameters_present_flag)
        members = ToJson(vui->nal_hrd, true, max_sub_layers_minus1);
    members.update(fields.members);
    const auto hrd = std::make_unique<hrd_h265_t>();
    try {
        GetHrd({&members, {}}, max_sub_layers_minus1, hrd.get());
        CheckAllRead(fields.members, ToJson(*hrd, true, max_sub_layers_minus1));
    } catch (const JsonError &error) {
        throw UsageError(fields.path, error.what());
    }
    vui->vui_hrd_parameters_present_flag = 1;
    vui->nal_hrd = *hrd;
}

}  // namespace h265tool
