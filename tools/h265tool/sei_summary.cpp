#include "sei_summary.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "caption_text.h"
#include "sei_names.h"
#include "text.h"

namespace h265tool {
namespace {

// pic_struct, Table D.2.
constexpr std::array kPicStructs = {
    "frame",
    "top field",
    "bottom field",
    "top, bottom field",
    "bottom, top field",
    "top, bottom, top field",
    "bottom, top, bottom field",
    "frame doubling",
    "frame tripling",
    "top field paired with previous bottom field",
    "bottom field paired with previous top field",
    "top field paired with next bottom field",
    "bottom field paired with next top field",
};

constexpr std::array kScanTypes = {"interlaced", "progressive", "unknown scan"};

constexpr unsigned int kDropFrames =
    4;  // counting_type: two frame numbers dropped in most minutes, Table D.9

// "07", "--" when it is not there
std::string TwoDigits(bool present, unsigned int value) {
    if (!present)
        return "--";
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%02u", value);
    return text.data();
}

std::string ClockText(const sei_h265_time_code_t &time_code, int i) {
    const std::string text =
        Text(TwoDigits(time_code.hours_flag[i] != 0, time_code.hours_value[i]), ":",
             TwoDigits(time_code.minutes_flag[i] != 0, time_code.minutes_value[i]), ":",
             TwoDigits(time_code.seconds_flag[i] != 0, time_code.seconds_value[i]),
             time_code.counting_type[i] == kDropFrames ? ";" : ":", TwoDigits(true, time_code.n_frames[i]));
    return time_code.time_offset_length[i] == 0 ? text
                                                : Text(text, " offset ", time_code.time_offset_value[i]);
}

std::string PicTimingText(const PicTiming &timing) {
    const sei_h265_pic_timing_t &record = timing.record;
    std::string text;
    const auto append = [&text](const auto &...parts) { text += Text(text.empty() ? "" : ", ", parts...); };
    if (timing.frame_field_info_present_flag) {
        if (record.pic_struct < kPicStructs.size())
            append(kPicStructs[record.pic_struct]);
        else
            append("pic_struct ", record.pic_struct);
        append(record.source_scan_type < kScanTypes.size() ? kScanTypes[record.source_scan_type]
                                                           : "reserved scan");
        if (record.duplicate_flag)
            append("duplicate");
    }
    if (timing.CpbDpbDelaysPresentFlag) {
        append("CPB removal delay ", record.au_cpb_removal_delay_minus1 + 1);
        append("DPB output delay ", record.pic_dpb_output_delay);
        if (timing.HasDecodingUnits())
            append("decoding units ", record.num_decoding_units_minus1 + 1);
    }
    return text.empty() ? "empty" : text;
}

struct ContentSummarizer {
    const SeiMessage &message;

    // The name with its size, alone or in front of something.
    std::string Named() const {
        return Text(message.payload_name,
                    message.payload_name == kReservedSeiMessage ? Text(" ", message.payload_type) : "", " (",
                    message.payload_size, message.payload_size == 1 ? " byte)" : " bytes)");
    }

    std::string operator()(std::monostate) const { return Named(); }
    std::string operator()(const UnreadPicTiming &) const { return Named(); }
    std::string operator()(const std::unique_ptr<PicTiming> &timing) const {
        return Text(message.payload_name, ": ", PicTimingText(*timing));
    }
    std::string operator()(const sei_h265_time_code_t &time_code) const {
        return Text(message.payload_name, ": ", TimeCodeText(time_code));
    }
    std::string operator()(const SEI_cc_t &captions) const {
        const std::string field1 = Cea608Text(captions, kField1);
        const std::string text = Text("captions: ", captions.cc_data.cc_count);
        return field1.empty() ? text : Text(text, ", field 1 \"", field1, "\"");
    }
    std::string operator()(const SEI_afd_t &afd) const { return Text("AFD: ", ActiveFormatText(afd)); }
    std::string operator()(const ActiveParameterSets &sets) const {
        std::string text = Text(message.payload_name, ": VPS ", sets.active_video_parameter_set_id, ", SPS");
        for (const uint32_t id : sets.active_seq_parameter_set_id)
            text += Text(" ", id);
        return text;
    }
    std::string operator()(const UnregisteredUserData &data) const {
        return Text(Named(), " of ", data.Uuid());
    }
    std::string operator()(const Unparsable &unparsable) const {
        return Text(Named(), ": error: ", unparsable.reason);
    }
    std::string operator()(const NotParsed &not_parsed) const {
        return Text(Named(), ": not parsed: ", not_parsed.reason);
    }
};

}  // namespace

std::string TimeCodeText(const sei_h265_time_code_t &time_code) {
    std::string text;
    for (int i = 0; i < std::min<int>(time_code.num_clocks_ts, H265_TIME_CODE_CLOCKS); i++) {
        if (time_code.clock_timestamp_flag[i])
            text += Text(text.empty() ? "" : ", ", ClockText(time_code, i));
    }
    return text.empty() ? "none" : text;
}

std::string ActiveFormatText(const SEI_afd_t &afd) {
    return afd.afd_data.active_format_flag ? std::to_string(afd.afd_data.active_format) : "none";
}

std::string SeiSummary(const Sei &sei) {
    std::string text;
    for (const SeiMessage &message : sei.messages)
        text += Text(text.empty() ? "" : "; ", std::visit(ContentSummarizer{message}, message.content));
    return sei.error.empty() ? text : Text(text, text.empty() ? "" : "; ", "error: ", sei.error);
}

}  // namespace h265tool
