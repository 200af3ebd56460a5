// Small NAL units made by hand.

#ifndef TESTS_H265TOOL_SAMPLE_UNITS_H
#define TESTS_H265TOOL_SAMPLE_UNITS_H

#include "nal_unit.h"
#include "support/bit_string.h"
#include "support/nal_unit.h"

namespace h265tool {

struct SpsChoices {
    unsigned int id = 0;
    unsigned int width = 64;
    unsigned int height = 64;
    unsigned int max_sub_layers_minus1 = 0;
    unsigned int log2_max_pic_order_cnt_lsb_minus4 = 4;
    test::BitString strps = test::BitString().Ue(0);  // from num_short_term_ref_pic_sets on
    test::BitString vui = {};                         // none when empty
};

test::BitString ProfileTierLevel();  // Main profile, level 3.1, one sub-layer

// A VUI with a NAL HRD whose delays in picture timing have so many bits, and with or without
// frame_field_info_present_flag.
test::BitString VuiWithHrd(unsigned int au_cpb_removal_delay_length, unsigned int dpb_output_delay_length,
                           bool frame_field_info);

test::BitString Sps(const SpsChoices &choices);  // blocks of 8x8 to 16x16
test::BitString Pps(unsigned int id, unsigned int sps_id, bool dependent_slice_segments = false);

// A VPS up to and with vps_time_scale; the rest, from vps_poc_proportional_to_timing_flag on, is the
// caller's.
test::BitString VpsWithTiming();

// A NAL unit as the tool has it in its hands, with the trailing bits.
NalUnit Unit(unsigned int nal_unit_type, test::BitString payload);

NalUnit UnitOf(const test::Bytes &bytes);  // start code included

// A stream made of NAL units, and the NAL units of a stream, as a whole.
test::Bytes Joined(const std::vector<test::Bytes> &units);
std::vector<NalUnit> Units(const test::Bytes &stream);

}  // namespace h265tool

#endif
