#include "edit/rewrite_pic_timing.h"

#include <variant>

#include "edit/rewriting_result.h"
#include "json/json.h"
#include "reading/rbsp.h"
#include "text.h"
#include "unit_error.h"

namespace h265tool {
namespace {

NalUnit CallLibrary(const NalUnit &unit, const vui_h265_t &vui, uint64_t payload_index,
                    const sei_h265_pic_timing_t &record, Diagnostics *diagnostics) {
    std::vector<unsigned char> bytes = unit.head;
    bytes.push_back(0);  // room for one emulation prevention byte more; what is not needed is dropped
    UINT length = static_cast<UINT>(bytes.size());
    diagnostics->Clear();
    if (!H265Lib_modify_pictiming_sei_NAL(bytes.data(), &length, &vui, static_cast<UINT>(payload_index),
                                          &record))
        throw UnitError(diagnostics->FirstError());
    return Rewritten(unit, std::span(bytes).first(length));
}

Json MessagesToJson(const Sei &sei) {
    Json json = Json::array();
    for (const SeiMessage &message : sei.messages)
        json.push_back(ToJson(message));
    return json;
}

}  // namespace

NalUnit WithPicStruct(const NalUnit &unit, unsigned char pic_struct, const sps_h265_t &sps, Sei *sei,
                      Diagnostics *diagnostics) {
    NalUnit rewritten = unit;
    std::vector<unsigned char> expected_rbsp = Rbsp(unit);
    for (SeiMessage &message : sei->messages) {
        auto *const timing = std::get_if<std::unique_ptr<PicTiming>>(&message.content);
        if (timing == nullptr)
            continue;
        (*timing)->record.pic_struct = pic_struct;
        rewritten = CallLibrary(rewritten, sps.vui, message.payload_index, (*timing)->record, diagnostics);
        unsigned char &byte = expected_rbsp[message.payload_index];
        byte = static_cast<unsigned char>(pic_struct << 4 | (byte & 0x0F));
    }

    Sei actual = ReadSei(rewritten, diagnostics);
    ReadPicTimings(&sps, diagnostics, &actual);
    CheckRewritten(MessagesToJson(*sei), MessagesToJson(actual));
    if (Rbsp(rewritten) != expected_rbsp)  // messages whose content the tool does not know
        throw UnitError("rewriting failed: more changed than pic_struct");
    return rewritten;
}

}  // namespace h265tool
