#include "edit/sei_syntax.h"

#include <algorithm>
#include <vector>

#include "sei_names.h"
#include "text.h"

namespace h265tool {
namespace {

struct Element {
    std::string name;
    uint64_t value;

    bool operator==(const Element &) const = default;
};

// Those that tell which others there are come first: in two lists that differ, they do so at the same place.
class Elements {
 public:
    Elements(uint64_t payload_type, const sps_h265_t &sps) {
        const vui_h265_t &vui = sps.vui;
        if (payload_type == kPicTiming)
            Add("frame_field_info_present_flag", vui.frame_field_info_present_flag);
        const bool has_hrd = vui.vui_timing_info_present_flag && vui.vui_hrd_parameters_present_flag;
        const hrd_h265_t &hrd = vui.nal_hrd;
        const bool nal = has_hrd && hrd.nal_hrd_parameters_present_flag;
        const bool vcl = has_hrd && hrd.vcl_hrd_parameters_present_flag;
        if (payload_type == kBufferingPeriod) {
            Add("nal_hrd_parameters_present_flag", nal);
            Add("vcl_hrd_parameters_present_flag", vcl);
        } else {
            Add("CpbDpbDelaysPresentFlag", nal || vcl);
        }
        if (!nal && !vcl)
            return;
        Add("sub_pic_hrd_params_present_flag", hrd.sub_pic_hrd_params_present_flag);
        if (payload_type == kBufferingPeriod)
            AddOfBufferingPeriod(hrd, sps.sps_max_sub_layers_minus1);
        if (payload_type != kDecodingUnitInfo) {
            Add("au_cpb_removal_delay_length_minus1", hrd.au_cpb_removal_delay_length_minus1);
            Add("dpb_output_delay_length_minus1", hrd.dpb_output_delay_length_minus1);
        }
        if (payload_type != kBufferingPeriod && hrd.sub_pic_hrd_params_present_flag)
            AddOfDecodingUnits(hrd);
    }

    std::optional<std::string> FirstDifference(const Elements &other) const {
        const auto [mine, theirs] =
            std::mismatch(elements_.begin(), elements_.end(), other.elements_.begin(), other.elements_.end());
        if (mine == elements_.end())
            return std::nullopt;
        return mine->name;
    }

 private:
    template <typename Value>
    void Add(std::string name, Value value) {
        elements_.push_back({std::move(name), static_cast<uint64_t>(value)});
    }

    void AddOfBufferingPeriod(const hrd_h265_t &hrd, int max_sub_layers_minus1) {
        Add("initial_cpb_removal_delay_length_minus1", hrd.initial_cpb_removal_delay_length_minus1);
        for (int i = 0; i <= max_sub_layers_minus1; i++)
            Add(Text("cpb_cnt_minus1[", i, "]"), hrd.cpb_cnt_minus1[i]);
    }

    void AddOfDecodingUnits(const hrd_h265_t &hrd) {
        Add("sub_pic_cpb_params_in_pic_timing_sei_flag", hrd.sub_pic_cpb_params_in_pic_timing_sei_flag);
        Add("dpb_output_delay_du_length_minus1", hrd.dpb_output_delay_du_length_minus1);
        Add("du_cpb_removal_delay_increment_length_minus1", hrd.du_cpb_removal_delay_increment_length_minus1);
    }

    std::vector<Element> elements_;
};

}  // namespace

std::optional<std::string> ElementThatChangesSyntax(uint64_t payload_type, const sps_h265_t &before,
                                                    const sps_h265_t &after) {
    if (payload_type != kBufferingPeriod && payload_type != kPicTiming && payload_type != kDecodingUnitInfo)
        return std::nullopt;
    return Elements(payload_type, before).FirstDifference(Elements(payload_type, after));
}

}  // namespace h265tool
