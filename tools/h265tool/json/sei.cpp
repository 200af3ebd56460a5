#include "json/put.h"

namespace h265tool {
namespace {

// pic_timing( ), clause D.2.3.
Json ToJson(const PicTiming &timing) {
    const sei_h265_pic_timing_t &record = timing.record;
    Json json = Json::object();
    if (timing.frame_field_info_present_flag) {
        PUT(json, record, pic_struct);
        PUT(json, record, source_scan_type);
        PUT(json, record, duplicate_flag);
    }
    if (!timing.CpbDpbDelaysPresentFlag)
        return json;
    PUT(json, record, au_cpb_removal_delay_minus1);
    PUT(json, record, pic_dpb_output_delay);
    if (timing.sub_pic_hrd_params_present_flag)
        PUT(json, record, pic_dpb_output_du_delay);
    if (!timing.HasDecodingUnits())
        return json;
    PUT(json, record, num_decoding_units_minus1);
    PUT(json, record, du_common_cpb_removal_delay_flag);
    if (record.du_common_cpb_removal_delay_flag)
        PUT(json, record, du_common_cpb_removal_delay_increment_minus1);
    for (int i = 0; i < H265_PIC_TIMING_DECODING_UNITS; i++) {
        const auto unit = static_cast<UINT64>(i);
        if (unit > record.num_decoding_units_minus1)
            break;
        PUT(json, record, num_nalus_in_du_minus1, i);
        if (!record.du_common_cpb_removal_delay_flag && unit < record.num_decoding_units_minus1)
            PUT(json, record, du_cpb_removal_delay_increment_minus1, i);
    }
    return json;
}

// active_parameter_sets( ), clause D.2.21.
Json ToJson(const ActiveParameterSets &sets) {
    Json json;
    PUT(json, sets, active_video_parameter_set_id);
    PUT(json, sets, self_contained_cvs_flag);
    PUT(json, sets, no_parameter_set_update_flag);
    PUT(json, sets, num_sps_ids_minus1);
    PUT(json, sets, active_seq_parameter_set_id);
    return json;
}

// Adds what the message holds under the key of its kind.
struct SeiContentWriter {
    Json &json;

    void operator()(std::monostate) const {}
    void operator()(const UnreadPicTiming &) const {}
    void operator()(const std::unique_ptr<PicTiming> &timing) const { json["pic_timing"] = ToJson(*timing); }
    void operator()(const sei_h265_time_code_t &time_code) const {
        json["time_code"] = h265tool::ToJson(time_code);
    }
    void operator()(const SEI_cc_t &captions) const { json["captions"] = h265tool::ToJson(captions); }
    void operator()(const SEI_afd_t &afd) const { json["afd"] = h265tool::ToJson(afd); }
    void operator()(const ActiveParameterSets &sets) const { json["active_parameter_sets"] = ToJson(sets); }
    void operator()(const UnregisteredUserData &data) const {
        json["user_data_unregistered"]["uuid_iso_iec_11578"] = data.Uuid();
    }
    void operator()(const Unparsable &unparsable) const { json["error"] = unparsable.reason; }
    void operator()(const NotParsed &not_parsed) const { json["not_parsed"] = not_parsed.reason; }
};

}  // namespace

// time_code( ), clause D.2.27.
Json ToJson(const sei_h265_time_code_t &time_code) {
    Json json;
    PUT(json, time_code, num_clocks_ts);
    for (int i = 0; i < time_code.num_clocks_ts; i++) {
        PUT(json, time_code, clock_timestamp_flag, i);
        if (!time_code.clock_timestamp_flag[i])
            continue;
        PUT(json, time_code, units_field_based_flag, i);
        PUT(json, time_code, counting_type, i);
        PUT(json, time_code, full_timestamp_flag, i);
        PUT(json, time_code, discontinuity_flag, i);
        PUT(json, time_code, cnt_drop_flag, i);
        PUT(json, time_code, n_frames, i);
        const bool full = time_code.full_timestamp_flag[i] != 0;
        if (!full)
            PUT(json, time_code, seconds_flag, i);
        if (time_code.seconds_flag[i]) {
            PUT(json, time_code, seconds_value, i);
            if (!full)
                PUT(json, time_code, minutes_flag, i);
        }
        if (time_code.minutes_flag[i]) {
            PUT(json, time_code, minutes_value, i);
            if (!full)
                PUT(json, time_code, hours_flag, i);
        }
        if (time_code.hours_flag[i])
            PUT(json, time_code, hours_value, i);
        PUT(json, time_code, time_offset_length, i);
        if (time_code.time_offset_length[i] > 0)
            PUT(json, time_code, time_offset_value, i);
    }
    return json;
}

// cc_data( ), ATSC A/53 clause 6.2.3, with what identifies it.
Json ToJson(const SEI_cc_t &captions) {
    Json json;
    PUT(json, captions, itu_t_t35_country_code);
    PUT(json, captions, itu_t_t35_provider_code);
    PUT(json, captions, user_identifier);
    PUT(json, captions, user_data_type_code);
    PUT(json["cc_data"], captions.cc_data, process_cc_data_flag);
    PUT(json["cc_data"], captions.cc_data, cc_count);
    PUT(json["cc_data"], captions.cc_data, marker_bits);
    json["cc_bytes"] = Json::array();
    for (size_t i = 0; i < captions.cc_data.cc_count; i++) {
        Json &caption = json["cc_bytes"].emplace_back();
        PUT(caption, captions.cc_bytes[i], flag);
        PUT(caption, captions.cc_bytes[i], type);
        PUT(caption, captions.cc_bytes[i], data1);
        PUT(caption, captions.cc_bytes[i], data2);
    }
    return json;
}

// afd_data( ), ATSC A/53 clause 6.2.4, with what identifies it.
Json ToJson(const SEI_afd_t &afd) {
    Json json;
    PUT(json, afd, itu_t_t35_country_code);
    PUT(json, afd, itu_t_t35_provider_code);
    PUT(json, afd, user_identifier);
    PUT(json["afd_data"], afd.afd_data, active_format_flag);
    if (afd.afd_data.active_format_flag)
        PUT(json["afd_data"], afd.afd_data, active_format);
    return json;
}

Json ToJson(const SeiMessage &message) {
    Json json;
    PUT(json, message, payload_type);
    PUT(json, message, payload_name);
    PUT(json, message, payload_size);
    PUT(json, message, payload_index);
    std::visit(SeiContentWriter{json}, message.content);
    return json;
}

}  // namespace h265tool
