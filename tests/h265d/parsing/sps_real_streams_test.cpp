// Video and sequence parameter sets of an independent encoder.

#include <gmock/gmock.h>

#include <memory>

#include "h265d/parsing/sps.h"
#include "h265d/parsing/vps.h"
#include "support/bit_string.h"
#include "support/samples.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::IsEmpty;

constexpr int kVpsNut = 32;
constexpr int kSpsNut = 33;

// What is known of the first SPS of a stream.
struct Stream {
    const char *name;
    UINT64 width;
    UINT64 height;
    UINT64 units_in_tick = 1;
    UINT64 time_scale = 25;
    UINT64 chroma_format_idc = 1;
    UINT64 bit_depth = 8;
    int profile_idc = 1;
    int max_sub_layers = 1;
    UINT64 log2_min_coding_block = 3;
    UINT64 log2_ctb = 6;
};

void PrintTo(const Stream &stream, std::ostream *out) {
    *out << stream.name;
}

const Stream kStreams[] = {
    {.name = "progressive-hrd-vui", .width = 208, .height = 120},
    {.name = "interlaced-field-hrd", .width = 208, .height = 120, .units_in_tick = 1001, .time_scale = 60000},
    {.name = "vui-extended-sar", .width = 160, .height = 96},
    {.name = "hdr10", .width = 208, .height = 120, .time_scale = 50, .bit_depth = 10, .profile_idc = 2},
    {.name = "10bit-422",
     .width = 160,
     .height = 96,
     .chroma_format_idc = 2,
     .bit_depth = 10,
     .profile_idc = 4},
    {.name = "monochrome-400", .width = 160, .height = 96, .chroma_format_idc = 0, .profile_idc = 4},
    {.name = "444-8bit", .width = 160, .height = 96, .chroma_format_idc = 3, .profile_idc = 4},
    {.name = "444-12bit",
     .width = 160,
     .height = 96,
     .chroma_format_idc = 3,
     .bit_depth = 12,
     .profile_idc = 4},
    {.name = "slices", .width = 208, .height = 112, .log2_ctb = 4},
    {.name = "slices-pow2", .width = 256, .height = 128, .log2_ctb = 4},
    {.name = "temporal-layers",
     .width = 160,
     .height = 96,
     .units_in_tick = 1001,
     .time_scale = 30000,
     .max_sub_layers = 2},
    {.name = "long-references", .width = 160, .height = 96, .units_in_tick = 1001, .time_scale = 30000},
    {.name = "repeated-headers", .width = 208, .height = 120},
    {.name = "scaling-lists", .width = 208, .height = 120},
    {.name = "weighted-prediction", .width = 160, .height = 96},
    {.name = "coding-tools", .width = 208, .height = 120},
    {.name = "hash-sei", .width = 160, .height = 96, .log2_min_coding_block = 4, .log2_ctb = 5},
    {.name = "captions-a53", .width = 208, .height = 120, .units_in_tick = 1001, .time_scale = 30000},
};

// Whether nothing but rbsp_trailing_bits( ) is left.
bool IsAtTrailingBits(bitbuffer_t bb) {
    int bit = 0;
    if (GetNextBitEx(&bb, &bit) == -1 || bit != 1 || bb.num_bits - bb.bit_offset > 7)
        return false;
    while (GetNextBitEx(&bb, &bit) == 0) {
        if (bit != 0)
            return false;
    }
    return true;
}

// Parses a NAL unit with the reader of its syntax; whether all of it was understood.
template <typename Record>
bool IsReadToTheEnd(const Bytes &nal, int (*parse)(bitbuffer_t *, Record *), Record *record) {
    Bytes sodb(nal.size());
    const int length =
        H265Lib_SODB_deencapsulation_from_NAL(nal.data() + 3, static_cast<unsigned int>(nal.size() - 3),
                                              sodb.data(), static_cast<unsigned int>(sodb.size()));
    bitbuffer_t bb{sodb.data(), 0, static_cast<unsigned int>(length) * 8};
    return parse(&bb, record) == 0 && IsAtTrailingBits(bb);
}

