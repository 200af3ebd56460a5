#include "reading/sei.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

#include "bitbuffer.h"
#include "parameter_sets.h"
#include "reading/rbsp.h"
#include "reading/sei_walk.h"
#include "sei_names.h"
#include "text.h"
#include "unit_error.h"

namespace h265tool {
namespace {

using Bytes = std::span<const unsigned char>;

// What identifies user data of ATSC, behind country and provider code.
constexpr size_t kIdentifierIndex = 3;
constexpr std::string_view kCaptions = "GA94\x03";  // with user_data_type_code
constexpr std::string_view kActiveFormat = "DTG1";

bool IsIdentifiedBy(std::string_view identifier, Bytes payload) {
    return payload.size() >= kIdentifierIndex + identifier.size() &&
           std::equal(identifier.begin(), identifier.end(), payload.begin() + kIdentifierIndex);
}

SEI_cc_t ReadCaptions(IsolatedMessage isolated, Diagnostics *diagnostics) {
    SEI_cc_t captions{};
    diagnostics->Clear();
    if (!H265Lib_Parse_sei_cc_nal(isolated.nal_unit.data(), isolated.Length(), &captions))
        throw UnitError(diagnostics->FirstError());
    return captions;
}

SEI_afd_t ReadActiveFormat(IsolatedMessage isolated, Diagnostics *diagnostics) {
    SEI_afd_t afd{};
    diagnostics->Clear();
    if (!H265Lib_Parse_sei_afd_nal(isolated.nal_unit.data(), isolated.Length(), &afd))
        throw UnitError(diagnostics->FirstError());
    return afd;
}

sei_h265_time_code_t ReadTimeCode(const IsolatedMessage &isolated, Diagnostics *diagnostics) {
    sei_h265_time_code_t time_code{};
    diagnostics->Clear();
    if (!H265Lib_Parse_sei_timecode_nal(isolated.nal_unit.data(), isolated.Length(), &isolated.header,
                                        &time_code))
        throw UnitError(diagnostics->FirstError());
    return time_code;
}

std::unique_ptr<PicTiming> ReadPicTiming(const IsolatedMessage &isolated, const vui_h265_t &vui,
                                         Diagnostics *diagnostics) {
    auto timing = std::make_unique<PicTiming>();
    timing->frame_field_info_present_flag = vui.frame_field_info_present_flag != 0;
    timing->CpbDpbDelaysPresentFlag = vui.CpbDpbDelaysPresentFlag != 0;
    timing->sub_pic_hrd_params_present_flag = vui.nal_hrd.sub_pic_hrd_params_present_flag != 0;
    timing->sub_pic_cpb_params_in_pic_timing_sei_flag =
        vui.nal_hrd.sub_pic_cpb_params_in_pic_timing_sei_flag != 0;
    diagnostics->Clear();
    if (!H265Lib_Parse_sei_pictiming_nal(isolated.nal_unit.data(), isolated.Length(), &isolated.header, &vui,
                                         &timing->record))
        throw UnitError(diagnostics->FirstError());
    return timing;
}

UnregisteredUserData ReadUnregisteredUserData(Bytes payload) {
    UnregisteredUserData data{};
    if (payload.size() < data.uuid_iso_iec_11578.size())
        throw UnitError("cannot parse uuid_iso_iec_11578.");
    std::copy_n(payload.begin(), data.uuid_iso_iec_11578.size(), data.uuid_iso_iec_11578.begin());
    return data;
}

ActiveParameterSets ReadActiveParameterSets(Bytes payload) {
    std::vector<unsigned char> bytes(payload.begin(), payload.end());
    bitbuffer_t bits{bytes.data(), 0, static_cast<unsigned int>(bytes.size() * 8)};
    ActiveParameterSets sets;
    if (GetNextNBitsAsUint8(&bits, 4, &sets.active_video_parameter_set_id) != 0 ||
        GetNextBitEx(&bits, &sets.self_contained_cvs_flag) != 0 ||
        GetNextBitEx(&bits, &sets.no_parameter_set_update_flag) != 0 ||
        GetUint32Golomb(&bits, &sets.num_sps_ids_minus1) != 0)
        throw UnitError("cannot parse num_sps_ids_minus1.");
    if (sets.num_sps_ids_minus1 > kMaxSpsId)
        throw UnitError(Text("num_sps_ids_minus1 is ", sets.num_sps_ids_minus1, ", above ", kMaxSpsId));
    for (uint32_t i = 0; i <= sets.num_sps_ids_minus1; i++) {
        if (GetUint32Golomb(&bits, &sets.active_seq_parameter_set_id.emplace_back()) != 0)
            throw UnitError(Text("cannot parse active_seq_parameter_set_id[", i, "]."));
    }
    return sets;
}

SeiContent ReadContent(const RawSeiMessage &message, const NalUnit &unit, Diagnostics *diagnostics) {
    if (message.payload_type == kUserDataRegistered) {
        if (IsIdentifiedBy(kCaptions, message.payload))
            return ReadCaptions(Isolated(message, unit, TrailingBits::kWith), diagnostics);
        if (IsIdentifiedBy(kActiveFormat, message.payload))
            return ReadActiveFormat(Isolated(message, unit, TrailingBits::kWith), diagnostics);
        return std::monostate{};
    }
    if (message.payload_type == kUserDataUnregistered)
        return ReadUnregisteredUserData(message.payload);
    const NalUnitHeader header = *unit.Header();
    if (header.nal_unit_type == kSuffixSei)  // the other types mean something else there, or nothing
        return std::monostate{};
    switch (message.payload_type) {
        case kPicTiming:
            if (header.nuh_layer_id > 0)
                return OtherLayer();
            return UnreadPicTiming{Isolated(message, unit, TrailingBits::kWithout)};
        case kActiveParameterSets:
            return ReadActiveParameterSets(message.payload);
        case kTimeCode:
            return ReadTimeCode(Isolated(message, unit, TrailingBits::kWithout), diagnostics);
        default:
            return std::monostate{};
    }
}

// What `read` returns, or why it could not.
template <typename Read>
SeiContent ContentOrProblem(Read read) {
    try {
        return read();
    } catch (const UnitError &error) {
        return Unparsable{error.what()};
    }
}

}  // namespace

std::string UnregisteredUserData::Uuid() const {
    std::string text;
    for (size_t i = 0; i < uuid_iso_iec_11578.size(); i++) {
        std::array<char, 8> byte{};
        const bool dash = i == 4 || i == 6 || i == 8 || i == 10;
        std::snprintf(byte.data(), byte.size(), "%s%02x", dash ? "-" : "", uuid_iso_iec_11578[i]);
        text += byte.data();
    }
    return text;
}

bool Sei::HasError() const {
    return !error.empty() || std::any_of(messages.begin(), messages.end(), [](const SeiMessage &message) {
        return std::holds_alternative<Unparsable>(message.content);
    });
}

bool Sei::HasUnreadTiming() const {
    return std::any_of(messages.begin(), messages.end(), [](const SeiMessage &message) {
        return std::holds_alternative<UnreadPicTiming>(message.content);
    });
}

Sei ReadSei(const NalUnit &unit, Diagnostics *diagnostics) {
    const std::vector<unsigned char> rbsp = Rbsp(unit);
    SeiWalk walk = WalkSei(rbsp);
    Sei sei;
    sei.error = unit.IsWhole() ? std::move(walk.error)
                               : Text("only the first ", unit.head.size(), " of its bytes are read");
    for (const RawSeiMessage &raw : walk.messages) {
        sei.messages.push_back({raw.payload_type,
                                SeiPayloadName(raw.payload_type, unit.Header()->nal_unit_type),
                                raw.payload_size, raw.payload_index,
                                ContentOrProblem([&] { return ReadContent(raw, unit, diagnostics); })});
    }
    return sei;
}

void ReadPicTimings(const sps_h265_t *sps, Diagnostics *diagnostics, Sei *sei) {
    for (SeiMessage &message : sei->messages) {
        const auto *unread = std::get_if<UnreadPicTiming>(&message.content);
        if (unread == nullptr)
            continue;
        if (sps == nullptr)
            message.content = NotParsed{"its SPS is not there"};
        else
            message.content = ContentOrProblem(
                [&]() -> SeiContent { return ReadPicTiming(unread->message, sps->vui, diagnostics); });
    }
}

}  // namespace h265tool
