// SEI NAL units: their messages, and what is in those that the tool knows.

#ifndef H265TOOL_READING_SEI_H
#define H265TOOL_READING_SEI_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "diagnostics.h"
#include "h265.h"
#include "nal_unit.h"
#include "reading/isolated_message.h"
#include "reading/problem.h"

namespace h265tool {

// A picture timing message, whose syntax depends on the SPS that the slices behind it refer to.
struct UnreadPicTiming {
    IsolatedMessage message;
};

struct PicTiming {
    sei_h265_pic_timing_t record;

    // From the SPS: which syntax elements there are.
    bool frame_field_info_present_flag;
    bool CpbDpbDelaysPresentFlag;
    bool sub_pic_hrd_params_present_flag;
    bool sub_pic_cpb_params_in_pic_timing_sei_flag;

    bool HasDecodingUnits() const {
        return sub_pic_hrd_params_present_flag && sub_pic_cpb_params_in_pic_timing_sei_flag;
    }
};

// active_parameter_sets( ), clause D.2.21, up to the ids.
struct ActiveParameterSets {
    uint8_t active_video_parameter_set_id = 0;
    int self_contained_cvs_flag = 0;
    int no_parameter_set_update_flag = 0;
    uint32_t num_sps_ids_minus1 = 0;
    std::vector<uint32_t> active_seq_parameter_set_id;
};

// user_data_unregistered( ), clause D.2.7: who made the data.
struct UnregisteredUserData {
    std::array<unsigned char, 16> uuid_iso_iec_11578;

    std::string Uuid() const;  // "2ca2de09-b517-47db-bb55-a4fe7fc2fc4e"
};

// Nothing for messages that are shown by their names alone.
using SeiContent =
    std::variant<std::monostate, UnreadPicTiming, std::unique_ptr<PicTiming>, sei_h265_time_code_t, SEI_cc_t,
                 SEI_afd_t, ActiveParameterSets, UnregisteredUserData, Unparsable, NotParsed>;

struct SeiMessage {
    uint64_t payload_type = 0;
    std::string payload_name;
    uint64_t payload_size = 0;
    uint64_t payload_index = 0;  // in the data behind the NAL unit header, without emulation prevention bytes
    SeiContent content;
};

struct Sei {
    std::vector<SeiMessage> messages;
    std::string error;  // why the rest of the NAL unit could not be read; empty when there is none

    bool HasError() const;         // here or in a message
    bool HasUnreadTiming() const;  // ReadPicTimings has something to do
};

// Reads all but picture timing. The NAL unit has a whole header.
Sei ReadSei(const NalUnit &unit, Diagnostics *diagnostics);

// Reads the picture timing messages. No SPS: none is known, and they count as not parsed.
void ReadPicTimings(const sps_h265_t *sps, Diagnostics *diagnostics, Sei *sei);

}  // namespace h265tool

#endif
