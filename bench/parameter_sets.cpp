// Parsing parameter sets; those that come again unchanged, beside the copy of a record.

#include <cstring>
#include <memory>

#include "h265.h"
#include "operation.h"
#include "samples.h"

namespace bench {

namespace {

BOOL ParseVps(const Bytes &nal, vps_h265_t *vps) {
    vps->cprms_present_flag[0] = 1;
    return H265Lib_Parse_vps_nal(nal.data(), nal.size(), vps);
}

BOOL ParseSps(const Bytes &nal, sps_h265_t *sps) {
    return H265Lib_Parse_sps_nal(nal.data(), nal.size(), sps);
}

BOOL ParsePps(const Bytes &nal, pps_h265_t *pps) {
    return H265Lib_Parse_pps_nal(nal.data(), static_cast<int>(nal.size()), pps);
}

BOOL ParseSpsAgain(const Bytes &nal, H265D_PARSE_CONTEXT *context, sps_h265_t *sps) {
    return H265Lib_Parse_sps_nal_ex(nal.data(), nal.size(), context, sps);
}

BOOL ParsePpsAgain(const Bytes &nal, H265D_PARSE_CONTEXT *context, pps_h265_t *pps) {
    return H265Lib_Parse_pps_nal_ex(nal.data(), static_cast<unsigned int>(nal.size()), context, pps);
}

template <typename Record>
void AddParse(const NalCase &parsed, BOOL (*parse)(const Bytes &, Record *)) {
    Add(parsed.name + "/ours", [&nal = parsed.nal, parse] {
        return
            [&nal, parse, record = std::make_shared<Record>()] { return parse(nal, record.get()) != FALSE; };
    });
}

// The copy is that of the same record to the same place.
template <typename Record>
void AddUnchanged(const NalCase &parsed, BOOL (*parse)(const Bytes &, H265D_PARSE_CONTEXT *, Record *),
                  Record H265D_PARSE_CONTEXT::*stored) {
    static const auto context = std::make_unique<H265D_PARSE_CONTEXT>();
    static const auto record = std::make_unique<Record>();
    const std::string name = "unchanged_" + parsed.name;
    Add(name + "/ours", [&nal = parsed.nal, parse] {
        return [&nal, parse] { return parse(nal, context.get(), record.get()) != FALSE; };
    });
    Add(name + "/memcpy", [stored] {
        return [stored] {
            std::memcpy(record.get(), &(context.get()->*stored), sizeof(Record));
            return true;
        };
    });
}

}  // namespace

void AddParameterSets() {
    for (const NalCase &parsed : ParameterSets()) {
        if (parsed.name.starts_with("vps"))
            AddParse(parsed, ParseVps);
        else if (parsed.name.starts_with("sps"))
            AddParse(parsed, ParseSps);
        else
            AddParse(parsed, ParsePps);
        if (parsed.name == "sps/hrd")
            AddUnchanged(parsed, ParseSpsAgain, &H265D_PARSE_CONTEXT::last_parsed_sps);
        if (parsed.name == "pps/plain")
            AddUnchanged(parsed, ParsePpsAgain, &H265D_PARSE_CONTEXT::last_parsed_pps);
    }
}

}  // namespace bench
