#include "summary.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "profile_names.h"
#include "sei_summary.h"
#include "text.h"

namespace h265tool {
namespace {

constexpr std::array kChromaFormats = {"4:0:0", "4:2:0", "4:2:2", "4:4:4"};

// "29.97", "25"
std::string Rate(UINT64 time_scale, UINT64 num_units_in_tick) {
    if (time_scale % num_units_in_tick == 0)
        return Text(time_scale / num_units_in_tick);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f",
                  static_cast<double>(time_scale) / static_cast<double>(num_units_in_tick));
    return text.data();
}

// The size of the pictures that are shown, "1920x1080": the conformance window, whose offsets count chroma
// samples (clause 7.4.3.2.1).
std::string CroppedSize(const sps_h265_t &sps) {
    const bool planes = sps.separate_colour_plane_flag != 0;
    const UINT64 SubWidthC = !planes && (sps.chroma_format_idc == 1 || sps.chroma_format_idc == 2) ? 2 : 1;
    const UINT64 SubHeightC = !planes && sps.chroma_format_idc == 1 ? 2 : 1;
    const auto rest = [](UINT64 whole, UINT64 cut) { return whole - std::min(whole, cut); };
    const UINT64 width = rest(sps.pic_width_in_luma_samples,
                              SubWidthC * (sps.conf_win_left_offset + sps.conf_win_right_offset));
    const UINT64 height = rest(sps.pic_height_in_luma_samples,
                               SubHeightC * (sps.conf_win_top_offset + sps.conf_win_bottom_offset));
    return Text(width, "x", height);
}

std::string ChromaFormat(const sps_h265_t &sps) {
    if (sps.chroma_format_idc >= kChromaFormats.size())
        return Text("chroma_format_idc ", sps.chroma_format_idc);
    return kChromaFormats[sps.chroma_format_idc];
}

// "8 bits"; where luma and chroma differ, "8/10 bits"
std::string BitDepth(const sps_h265_t &sps) {
    const UINT64 luma = sps.bit_depth_luma_minus8 + 8;
    const UINT64 chroma = sps.bit_depth_chroma_minus8 + 8;
    return sps.chroma_format_idc == 0 || chroma == luma ? Text(luma, " bits")
                                                        : Text(luma, "/", chroma, " bits");
}

std::string SliceType(UINT64 slice_type) {
    static constexpr std::array kLetters = {"B", "P", "I"};
    return slice_type < kLetters.size() ? kLetters[slice_type] : Text("slice_type ", slice_type);
}

// Appends the summary to a line.
struct Summarizer {
    std::string *line;

    void operator()(std::monostate) const {}

    void operator()(const vps_h265_t *vps) const {
        const int sub_layers = vps->vps_max_sub_layers_minus1 + 1;
        AppendText(line, "VPS ", vps->vps_video_parameter_set_id, ": ", sub_layers,
                   sub_layers == 1 ? " sub-layer" : " sub-layers");
    }

    void operator()(const sps_h265_t *sps) const {
        AppendText(line, "SPS ", sps->seq_parameter_set_id, ": ", CroppedSize(*sps), " ", ChromaFormat(*sps),
                   ", ", BitDepth(*sps), ", ", ProfileTierLevelName(sps->ptl));
        const vui_h265_t &vui = sps->vui;
        if (vui.vui_timing_info_present_flag && vui.vui_num_units_in_tick != 0)
            AppendText(line, ", ", Rate(vui.vui_time_scale, vui.vui_num_units_in_tick),
                       vui.field_seq_flag ? " fields/s" : " frames/s");
    }

    void operator()(const pps_h265_t *pps) const {
        AppendText(line, "PPS ", pps->pps_pic_parameter_set_id, ": of SPS ", pps->pps_seq_parameter_set_id);
    }

    void operator()(const Slice &slice) const {
        const ssh_h265_t &header = slice.header;
        if (header.dependent_slice_segment_flag)
            AppendText(line, "dependent ");
        if (header.first_slice_segment_in_pic_flag)
            AppendText(line, "first ");
        AppendText(line, "slice segment, address ", header.slice_segment_address);
        if (!header.dependent_slice_segment_flag)
            AppendText(line, ", ", SliceType(header.slice_type), ", POC LSBs ",
                       header.slice_pic_order_cnt_lsb);
    }

