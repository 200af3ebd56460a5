#include "json/put.h"

namespace h265tool {
namespace {

// Adds what the NAL unit holds under the key of its kind.
struct ContentWriter {
    Json &json;

    void operator()(std::monostate) const {}
    void operator()(const vps_h265_t *vps) const { json["vps"] = ToJson(*vps); }
    void operator()(const sps_h265_t *sps) const { json["sps"] = ToJson(*sps); }
    void operator()(const pps_h265_t *pps) const { json["pps"] = ToJson(*pps); }
    void operator()(const Slice &slice) const { json["slice"] = ToJson(slice); }
    void operator()(const aud_h265_t &aud) const { json["aud"] = ToJson(aud); }
    void operator()(const Sei &sei) const {
        json["sei"] = Json::array();
        for (const SeiMessage &message : sei.messages)
            json["sei"].push_back(ToJson(message));
        if (!sei.error.empty())
            json["error"] = sei.error;
    }
    void operator()(const Unparsable &unparsable) const { json["error"] = unparsable.reason; }
    void operator()(const NotParsed &not_parsed) const { json["not_parsed"] = not_parsed.reason; }
};

}  // namespace

Json ToJson(const NalUnit &unit, const UnitContent &content) {
    Json json;
    json["offset"] = unit.offset;
    json["size"] = unit.size;
    json["start_code"] = unit.start_code_length;
    // null where the header does not say
    for (const char *key : {"nal_unit_type", "nal_unit_name", "nuh_layer_id", "temporal_id"})
        json[key] = nullptr;
    if (const std::optional<NalUnitHeader> header = unit.Header()) {
        json["nal_unit_type"] = header->nal_unit_type;
        json["nal_unit_name"] = NalUnitTypeName(header->nal_unit_type);
        json["nuh_layer_id"] = header->nuh_layer_id;
        if (header->nuh_temporal_id_plus1 > 0)
            json["temporal_id"] = header->nuh_temporal_id_plus1 - 1;
    }
    std::visit(ContentWriter{json}, content);
    return json;
}

}  // namespace h265tool
