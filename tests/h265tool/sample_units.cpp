#include "sample_units.h"

#include "annexb_scanner.h"

namespace h265tool {

using test::BitString;

BitString ProfileTierLevel() {
    return BitString()
        .U(2, 0)
        .U(1, 0)
        .U(5, 1)            // general_profile_idc
        .U(32, 0x60000000)  // compatible with 1 and 2
        .U(4, 9)            // progressive, frame only
        .U(43, 0)
        .U(1, 0)
        .U(8, 93);
}

BitString VuiWithHrd(unsigned int au_cpb_removal_delay_length, unsigned int dpb_output_delay_length,
                     bool frame_field_info) {
    BitString vui;
    vui.U(6, 0).U(1, frame_field_info).U(1, 0);
    vui.U(1, 1).U(32, 1001).U(32, 30000).U(1, 0).U(1, 1);  // timing, with hrd_parameters( )
    vui.U(1, 1).U(1, 0).U(1, 0).U(4, 0).U(4, 0).U(5, 23);
    vui.U(5, au_cpb_removal_delay_length - 1).U(5, dpb_output_delay_length - 1);
    return vui.U(1, 1).Ue(0).Ue(0).Ue(1000).Ue(2000).U(1, 0).U(1, 0);
}

BitString Sps(const SpsChoices &choices) {
    BitString sps;
    sps.U(4, 0).U(3, choices.max_sub_layers_minus1).U(1, 1).Append(ProfileTierLevel());
    if (choices.max_sub_layers_minus1 > 0)
        sps.U(2 * choices.max_sub_layers_minus1, 0).U(2 * (8 - choices.max_sub_layers_minus1), 0);
    sps.Ue(choices.id).Ue(1).Ue(choices.width).Ue(choices.height).U(1, 0).Ue(0).Ue(0);
    sps.Ue(choices.log2_max_pic_order_cnt_lsb_minus4);
    sps.U(1, 0).Ue(4).Ue(2).Ue(0);            // ordering information of the highest sub-layer
    sps.Ue(0).Ue(1).Ue(0).Ue(2).Ue(0).Ue(0);  // block sizes
    sps.U(1, 0).U(1, 0).U(1, 0).U(1, 0);      // no scaling lists, AMP, SAO, PCM
    sps.Append(choices.strps);
    sps.U(1, 0).U(1, 0).U(1, 0);
    return sps.U(1, choices.vui.size() > 0).Append(choices.vui).U(1, 0);
}

BitString Pps(unsigned int id, unsigned int sps_id, bool dependent_slice_segments) {
    BitString pps;
    pps.Ue(id).Ue(sps_id).U(1, dependent_slice_segments).U(1, 0).U(3, 0).U(1, 0).U(1, 0).Ue(0).Ue(0).Se(0);
    pps.U(1, 0).U(1, 0).U(1, 0).Se(0).Se(0).U(1, 0).U(1, 0).U(1, 0).U(1, 0).U(1, 0).U(1, 0);
    return pps.U(1, 0).U(1, 0).U(1, 0).U(1, 0).Ue(0).U(1, 0).U(1, 0);
}

BitString VpsWithTiming() {
    BitString vps;
    vps.U(4, 2).U(1, 1).U(1, 1).U(6, 0).U(3, 0).U(1, 1).U(16, 0xFFFF).Append(ProfileTierLevel());
    vps.U(1, 0).Ue(4).Ue(2).Ue(0).U(6, 0).Ue(0);
    return vps.U(1, 1).U(32, 1001).U(32, 30000);
}

NalUnit Unit(unsigned int nal_unit_type, BitString payload) {
    return UnitOf(test::NalUnit(static_cast<int>(nal_unit_type), payload.TrailingBits().Bytes()));
}

NalUnit UnitOf(const test::Bytes &bytes) {
    NalUnit unit;
    unit.size = bytes.size();
    unit.start_code_length = bytes[2] == 1 ? 3 : 4;
    unit.head = bytes;
    return unit;
}

test::Bytes Joined(const std::vector<test::Bytes> &units) {
    test::Bytes stream;
    for (const test::Bytes &unit : units)
        stream.insert(stream.end(), unit.begin(), unit.end());
    return stream;
}

std::vector<NalUnit> Units(const test::Bytes &stream) {
    std::vector<NalUnit> units;
    NalUnitCollector collector([](unsigned int) { return SIZE_MAX; },
                               [&units](const NalUnit &unit) { units.push_back(unit); });
    AnnexBScanner scanner(collector);
    scanner.Scan(stream);
    scanner.Finish();
    return units;
}

}  // namespace h265tool