class RealStreams : public testing::Test {
 protected:
    void ParseSps(const Bytes &nal) {
        const TraceCapture trace(4);
        EXPECT_TRUE(IsReadToTheEnd(nal, _parse_sps, &sps()));
        EXPECT_EQ(H265Lib_Parse_sps_nal(nal.data(), nal.size(), &sps()), TRUE);
        EXPECT_THAT(trace.messages(), IsEmpty());
    }

    void ParseVps(const Bytes &nal) {
        const TraceCapture trace(4);
        vps().cprms_present_flag[0] = 1;
        EXPECT_TRUE(IsReadToTheEnd(nal, _parse_vps, &vps()));
        EXPECT_EQ(H265Lib_Parse_vps_nal(nal.data(), nal.size(), &vps()), TRUE);
        EXPECT_THAT(trace.messages(), IsEmpty());
    }

    void ParseFirstSps(const std::string &file) {
        const std::vector<Bytes> nal_units = SampleNalUnits(file, kSpsNut);
        ASSERT_FALSE(nal_units.empty());
        ParseSps(nal_units.front());
    }

    vps_h265_t &vps() { return *vps_; }
    sps_h265_t &sps() { return *sps_; }

 private:
    const std::unique_ptr<vps_h265_t> vps_ = std::make_unique<vps_h265_t>();
    const std::unique_ptr<sps_h265_t> sps_ = std::make_unique<sps_h265_t>();
};

class RealStream : public RealStreams, public testing::WithParamInterface<Stream> {
 protected:
    static std::string File() { return std::string(GetParam().name) + ".hevc"; }
};

TEST_P(RealStream, ItsSpsIsReadToTheEnd) {
    ParseFirstSps(File());
    const Stream &stream = GetParam();
    EXPECT_EQ(sps().pic_width_in_luma_samples, stream.width);
    EXPECT_EQ(sps().pic_height_in_luma_samples, stream.height);
    EXPECT_EQ(sps().chroma_format_idc, stream.chroma_format_idc);
    EXPECT_EQ(sps().bit_depth_luma_minus8 + 8, stream.bit_depth);
    EXPECT_EQ(sps().bit_depth_chroma_minus8 + 8, stream.bit_depth);
    EXPECT_EQ(sps().ptl.general_profile_idc, stream.profile_idc);
    EXPECT_EQ(sps().sps_max_sub_layers_minus1 + 1, stream.max_sub_layers);
    EXPECT_EQ(sps().log2_min_luma_coding_block_size_minus3 + 3, stream.log2_min_coding_block);
    EXPECT_EQ(sps().log2_diff_max_min_luma_coding_block_size + stream.log2_min_coding_block, stream.log2_ctb);
    EXPECT_EQ(sps().num_short_term_ref_pics_sets, 0u);
    EXPECT_EQ(sps().long_term_ref_pics_present_flag, 0);
    EXPECT_EQ(sps().vui_parameters_present_flag, 1);
    EXPECT_EQ(sps().vui.vui_num_units_in_tick, stream.units_in_tick);
    EXPECT_EQ(sps().vui.vui_time_scale, stream.time_scale);
    EXPECT_EQ(sps().sps_extension_present_flag, 0);
}

TEST_P(RealStream, ItsVpsIsReadToTheEnd) {
    const std::vector<Bytes> nal_units = SampleNalUnits(File(), kVpsNut);
    ASSERT_FALSE(nal_units.empty());
    ParseVps(nal_units.front());
    EXPECT_EQ(vps().vps_reserved_0xffff_16bits, 0xFFFF);
    EXPECT_EQ(vps().vps_max_sub_layers_minus1 + 1, GetParam().max_sub_layers);
    EXPECT_EQ(vps().ptl.general_profile_idc, GetParam().profile_idc);
    EXPECT_EQ(vps().ptl.general_scantype_bitoffset, 72);
}

