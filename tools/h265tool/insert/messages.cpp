#include "insert/messages.h"

#include <algorithm>
#include <array>
#include <memory>

#include "h265.h"
#include "pic_struct.h"
#include "text.h"
#include "unit_error.h"
#include "usage_error.h"

namespace h265tool {
namespace {

// Each message with emulation prevention: the largest, captions of 31 triplets, stays far below.
using Buffer = std::array<unsigned char, 512>;

constexpr int kMaxCcCount = 31;                 // cc_count has 5 bits
constexpr uint64_t kMaxTimeCodeFrame = 85;      // of the library's time codes
constexpr unsigned char kNullCharacter = 0x80;  // CEA-608, with its parity bit

// MISB ST 0604: the clock is not locked to anything; the five low bits are always set.
constexpr unsigned char kTimeStatus = 0x9F;

NalUnitBytes Built(const Buffer &buffer, int length) {
    if (length <= static_cast<int>(3 + kNalUnitHeaderSize))
        throw std::logic_error("a NAL unit could not be built");
    return NalUnitBytes(buffer.begin(), buffer.begin() + length);
}

// nuh_temporal_id_plus1 of what the library built, which is 1: no NAL unit in an access unit may have less
// than its pictures (clause 7.4.2.2).
NalUnitBytes AtTemporalId(NalUnitBytes nal_unit, unsigned int temporal_id) {
    const auto start_code_end = std::find(nal_unit.begin(), nal_unit.end(), 1);
    start_code_end[2] = static_cast<unsigned char>(temporal_id + 1);
    return nal_unit;
}

unsigned char Digit(unsigned int number, unsigned int place) {
    return static_cast<unsigned char>(number / place % 10);
}

std::string At(const AccessUnit &access_unit, const std::string &reason) {
    return Text("access unit at offset ", access_unit.offset, ": ", reason);
}

bool HasDelays(const hrd_h265_t &hrd) {
    return hrd.nal_hrd_parameters_present_flag || hrd.vcl_hrd_parameters_present_flag;
}

// source_scan_type as clause D.3.3 has it; where the profile leaves it to the pictures, by pic_struct.
unsigned char SourceScanType(const sps_h265_t &sps, unsigned char pic_struct) {
    const bool progressive = sps.ptl.general_progressive_source_flag;
    const bool interlaced = sps.ptl.general_interlaced_source_flag;
    if (progressive != interlaced)
        return progressive ? 1 : 0;
    if (!progressive)
        return 2;
    const bool is_frame = pic_struct == 0 || pic_struct == 7 || pic_struct == 8;
    return is_frame ? 1 : 0;
}

vanc_t Caption(unsigned char flag, unsigned char type, unsigned char data1, unsigned char data2) {
    vanc_t record{};
    record.suid = SUID_CLOSED_CAPTION;
    record.vanc_data.caption = {flag, type, data1, data2};
    return record;
}

}  // namespace

MessageBuilder::MessageBuilder(const Request &request, const std::vector<AccessUnit> &access_units)
    : request_(request) {
    if (request.captions.has_value() || request.time_code.has_value() || request.precision_time.has_value())
        FindRate(access_units);
    if (request.time_code.has_value())
        CheckTimeCode();
    if (request.captions.has_value())
        CheckCaptions();
    for (const AccessUnit &access_unit : access_units) {
        if (Gets(SeiKind::kPicTiming, access_unit))
            CheckPicTiming(access_unit);
    }
}

void MessageBuilder::FindRate(const std::vector<AccessUnit> &access_units) {
    if (request_.rate.has_value()) {
        rate_ = *request_.rate;
        return;
    }
    const std::optional<Rate> first = RateOf(access_units.front().sps->vui);
    if (!first.has_value())
        throw UsageError("--rate", "the stream does not tell its rate, so it has to be given");
    for (const AccessUnit &access_unit : access_units) {
        const std::optional<Rate> rate = RateOf(access_unit.sps->vui);
        if (rate != first)
            throw UsageError("--rate",
                             At(access_unit, "the rate of the stream changes, so it has to be given"));
    }
    rate_ = *first;
}

void MessageBuilder::CheckTimeCode() {
    const TimeCode &time_code = *request_.time_code;
    const std::optional<unsigned int> frames = TimeCodeFrames(rate_);
    if (!frames.has_value() || *frames > kMaxTimeCodeFrame + 1)
        throw UsageError("--rate", Text("time codes do not count ", rate_.Text(), " pictures/s"));
    const unsigned int dropped = DroppedCounts(rate_);
    if (time_code.drop_frame && dropped == 0)
        throw UsageError("--timecode", Text("there is no drop-frame time code of ", rate_.Text(),
                                            " pictures/s, only of 30000/1001 and 60000/1001"));
    time_codes_ = TimeCodeCount(*frames, dropped);
    if (!time_codes_.Has(time_code))
        throw UsageError("--timecode", Text(rate_.Text(), " pictures/s have no such time code"));
}

// 600 constructs per second in all, CTA-708: 20 a picture at 29.97 Hz, 10 at 59.94 Hz.
void MessageBuilder::CheckCaptions() {
    const uint64_t cc_count = (600 * rate_.denominator + rate_.numerator / 2) / rate_.numerator;
    if (cc_count < 1 || cc_count > kMaxCcCount)
        throw UsageError("--rate", Text("captions do not fit ", rate_.Text(), " pictures/s"));
    cc_count_ = static_cast<int>(cc_count);
}

void MessageBuilder::CheckPicTiming(const AccessUnit &access_unit) const {
    const vui_h265_t &vui = access_unit.sps->vui;
    const hrd_h265_t &hrd = vui.nal_hrd;
    if (!vui.frame_field_info_present_flag)
        throw UnitError(At(access_unit,
                           "its picture timing has no pic_struct: "
                           "frame_field_info_present_flag of the SPS is 0"));
    if (HasDelays(hrd) && hrd.sub_pic_hrd_params_present_flag)
        throw UnitError(At(access_unit, "picture timing with decoding units cannot be written"));
    if (HasDelays(hrd) && !access_unit.pic_timing.has_value())
        throw UnitError(At(access_unit,
                           "the delays of its picture timing are not known: "
                           "the SPS has an HRD, but there is no message to take them from"));
    const unsigned char pic_struct = PicStruct(access_unit);
    if (!FitsFieldSeq(pic_struct, vui.field_seq_flag))
        throw UnitError(At(access_unit, Text("pic_struct ", pic_struct, " does not fit field_seq_flag ",
                                             vui.field_seq_flag)));
}

bool MessageBuilder::GetsDelimiter(const AccessUnit &access_unit) const {
    return request_.delimiters && (request_.replace || !access_unit.has_delimiter);
}

bool MessageBuilder::Gets(SeiKind kind, const AccessUnit &access_unit) const {
    if (!request_.Wants(kind) || (!request_.replace && access_unit.Has(kind)))
        return false;
    const bool counts_pictures = kind != SeiKind::kPicTiming && kind != SeiKind::kAfd;
    return access_unit.is_output || !counts_pictures;
}

NalUnitBytes MessageBuilder::Delimiter(const AccessUnit &access_unit) const {
    Buffer buffer;
    const int length = H265Lib_format_au_delimiter_nalu(buffer.data(), buffer.size(), access_unit.pic_type);
    return AtTemporalId(Built(buffer, length), access_unit.temporal_id);
}

NalUnitBytes MessageBuilder::EndOfSequence() const {
    NalUnitBytes nal_unit(5);
    H265Lib_format_end_of_sequence_nalu(nal_unit.data(), static_cast<unsigned int>(nal_unit.size()));
    return nal_unit;
}

std::vector<std::pair<const char *, size_t>> MessageBuilder::Kept(
    const std::vector<AccessUnit> &access_units) const {
    std::vector<std::pair<const char *, size_t>> kept;
    const auto count = [&](const char *option, auto is_kept) {
        const auto number = std::count_if(access_units.begin(), access_units.end(), is_kept);
        if (number > 0)
            kept.emplace_back(option, static_cast<size_t>(number));
    };
    if (request_.replace)
        return kept;
    if (request_.delimiters)
        count("--aud", [](const AccessUnit &access_unit) { return access_unit.has_delimiter; });
    constexpr std::array<std::pair<const char *, SeiKind>, 5> kOptions = {
        {{"--captions", SeiKind::kCaptions},
         {"--afd", SeiKind::kAfd},
         {"--timecode", SeiKind::kTimeCode},
         {"--precision-time", SeiKind::kPrecisionTime},
         {"--pic-timing", SeiKind::kPicTiming}}};
    for (const auto &[option, kind] : kOptions) {
        if (request_.Wants(kind))
            count(option, [kind = kind](const AccessUnit &access_unit) { return access_unit.Has(kind); });
    }
    return kept;
}

uint64_t MessageBuilder::CaptionsBehind(const std::vector<AccessUnit> &access_units) const {
    if (!request_.captions.has_value())
        return 0;
    const auto pictures = static_cast<uint64_t>(
        std::count_if(access_units.begin(), access_units.end(),
                      [](const AccessUnit &access_unit) { return access_unit.is_output; }));
    const uint64_t end = FirstCaptionFrame(pictures);
    return static_cast<uint64_t>(std::count_if(request_.captions->begin(), request_.captions->end(),
                                               [end](const CaptionPair &pair) { return pair.frame >= end; }));
}

std::vector<NalUnitBytes> MessageBuilder::Sei(const AccessUnit &access_unit) const {
    std::vector<NalUnitBytes> nal_units;
    const auto add = [&](SeiKind kind, auto build) {
        if (Gets(kind, access_unit))
            nal_units.push_back(AtTemporalId(build(), access_unit.temporal_id));
    };
    add(SeiKind::kPicTiming, [&] { return PicTiming(access_unit); });
    add(SeiKind::kTimeCode, [&] { return TimeCodeOf(access_unit); });
    add(SeiKind::kAfd, [&] { return ActiveFormat(); });
    add(SeiKind::kCaptions, [&] { return Captions(access_unit); });
    add(SeiKind::kPrecisionTime, [&] { return PrecisionTime(access_unit); });
    return nal_units;
}

unsigned char MessageBuilder::PicStruct(const AccessUnit &access_unit) const {
    return request_.pic_structs[access_unit.presentation % request_.pic_structs.size()];
}

NalUnitBytes MessageBuilder::PicTiming(const AccessUnit &access_unit) const {
    const auto record = std::make_unique<sei_h265_pic_timing_t>();
    record->pic_struct = PicStruct(access_unit);
    record->source_scan_type = SourceScanType(*access_unit.sps, record->pic_struct);
    if (const std::optional<PicTimingRest> &rest = access_unit.pic_timing; rest.has_value()) {
        record->source_scan_type = rest->source_scan_type;
        record->duplicate_flag = rest->duplicate_flag;
        record->au_cpb_removal_delay_minus1 = rest->au_cpb_removal_delay_minus1;
        record->pic_dpb_output_delay = rest->pic_dpb_output_delay;
    }
    Buffer buffer;
    UINT length = buffer.size();
    if (!H265Lib_format_sei_pictiming_nal(buffer.data(), &length, &access_unit.sps->vui, record.get()))
        length = 0;
    return Built(buffer, static_cast<int>(length));
}

NalUnitBytes MessageBuilder::TimeCodeOf(const AccessUnit &access_unit) const {
    const bool drop_frame = request_.time_code->drop_frame;
    const uint64_t first = time_codes_.FrameNumber(*request_.time_code);
    const TimeCode time_code = time_codes_.At(first + access_unit.presentation, drop_frame);
    vitc_t vitc{};
    vitc.FrameUnits = Digit(time_code.frames, 1);
    vitc.FrameTens = Digit(time_code.frames, 10);
    vitc.Flag1 = drop_frame ? 1 : 0;
    vitc.SecondUnits = Digit(time_code.seconds, 1);
    vitc.SecondTens = Digit(time_code.seconds, 10);
    vitc.MinuteUnits = Digit(time_code.minutes, 1);
    vitc.MinuteTens = Digit(time_code.minutes, 10);
    vitc.HourUnits = Digit(time_code.hours, 1);
    vitc.HourTens = Digit(time_code.hours, 10);

    SEI_time_code_info_t info{};
    info.FrameRate = static_cast<int>(rate_.Thousandths());
    info.enTimeSource = EMBEDDED_TIME_CODE;
    info.pParsedSps = access_unit.sps.get();
    Buffer buffer;
    const int length =
        H265Lib_format_sei_time_code_nal(buffer.data(), static_cast<int>(buffer.size()), &vitc, &info);
    return Built(buffer, length);
}

NalUnitBytes MessageBuilder::ActiveFormat() const {
    vanc_t record{};
    record.suid = SUID_AFD;
    record.vanc_data.afd_data = {1, *request_.active_format};
    Buffer buffer;
    const int length =
        H265Lib_format_sei_afd_nal(buffer.data(), static_cast<int>(buffer.size()), &record, sizeof record);
    return Built(buffer, length);
}

// The first caption frame that begins with the picture or later; they begin at multiples of 1001/30000 s.
uint64_t MessageBuilder::FirstCaptionFrame(uint64_t picture) const {
    const uint64_t dividend = picture * 30000 * rate_.denominator;
    const uint64_t divisor = 1001 * rate_.numerator;
    return (dividend + divisor - 1) / divisor;
}

// The byte pairs of the caption frames that begin while the picture is shown; a null pair where there is
// nothing to say, and one that is not valid, of field 2, in a picture without a caption frame.
NalUnitBytes MessageBuilder::Captions(const AccessUnit &access_unit) const {
    const std::vector<CaptionPair> &pairs = *request_.captions;
    const uint64_t end = FirstCaptionFrame(access_unit.presentation + 1);
    uint64_t frame = FirstCaptionFrame(access_unit.presentation);
    auto pair = std::lower_bound(pairs.begin(), pairs.end(), frame,
                                 [](const CaptionPair &a, uint64_t number) { return a.frame < number; });
    std::vector<vanc_t> records;
    for (; frame < end; frame++) {
        if (pair != pairs.end() && pair->frame == frame) {
            records.push_back(Caption(1, 0, pair->data1, pair->data2));
            ++pair;
        } else {
            records.push_back(Caption(1, 0, kNullCharacter, kNullCharacter));
        }
    }
    if (records.empty())
        records.push_back(Caption(0, 1, kNullCharacter, kNullCharacter));
    Buffer buffer;
    const int length =
        H265Lib_format_sei_cc_nal(buffer.data(), static_cast<int>(buffer.size()), records.data(),
                                  static_cast<int>(records.size() * sizeof(vanc_t)), cc_count_, nullptr);
    return Built(buffer, length);
}

NalUnitBytes MessageBuilder::PrecisionTime(const AccessUnit &access_unit) const {
    // whole seconds apart: the product with the picture count could outgrow 64 bits
    const uint64_t ticks = access_unit.presentation * rate_.denominator;
    const uint64_t microseconds =
        ticks / rate_.numerator * 1'000'000 + ticks % rate_.numerator * 1'000'000 / rate_.numerator;
    const INT64 time = *request_.precision_time + static_cast<int64_t>(microseconds);
    Buffer buffer;
    const int length = H265Lib_formatMISPMicroSecondTimeSEI(buffer.data(), static_cast<int>(buffer.size()),
                                                            &time, kTimeStatus);
    return Built(buffer, length);
}

}  // namespace h265tool
