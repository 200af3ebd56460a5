#include "show.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "diagnostics.h"
#include "file_walk.h"
#include "nal_unit.h"
#include "output.h"
#include "parameter_sets.h"
#include "reading/sei.h"
#include "reading/slice_header.h"
#include "reading/vps.h"
#include "report.h"
#include "sei_names.h"
#include "text.h"
#include "unit_error.h"

namespace h265tool {
namespace {

// What the library's displays print.
class DisplayedText {
 public:
    DisplayedText(int level, bool tags) : level_(level), tags_(tags) {}

    // No Diagnostics may be alive: there is one sink.
    template <typename Display>
    std::string Of(Display display) {
        text_.clear();
        if (g_hH265LibDbg == nullptr)
            return text_;
        DbgTraceSetSink([](const DbgTraceMessage *message,
                           void *user) { static_cast<DisplayedText *>(user)->Take(*message); },
                        this);
        const int level_before = std::exchange(g_hH265LibDbg->nMaxLevel, level_);
        display();
        g_hH265LibDbg->nMaxLevel = level_before;
        DbgTraceSetSink(nullptr, nullptr);
        return text_;
    }

 private:
    void Take(const DbgTraceMessage &message) {
        if (message.channel != std::string_view("H265LIB"))
            return;  // assertions about what a record has no room for
        const bool in_mid_line = !text_.empty() && text_.back() != '\n';
        if (tags_ && !in_mid_line)
            text_ += Text(message.channel, " ", message.level, " ", message.function, " (", message.file, ":",
                          message.line, "): ");
        text_ += message.text;
    }

    int level_;
    bool tags_;
    std::string text_;
};

// The displays look at the VUI for what is present; the rest of it is not needed.
vui_h265_t VuiOf(const PicTiming &timing) {
    vui_h265_t vui{};
    vui.frame_field_info_present_flag = timing.frame_field_info_present_flag;
    vui.CpbDpbDelaysPresentFlag = timing.CpbDpbDelaysPresentFlag;
    vui.nal_hrd.sub_pic_hrd_params_present_flag = timing.sub_pic_hrd_params_present_flag;
    vui.nal_hrd.sub_pic_cpb_params_in_pic_timing_sei_flag = timing.sub_pic_cpb_params_in_pic_timing_sei_flag;
    return vui;
}

// Shows picture timing together with the first slice of the access unit, whose SPS it depends on.
class Displayer {
 public:
    explicit Displayer(const ShowOptions &options) : options_(options), text_(options.level, options.tags) {
        if (!options_.vps && !options_.sps && !options_.pps && !options_.sei)
            options_.vps = options_.sps = options_.pps = options_.sei = true;
    }

    void Take(const NalUnit &unit) {
        TryAt(unit.offset, [&] {
            const std::optional<NalUnitHeader> header = unit.Header();
            if (!header.has_value())
                throw UnitError("the NAL unit header is truncated");
            if (header->forbidden_zero_bit != 0 || header->nuh_temporal_id_plus1 == 0)
                throw UnitError("the NAL unit header is malformed");
            if (header->nuh_layer_id == 0)
                TakeOfBaseLayer(unit, header->nal_unit_type);
        });
    }

    void Finish() {
        ShowTimings(nullptr);
        output_.Flush();
    }

    bool AllParsed() const { return all_parsed_; }

 private:
    struct Waiting {
        uint64_t offset;  // of the NAL unit
        Sei sei;
    };

    // Reports the UnitError that `work` throws.
    template <typename Work>
    void TryAt(uint64_t offset, Work work) {
        try {
            work();
        } catch (const UnitError &error) {
            all_parsed_ = false;
            Report(FileName(options_.file), Text("NAL unit at ", offset, ": ", error.what()));
        }
    }

    void TakeOfBaseLayer(const NalUnit &unit, unsigned int nal_unit_type) {
        if (nal_unit_type == kVps && options_.vps)
            TakeVps(unit);
        else if (nal_unit_type == kSps && (options_.sps || options_.sei))
            TakeSps(unit);
        else if (nal_unit_type == kPps && (options_.pps || options_.sei))
            TakePps(unit);
        else if (nal_unit_type == kPrefixSei && options_.sei)
            TakeSei(unit);
        else if (IsVcl(nal_unit_type) || (nal_unit_type >= kAud && nal_unit_type <= kEob))
            EndWaiting(unit, nal_unit_type);
    }

    void TakeVps(const NalUnit &unit) {
        if (Diagnostics diagnostics; !ReadVps(unit, &diagnostics, vps_.get()))
            throw UnitError(diagnostics.FirstError());
        if (IsWanted(unit))
            Print([this] { H265Lib_Display_vps(vps_.get()); });
    }