TEST_P(RealStream, ItsParameterSetsAgreeAllTheWay) {
    for (const Bytes &nal : SampleNalUnits(File())) {
        if (nal[3] >> 1 == kVpsNut)
            ParseVps(nal);
        if (nal[3] >> 1 != kSpsNut)
            continue;
        ParseSps(nal);
        EXPECT_EQ(sps().sps_video_parameter_set_id, vps().vps_video_parameter_set_id);
        EXPECT_EQ(sps().sps_max_sub_layers_minus1, vps().vps_max_sub_layers_minus1);
        EXPECT_EQ(sps().ptl.general_level_idc, vps().ptl.general_level_idc);
        EXPECT_EQ(sps().ptl.general_progressive_source_flag, vps().ptl.general_progressive_source_flag);
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, RealStream, testing::ValuesIn(kStreams),
                         [](const testing::TestParamInfo<Stream> &stream) {
                             std::string name = stream.param.name;
                             std::erase(name, '-');
                             return name;
                         });

TEST_F(RealStreams, FieldsAndHrd) {
    ParseFirstSps("interlaced-field-hrd.hevc");
    EXPECT_EQ(sps().ptl.general_progressive_source_flag, 0);
    EXPECT_EQ(sps().ptl.general_interlaced_source_flag, 1);
    EXPECT_EQ(sps().vui.field_seq_flag, 1);
    EXPECT_EQ(sps().vui.frame_field_info_present_flag, 1);
    EXPECT_EQ(sps().vui.vui_hrd_parameters_present_flag, 1);
    EXPECT_EQ(sps().vui.CpbDpbDelaysPresentFlag, 1);
    EXPECT_EQ(sps().vui.nal_hrd.nal_hrd_parameters_present_flag, 1);
    EXPECT_EQ(sps().vui.nal_hrd.au_cpb_removal_delay_length_minus1, 7);

    ParseFirstSps("progressive-hrd-vui.hevc");
    EXPECT_EQ(sps().ptl.general_progressive_source_flag, 1);
    EXPECT_EQ(sps().vui.field_seq_flag, 0);
    EXPECT_EQ(sps().vui.nal_hrd.au_cpb_removal_delay_length_minus1, 6);
    EXPECT_EQ(sps().vui.aspect_ratio_idc, IH265ENC_ASPECTRATIO_SQUARE);
    EXPECT_EQ(sps().vui.colour_primaries, 1);
    EXPECT_EQ(sps().vui.chroma_loc_info_present_flag, 1);
}

TEST_F(RealStreams, ExtendedSarAndWindows) {
    ParseFirstSps("vui-extended-sar.hevc");
    EXPECT_EQ(sps().conformance_window_flag, 1);
    EXPECT_EQ(sps().conf_win_left_offset, 0u);
    EXPECT_EQ(sps().conf_win_right_offset, 1u);  // 160 - 2 * 1 = 158
    EXPECT_EQ(sps().conf_win_top_offset, 0u);
    EXPECT_EQ(sps().conf_win_bottom_offset, 3u);  // 96 - 2 * 3 = 90
    EXPECT_EQ(sps().vui.aspect_ratio_idc, IH265ENC_ASPECTRATIO_EXTENDED);
    EXPECT_EQ(sps().vui.sar_width, 123);
    EXPECT_EQ(sps().vui.sar_height, 457);
    EXPECT_EQ(sps().vui.overscan_info_present_flag, 1);
    EXPECT_EQ(sps().vui.video_format, 1);
    EXPECT_EQ(sps().vui.video_full_range_flag, 1);
    EXPECT_EQ(sps().vui.chroma_sample_loc_type_top_field, 2u);
    EXPECT_EQ(sps().vui.def_disp_win_left_offset, 2u);
    EXPECT_EQ(sps().vui.def_disp_win_right_offset, 6u);
    EXPECT_EQ(sps().vui.def_disp_win_top_offset, 4u);
    EXPECT_EQ(sps().vui.def_disp_win_bottom_offset, 8u);
}

TEST_F(RealStreams, HighDynamicRange) {
    ParseFirstSps("hdr10.hevc");
    EXPECT_EQ(sps().vui.colour_primaries, 9);
    EXPECT_EQ(sps().vui.transfer_characteristics, 16);
    EXPECT_EQ(sps().vui.matrix_coeffs, 9);
    EXPECT_EQ(sps().vui.vui_hrd_parameters_present_flag, 0);
    EXPECT_EQ(sps().vui.nal_hrd.au_cpb_removal_delay_length_minus1, 23);
}

// The sample's script gives coefficient k of the list of a matrix, in raster order, the value
// 16 + (k * (matrixId + 1) + size) % 37, and the DC coefficient the value 16 + matrixId.
TEST_F(RealStreams, ScalingLists) {
    ParseFirstSps("scaling-lists.hevc");
    EXPECT_EQ(sps().sps_scaling_list_data_present_flag, 1);
    const scaling_list_data_t &lists = sps().scaling_list;
    for (int sizeId = 0; sizeId < 4; sizeId++) {
        for (int matrixId = 0; matrixId < 6; matrixId += sizeId == 3 ? 3 : 1) {
            ASSERT_EQ(lists.scaling_list_pred_mode_flag[sizeId][matrixId], 1);
            const int size = 4 << sizeId;
            const int side = sizeId == 0 ? 4 : 8;
            int i = 0;
            for (int diagonal = 0; diagonal < 2 * side - 1; diagonal++) {  // up-right, clause 6.5.3
                for (int x = 0; x <= diagonal; x++) {
                    const int y = diagonal - x;
                    if (x >= side || y >= side)
                        continue;
                    EXPECT_EQ(lists.ScalingList[sizeId][matrixId][i++],
                              16 + ((y * side + x) * (matrixId + 1) + size) % 37)
                        << sizeId << " " << matrixId << " " << x << "," << y;
                }
            }
            if (sizeId > 1) {
                EXPECT_EQ(lists.scaling_list_dc_coef_minus8[sizeId - 2][matrixId], 8 + matrixId);
            }
        }
    }
}

TEST_F(RealStreams, RepeatedHeadersChangeInTheMiddle) {
    std::vector<UINT64> minimum_sizes;
    for (const Bytes &nal : SampleNalUnits("repeated-headers.hevc", kSpsNut)) {
        ParseSps(nal);
        minimum_sizes.push_back(sps().log2_min_luma_coding_block_size_minus3 + 3);
    }
    EXPECT_THAT(minimum_sizes, testing::ElementsAre(3, 3, 3, 4, 4));
}

TEST_F(RealStreams, AHeavySps) {
    ParseFirstSps("units/sps-heavy.nal");
    EXPECT_EQ(sps().pic_width_in_luma_samples, 1920u);
    EXPECT_EQ(sps().pic_height_in_luma_samples, 1088u);
    EXPECT_EQ(sps().conformance_window_flag, 1);
    EXPECT_EQ(sps().conf_win_bottom_offset, 4u);
    EXPECT_EQ(sps().sps_scaling_list_data_present_flag, 1);
    EXPECT_EQ(sps().num_short_term_ref_pics_sets, 32u);
    int predicted = 0;
    for (int i = 1; i < 32; i++)
        predicted += sps().strps[i].inter_ref_pic_set_prediction_flag;
    EXPECT_GT(predicted, 0);
    EXPECT_LT(predicted, 31);
    EXPECT_EQ(sps().long_term_ref_pics_present_flag, 1);
    EXPECT_GT(sps().num_long_term_ref_pics_sps, 0u);
    EXPECT_EQ(sps().vui.vui_hrd_parameters_present_flag, 1);
    EXPECT_EQ(sps().vui.CpbDpbDelaysPresentFlag, 1);
}

}  // namespace
}  // namespace test
