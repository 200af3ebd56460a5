#include "entry_points/parsed_records.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/nested_syntax.h"
#include "support/samples.h"
#include "support/sps_syntax.h"

namespace test {
namespace {

enum NalUnitType : int { VPS_NUT = 32, SPS_NUT = 33, PPS_NUT = 34, PREFIX_SEI_NUT = 39 };

// Three sub-layers, layer sets, two HRDs of which the second leans on the first, an extension.
Bytes BuiltVps() {
    constexpr int kSubLayersMinus1 = 2;
    const auto record = std::make_unique<vps_h265_t>();
    Syntax ptl, with_common_part, without;
    AddProfileTierLevel(&ptl, &record->ptl, kSubLayersMinus1);
    AddHrd(&with_common_part, nullptr, true, true, kSubLayersMinus1);
    AddHrd(&without, nullptr, false, false, kSubLayersMinus1);

    BitString bits;
    bits.U(4, 3).U(2, 3).U(6, 1).U(3, kSubLayersMinus1).U(1, 1).U(16, 0xFFFF).Append(ptl.bits());
    bits.U(1, 1);  // vps_sub_layer_ordering_info_present_flag
    for (uint64_t i = 0; i <= kSubLayersMinus1; i++)
        bits.Ue(4 + i).Ue(i).Ue(0);
    bits.U(6, 3).Ue(1).U(4, 0b1010);                      // layer sets
    bits.U(1, 1).U(32, 1001).U(32, 60000).U(1, 1).Ue(0);  // timing
    bits.Ue(2).Ue(0).Append(with_common_part.bits()).Ue(1).U(1, 0).Append(without.bits());
    bits.U(1, 1).U(5, 0b10110).TrailingBits();
    return NalUnit(VPS_NUT, bits.Bytes());
}

// Tiles of explicit sizes, deblocking offsets, a few scaling lists, an extension of unknown syntax.
Bytes BuiltPps() {
    BitString bits;
    bits.Ue(1).Ue(2).U(1, 1).U(1, 1).U(3, 2).U(2, 0b10).Ue(3).Ue(1).Se(-5);
    bits.U(2, 0b10).U(1, 1).Ue(2).Se(3).Se(-3).U(6, 0b111010);
    bits.Ue(2).Ue(1).U(1, 0).Ue(5).Ue(6).Ue(7).U(1, 1);  // tiles
    bits.U(1, 1).U(3, 0b110).Se(-2).Se(4);               // loop filters
    bits.U(1, 1);                                        // pps_scaling_list_data_present_flag
    for (int list = 0; list < 6 + 6 + 6 + 2; list++) {
        const bool coded = list == 1 || list == 13;
        bits.U(1, coded);
        if (!coded) {
            bits.Ue(0);
            continue;
        }
        if (list == 13)
            bits.Se(4);  // the DC coefficient
        for (int i = 0; i < (list == 1 ? 16 : 64); i++)
            bits.Se(i % 5 - 2);
    }
    bits.U(1, 1).Ue(1).U(1, 1);
    bits.U(1, 1).U(4, 0).U(4, 9).U(7, 0b1100101).TrailingBits();
    return NalUnit(PPS_NUT, bits.Bytes());
}

Bytes FirstPicTiming() {
    for (const Bytes &nal : SampleNalUnits("interlaced-field-hrd.hevc", PREFIX_SEI_NUT)) {
        if (nal[5] == 1)
            return nal;
    }
    ADD_FAILURE() << "no picture timing in the stream of fields";
    return {};
}

template <typename Record, typename Parse>
std::shared_ptr<Record> Parsed(Fill fill, const Bytes &nal, Parse parse) {
    const auto record = Filled<Record>(fill);
    Prepare(record.get());
    EXPECT_EQ(parse(nal, record.get()), TRUE);
    return record;
}

// The displays print 43 bits of it, be they of a profile that sets fewer bytes.
void PrepareProfileTierLevel(profile_tier_level_t *ptl) {
    ptl->u_general.reserved_zero_43bits = 0;
    for (in_profile_tier_level_t &sub_layer : ptl->u_sub_layer)
        sub_layer.reserved_zero_43bits = 0;
}

void PrepareHrd(hrd_h265_t *hrd) {
    std::fill_n(hrd->low_delay_hrd_flag, H265_HRD_SUB_LAYERS, 0);
    hrd->nal_hrd_parameters_present_flag = 0;
    hrd->vcl_hrd_parameters_present_flag = 0;
}

}  // namespace

const Bytes &VpsNal() {
    static const Bytes nal = BuiltVps();
    return nal;
}

const Bytes &SpsNal() {
    static const Bytes nal = SampleNalUnits("units/sps-heavy.nal").at(0);
    return nal;
}

const Bytes &PpsNal() {
    static const Bytes nal = BuiltPps();
    return nal;
}

const Bytes &FieldSpsNal() {
    static const Bytes nal = SampleNalUnits("interlaced-field-hrd.hevc", SPS_NUT).at(0);
    return nal;
}

const Bytes &FieldPicTimingNal() {
    static const Bytes nal = FirstPicTiming();
    return nal;
}

void Prepare(vps_h265_t *vps) {
    PrepareProfileTierLevel(&vps->ptl);
    vps->cprms_present_flag[0] = 1;
    for (hrd_h265_t &hrd : vps->vps_hrd_parameters)
        PrepareHrd(&hrd);
}

void Prepare(sps_h265_t *sps) {
    PrepareProfileTierLevel(&sps->ptl);
    SpsSyntax::Prepare(sps);
    sps->separate_colour_plane_flag = 0;  // coded for 4:4:4 alone, and looked at by slice headers
}

void Prepare(pps_h265_t *pps) {
    pps->pps_range_extension_flag = 0;
    pps->pps_multilayer_extension_flag = 0;
    pps->pps_3d_extension_flag = 0;
    pps->pps_scc_extension_flag = 0;
    pps->pps_extension_4bits = 0;
}

std::shared_ptr<vps_h265_t> ParsedVps(Fill fill, const Bytes &nal) {
    return Parsed<vps_h265_t>(fill, nal, [](const Bytes &bytes, vps_h265_t *vps) {
        return H265Lib_Parse_vps_nal(bytes.data(), bytes.size(), vps);
    });
}

std::shared_ptr<sps_h265_t> ParsedSpsRecord(Fill fill, const Bytes &nal) {
    return Parsed<sps_h265_t>(fill, nal, [](const Bytes &bytes, sps_h265_t *sps) {
        return H265Lib_Parse_sps_nal(bytes.data(), bytes.size(), sps);
    });
}

std::shared_ptr<pps_h265_t> ParsedPps(Fill fill, const Bytes &nal) {
    return Parsed<pps_h265_t>(fill, nal, [](const Bytes &bytes, pps_h265_t *pps) {
        return H265Lib_Parse_pps_nal(bytes.data(), static_cast<int>(bytes.size()), pps);
    });
}

}  // namespace test