    void operator()(const aud_h265_t &aud) const {
        static constexpr std::array kSlices = {"I", "P, I", "B, P, I"};  // Table 7-2
        AppendText(line, "pic_type ", aud.pic_type);
        if (aud.pic_type < kSlices.size())
            AppendText(line, ": ", kSlices[aud.pic_type]);
    }

    void operator()(const Sei &sei) const { *line += SeiSummary(sei); }
    void operator()(const Unparsable &unparsable) const { AppendText(line, "error: ", unparsable.reason); }
    void operator()(const NotParsed &not_parsed) const {
        AppendText(line, "not parsed: ", not_parsed.reason);
    }
};

constexpr size_t kOffsetWidth = 10;
constexpr size_t kSizeWidth = 8;
constexpr size_t kNameWidth = 14;

bool HasSummary(const UnitContent &content) {
    if (const auto *const sei = std::get_if<Sei>(&content))
        return !sei->messages.empty() || !sei->error.empty();
    return !std::holds_alternative<std::monostate>(content);
}

std::string_view ColourOf(unsigned int nal_unit_type, const UnitContent &content, const Colours &colours) {
    if (std::holds_alternative<NotParsed>(content) || nal_unit_type == kAud)
        return colours.minor;
    if (IsIrap(nal_unit_type))
        return colours.key_picture;
    if (nal_unit_type >= kVps && nal_unit_type <= kPps)
        return colours.parameter_set;
    return {};
}

}  // namespace

bool IsBroken(const UnitContent &content) {
    const auto *const sei = std::get_if<Sei>(&content);
    return std::holds_alternative<Unparsable>(content) || (sei != nullptr && sei->HasError());
}

std::string Summary(const UnitContent &content) {
    std::string summary;
    std::visit(Summarizer{&summary}, content);
    return summary;
}

void AppendSummaryLine(const NalUnit &unit, const UnitContent &content, const Colours &colours,
                       bool human_size, std::string *line) {
    const std::optional<NalUnitHeader> header = unit.Header();
    const bool has_temporal_id = header.has_value() && header->nuh_temporal_id_plus1 > 0;
    const std::string size = human_size ? HumanSize(unit.size) : std::string(Decimal(unit.size).text());
    const std::string layer = header.has_value() ? Text(header->nuh_layer_id) : "-";
    const std::string tid = has_temporal_id ? Text(header->nuh_temporal_id_plus1 - 1) : "-";
    const std::string_view name = header.has_value() ? NalUnitTypeName(header->nal_unit_type) : "-";
    std::string_view colour = colours.error;
    if (header.has_value() && !IsBroken(content))
        colour = ColourOf(header->nal_unit_type, content, colours);

    const std::string_view minor = colours.minor;
    AppendText(line, minor, ToTheRight{Decimal(unit.offset).text(), kOffsetWidth}, EndOf(minor), " ",
               ToTheRight{size, kSizeWidth}, "  ", colour, name, EndOf(colour),
               ToTheRight{"", kNameWidth - std::min(kNameWidth, name.size())}, minor, "  layer ", layer,
               "  tid ", tid, EndOf(minor));
    if (HasSummary(content)) {
        AppendText(line, "  ", colour);
        std::visit(Summarizer{line}, content);
        *line += EndOf(colour);
    }
}

std::string HumanSize(uint64_t bytes) {
    constexpr uint64_t kStep = 1024;
    static constexpr std::array kUnits = {" KiB", " MiB", " GiB", " TiB"};
    if (bytes < kStep)
        return Text(bytes, " B  ");
    uint64_t unit = kStep;
    size_t i = 0;
    const auto rounded = [&unit](uint64_t value) {
        return value / unit + (value % unit >= unit / 2 ? 1 : 0);
    };
    for (; rounded(bytes) >= kStep && i + 1 < kUnits.size(); unit *= kStep)
        i++;
    const uint64_t tenths = bytes < 10 * unit ? rounded(bytes * 10) : 100;
    return tenths < 100 ? Text(tenths / 10, ".", tenths % 10, kUnits[i]) : Text(rounded(bytes), kUnits[i]);
}

}  // namespace h265tool
