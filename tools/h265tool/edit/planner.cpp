#include "edit/planner.h"

#include <algorithm>
#include <utility>

#include "edit/rewrite_pic_timing.h"
#include "edit/rewrite_sps.h"
#include "edit/rewrite_vps.h"
#include "edit/sei_syntax.h"
#include "edit/sps_edits.h"
#include "pic_struct.h"
#include "sei_names.h"
#include "text.h"
#include "unit_error.h"

namespace h265tool {
namespace {

// What has to be there, and to be readable.
template <typename Content, typename Variant>
const Content &Readable(const Variant &content) {
    if (const auto *const unparsable = std::get_if<Unparsable>(&content))
        throw UnitError(unparsable->reason);
    return std::get<Content>(content);
}

// Messages of the stream are not written again when their syntax changes.
void CheckSyntax(const Sei &sei, const sps_h265_t &before, const sps_h265_t &after) {
    for (const SeiMessage &message : sei.messages) {
        if (const auto element = ElementThatChangesSyntax(message.payload_type, before, after))
            throw UnitError(Text(message.payload_name, " would not be understood any more, since ", *element,
                                 " changes"));
    }
}

void CheckPicStruct(unsigned char pic_struct, const vui_h265_t &vui) {
    if (!vui.frame_field_info_present_flag)
        throw UnitError("pic_timing has no pic_struct: frame_field_info_present_flag of the SPS is 0");
    if (!FitsFieldSeq(pic_struct, vui.field_seq_flag))
        throw UnitError(Text("pic_struct ", pic_struct, " does not fit field_seq_flag ", vui.field_seq_flag));
}

}  // namespace

void EditPlanner::Take(const NalUnit &unit) {
    UnitContent content = reader_.Read(unit);
    const std::optional<NalUnitHeader> header = unit.Header();
    if (header.has_value() && header->nuh_layer_id == 0) {
        const unsigned int type = header->nal_unit_type;
        if (IsVcl(type) || (type >= kAud && type <= kEob))
            EndWaiting(unit, content);
        else if (type == kVps || type == kSps)
            WithPlace(unit.offset, [&] { TakeParameterSet(unit, content); });
        else if (auto *const sei = std::get_if<Sei>(&content);
                 sei != nullptr && type == kPrefixSei && request_.ConcernsSei())
            waiting_.push_back({units_, unit, std::move(*sei)});
    }
    units_++;
}

void EditPlanner::TakeParameterSet(const NalUnit &unit, const UnitContent &content) {
    if (unit.Header()->nal_unit_type == kSps) {
        if (request_.ChangesSps())
            TakeSps(unit, *Readable<const sps_h265_t *>(content));
    } else if (request_.interlaced || std::holds_alternative<const vps_h265_t *>(content)) {
        TakeVps(unit, *Readable<const vps_h265_t *>(content));
    }
}

void EditPlanner::TakeVps(const NalUnit &unit, const vps_h265_t &vps) {
    if (request_.interlaced)
        Replace(units_, unit, InterlacedVps(unit, vps, reader_.diagnostics()));
    if (!vps.vps_timing_info_present_flag)
        return;
    const std::optional<TimingInfo> &timing = request_.timing;
    if (timing.has_value() &&
        (vps.vps_num_units_in_tick != timing->num_units_in_tick || vps.vps_time_scale != timing->time_scale))
        Note(Text("VPS ", vps.vps_video_parameter_set_id, " has timing information of its own, which stays"));
    if (request_.hrd.has_value() && vps.vps_num_hrd_parameters > 0)
        Note(Text("VPS ", vps.vps_video_parameter_set_id, " has HRD parameters of its own, which stay"));
}

void EditPlanner::TakeSps(const NalUnit &unit, const sps_h265_t &sps) {
    has_sps_ = true;
    const auto edited = std::make_unique<sps_h265_t>(sps);
    ApplyEdits(request_, edited.get());
    RewrittenSps rewritten = RewriteSps(unit, sps, *edited, reader_.diagnostics());
    Replace(units_, unit, std::move(rewritten.unit));
    edited_sps_[sps.seq_parameter_set_id] = std::move(rewritten.sps);
}

// The access unit has its first slice; or will have none, and messages that belong to no picture stay.
void EditPlanner::EndWaiting(const NalUnit &unit, const UnitContent &content) {
    if (waiting_.empty())
        return;
    if (IsSlice(unit.Header()->nal_unit_type)) {
        const Slice *slice = nullptr;
        WithPlace(unit.offset, [&] { slice = &Readable<Slice>(content); });
        for (WaitingSei &waiting : waiting_)
            WithPlace(waiting.unit.offset, [&] { TakeSei(&waiting, slice->active.sps); });
    }
    waiting_.clear();
}

void EditPlanner::TakeSei(WaitingSei *waiting, const sps_h265_t &sps) {
    const sps_h265_t *const edited = edited_sps_[sps.seq_parameter_set_id].get();
    const sps_h265_t &after = edited != nullptr ? *edited : sps;
    Sei &sei = waiting->sei;
    CheckSyntax(sei, sps, after);
    if (!sei.HasUnreadTiming())
        return;
    has_pic_timing_ = true;
    if (!request_.pic_struct.has_value() && !request_.field_seq)
        return;
    ReadPicTimings(&after, reader_.diagnostics(), &sei);
    for (const SeiMessage &message : sei.messages) {
        if (message.payload_type != kPicTiming)
            continue;
        const auto &timing = Readable<std::unique_ptr<PicTiming>>(message.content);
        CheckPicStruct(request_.pic_struct.value_or(timing->record.pic_struct), after.vui);
    }
    if (request_.pic_struct.has_value())
        Replace(waiting->number, waiting->unit,
                WithPicStruct(waiting->unit, *request_.pic_struct, after, &sei, reader_.diagnostics()));
}

void EditPlanner::Replace(uint64_t number, const NalUnit &unit, NalUnit replacement) {
    if (replacement.head != unit.head)
        plan_.replacements.emplace(number, std::move(replacement.head));
}

void EditPlanner::Note(std::string note) {
    if (std::find(plan_.notes.begin(), plan_.notes.end(), note) == plan_.notes.end())
        plan_.notes.push_back(std::move(note));
}

EditPlan EditPlanner::Finish() {
    if (request_.ChangesSps() && !has_sps_)
        throw UnitError("it holds no SPS");
    if (request_.pic_struct.has_value() && !has_pic_timing_)
        throw UnitError("it holds no picture timing, and --pic-struct changes what is there");
    return std::move(plan_);
}

}  // namespace h265tool
