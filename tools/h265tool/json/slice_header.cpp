#include "json/put.h"

namespace h265tool {

// slice_segment_header( ), clause 7.3.6.1, up to slice_pic_order_cnt_lsb.
Json ToJson(const Slice &slice) {
    const ssh_h265_t &header = slice.header;
    Json json;
    PUT(json, header, first_slice_segment_in_pic_flag);
    if (IsIrap(slice.nal_unit_type))
        PUT(json, header, no_output_of_prior_pics_flag);
    PUT(json, header, slice_pic_parameter_set_id);
    if (!header.first_slice_segment_in_pic_flag) {
        if (slice.active.pps.dependent_slice_segments_enabled_flag)
            PUT(json, header, dependent_slice_segment_flag);
        PUT(json, header, slice_segment_address);
    }
    if (header.dependent_slice_segment_flag)
        return json;
    PUT(json, header, slice_type);
    if (slice.active.pps.output_flag_present_flag)
        PUT(json, header, pic_output_flag);
    if (slice.active.sps.separate_colour_plane_flag)
        PUT(json, header, colour_plane_id);
    if (!IsIdr(slice.nal_unit_type))
        PUT(json, header, slice_pic_order_cnt_lsb);
    return json;
}

}  // namespace h265tool