    void TakeSps(const NalUnit &unit) {
        ReadSet(unit, H265Lib_Parse_sps_nal, &sps_h265_t::seq_parameter_set_id,
                &ParameterSets::MarkUnreadableSps, sps_.get());
        if (options_.sps && IsWanted(unit))
            Print([this] { H265Lib_Display_sps(sps_.get()); });
    }

    void TakePps(const NalUnit &unit) {
        ReadSet(unit, H265Lib_Parse_pps_nal, &pps_h265_t::pps_pic_parameter_set_id,
                &ParameterSets::MarkUnreadablePps, pps_.get());
        if (options_.pps && IsWanted(unit))
            Print([this] { H265Lib_Display_pps(pps_.get()); });
    }

    // Into a cleared record, and into sets_.
    template <typename Set, typename Length>
    void ReadSet(const NalUnit &unit, BOOL (*parse)(const unsigned char *, Length, Set *), UINT64 Set::*id,
                 void (ParameterSets::*mark_unreadable)(uint64_t), Set *set) {
        std::memset(set, 0, sizeof *set);
        set->*id = ~UINT64{0};  // still there afterwards: it was not read
        Diagnostics diagnostics;
        if (parse(unit.head.data(), static_cast<Length>(unit.head.size()), set))
            return sets_.Keep(*set);
        (sets_.*mark_unreadable)(set->*id);
        throw UnitError(diagnostics.FirstError());
    }

    // Not one of the very same bytes as one before, start code aside.
    bool IsWanted(const NalUnit &unit) {
        const std::span bytes = unit.HeadBehindStartCode();
        return options_.all || shown_.emplace(bytes.begin(), bytes.end()).second;
    }

    void TakeSei(const NalUnit &unit) {
        constexpr size_t kMostWaiting = 1000;  // no stream has so many in front of a slice
        if (waiting_.size() >= kMostWaiting)
            ShowTimings(nullptr);
        Diagnostics diagnostics;
        Sei sei = ReadSei(unit, &diagnostics);
        const std::string error = sei.error;
        if (sei.HasUnreadTiming())
            waiting_.push_back({unit.offset, std::move(sei)});
        if (!error.empty())
            throw UnitError(error);
    }

    // The access unit has its slice, or will not have one.
    void EndWaiting(const NalUnit &unit, unsigned int nal_unit_type) {
        if (waiting_.empty())
            return;
        const sps_h265_t *sps = nullptr;
        TryAt(unit.offset, [&] {
            Diagnostics diagnostics;
            if (IsSlice(nal_unit_type))
                sps = &ReadSlice(unit, sets_, &diagnostics).active.sps;
        });
        ShowTimings(sps);
    }

    // No SPS: that of the stream, when it has only one.
    void ShowTimings(const sps_h265_t *sps) {
        for (Waiting &waiting : std::exchange(waiting_, {})) {
            {
                Diagnostics diagnostics;
                ReadPicTimings(sps != nullptr ? sps : sets_.OnlySps(), &diagnostics, &waiting.sei);
            }
            for (const SeiMessage &message : waiting.sei.messages) {
                if (message.payload_type == kPicTiming)
                    TryAt(waiting.offset, [&] { ShowTiming(message.content); });
            }
        }
    }

    void ShowTiming(const SeiContent &content) {
        if (const auto *const unparsable = std::get_if<Unparsable>(&content))
            throw UnitError(unparsable->reason);
        if (const auto *const unread = std::get_if<NotParsed>(&content))
            throw UnitError("pic_timing: " + unread->reason);
        const PicTiming &timing = *std::get<std::unique_ptr<PicTiming>>(content);
        const vui_h265_t vui = VuiOf(timing);
        Print([&] { H265Lib_Display_sei_pictiming(&timing.record, &vui); });
    }

    template <typename Display>
    void Print(Display display) {
        std::string text = text_.Of(display);
        if (text.ends_with('\n'))
            text.pop_back();
        if (!text.empty())
            output_.Line(text);
    }

    ShowOptions options_;
    DisplayedText text_;
    bool all_parsed_ = true;
    std::unique_ptr<vps_h265_t> vps_ = std::make_unique<vps_h265_t>();
    std::unique_ptr<sps_h265_t> sps_ = std::make_unique<sps_h265_t>();
    std::unique_ptr<pps_h265_t> pps_ = std::make_unique<pps_h265_t>();
    ParameterSets sets_;
    std::set<std::string> shown_;  // the bytes of NAL units
    std::vector<Waiting> waiting_;
    Output output_;
};

}  // namespace

ExitStatus Show(const ShowOptions &options) {
    Displayer displayer(options);
    const ExitStatus status = WalkFile(
        options.file, [&](const NalUnit &unit) { displayer.Take(unit); }, [&] { displayer.Finish(); });
    return std::max(status, displayer.AllParsed() ? kAllWell : kStreamError);
}

}  // namespace h265tool
