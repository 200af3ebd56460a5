#include "h265d/display/expected_display.h"
#include "h265d/display/sub_structures.h"
#include "support/samples.h"

namespace test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::IsSupersetOf;
using testing::Not;
using testing::SizeIs;

class VpsDisplay : public testing::Test {
 protected:
    VpsDisplay() : vps_(std::make_unique<vps_h265_t>()) {}

    void AddStart(unsigned char max_sub_layers_minus1) {
        expected_.Text("VPS structure:\n");
        expected_.Text("++++++++++++++++++\n");
        LINE(expected_, *vps_, vps_video_parameter_set_id, 15);
        LINE(expected_, *vps_, vps_base_layer_internal_flag, 1);
        LINE(expected_, *vps_, vps_base_layer_available_flag, 0);
        LINE(expected_, *vps_, vps_max_layers_minus1, 62);
        LINE(expected_, *vps_, vps_max_sub_layers_minus1, max_sub_layers_minus1);
        LINE(expected_, *vps_, vps_temporal_id_nesting_flag, 1);
        vps_->vps_reserved_0xffff_16bits = 0xFFFE;
        expected_.Text("vps_reserved_0xffff_16bits=65534");  // without a line end
        vps_->ptl.general_level_idc = 186;
        expected_.Append(Nested([&] { _display_profile_tier_level(&vps_->ptl, max_sub_layers_minus1); }));
    }

    void AddOrdering(int present) {
        LINE(expected_, *vps_, vps_sub_layer_ordering_info_present_flag, present);
        const int last = vps_->vps_max_sub_layers_minus1;
        for (int i = present ? 0 : last; i <= last; i++) {
            const bool kept = i < H265_VPS_SUB_LAYERS;
            if (kept) {
                vps_->vps_max_dec_pic_buffering_minus1[i] = static_cast<UINT64>(10 + i);
                vps_->vps_max_num_reorder_pics[i] = static_cast<UINT64>(20 + i);
                vps_->vps_max_latency_increase_plus1[i] = static_cast<UINT64>(30 + i);
            }
            const std::string at = "[" + std::to_string(i) + "]";
            expected_.Line("vps_max_dec_pic_buffering_minus1" + at, kept ? 10 + i : 0);
            expected_.Line("vps_max_num_reorder_pics" + at, kept ? 20 + i : 0);
            expected_.Text("vps_max_latency_increase_plus1" + at + "=" + std::to_string(kept ? 30 + i : 0) +
                           "\n");
        }
    }

    // Every third flag is set, as far as the record has them.
    void AddLayerSets(unsigned char max_layer_id, int num_layer_sets_minus1) {
        vps_->vps_max_layer_id = max_layer_id;
        vps_->vps_num_layers_sets_minus1 = static_cast<UINT64>(num_layer_sets_minus1);
        expected_.Text("vps_max_layer_id=" + std::to_string(max_layer_id) + "\n");
        expected_.Text("vps_num_layer_sets_minus1=" + std::to_string(num_layer_sets_minus1) + "\n");
        for (int i = 1; i <= num_layer_sets_minus1; i++) {
            for (int j = 0; j <= max_layer_id; j++) {
                int flag = 0;
                if (i < H265_VPS_LAYER_SETS && j < H265_VPS_LAYER_IDS)
                    flag = vps_->layer_id_included_flag[i][j] = (i + j) % 3 == 0;
                expected_.Line("layer_id_included_flag[" + std::to_string(i) + "][" + std::to_string(j) + "]",
                               flag);
            }
        }
    }

    void AddTiming(int poc_proportional, int hrds) {
        vps_->vps_timing_info_present_flag = 1;
        vps_->vps_num_units_in_tick = 1001;
        vps_->vps_time_scale = 4'294'967'295;
        vps_->vps_poc_proportional_to_timing_flag = poc_proportional;
        vps_->vps_num_ticks_poc_diff_one_minus1 = 4'294'967'295;
        vps_->vps_num_hrd_parameters = static_cast<UINT64>(hrds);
        expected_.Text("vps_timing_info_present_flag=1\n");
        expected_.Text("vps_num_units_in_tick=1001\n");
        expected_.Text("vps_time_scale=4294967295\n");
        expected_.Text("vps_poc_proportional_to_timing_flag=" + std::to_string(poc_proportional) + "\n");
        if (poc_proportional)
            expected_.Text("vps_num_ticks_poc_diff_one_minus1=-1\n");
        expected_.Text("vps_num_hrd_parameters=" + std::to_string(hrds) + "\n");
    }

    void AddHrds(int hrds) {
        for (int i = 0; i < hrds; i++) {
            vps_->hrd_layer_set_idx[i] = static_cast<UINT64>(40 + i);
            vps_->cprms_present_flag[i] = i != 1;
            vps_->vps_hrd_parameters[i].nal_hrd_parameters_present_flag = i % 2;
            vps_->vps_hrd_parameters[i].bit_rate_scale = static_cast<unsigned char>(i);
            const std::string at = "[" + std::to_string(i) + "]=";
            expected_.Text("hrd_layer_set_idx" + at + std::to_string(40 + i) + "\n");
            if (i > 0)
                expected_.Text("cprms_present_flag" + at + std::to_string(i != 1) + "\n");
            expected_.Append(Nested([&] {
                _display_hrd(&vps_->vps_hrd_parameters[i], i != 1, vps_->vps_max_sub_layers_minus1);
            }));
        }
    }

    void AddEnd(int extension) {
        vps_->vps_extenstion_flag = extension;
        expected_.Text("vps_extenstion_flag=" + std::to_string(extension) + "\n");
        expected_.Text("+++++++++++++++++++++++++++++\n");
    }

    void Expect() { ExpectDisplay(*vps_, H265Lib_Display_vps, expected_); }

    const std::unique_ptr<vps_h265_t> vps_;
    ExpectedDisplay expected_{"H265Lib_Display_vps", 5};
};

TEST_F(VpsDisplay, WithoutTiming) {
    AddStart(0);
    AddOrdering(1);
    AddLayerSets(0, 0);
    expected_.Text("vps_timing_info_present_flag=0\n");
    AddEnd(0);
    Expect();
}

TEST_F(VpsDisplay, EverythingOptional) {
    AddStart(5);
    AddOrdering(1);
    AddLayerSets(7, 5);
    AddTiming(1, 9);
    AddHrds(9);
    AddEnd(1);
    Expect();
}

TEST_F(VpsDisplay, OrderingOfTheHighestSubLayerAlone) {
    AddStart(2);
    AddOrdering(0);
    AddLayerSets(1, 1);
    AddTiming(0, 1);
    AddHrds(1);
    AddEnd(0);
    Expect();
}

TEST_F(VpsDisplay, SubLayersAndLayerSetsBeyondTheRecordAreZeros) {
    AddStart(7);
    AddOrdering(1);
    AddLayerSets(9, 8);
    AddTiming(0, 0);
    AddEnd(0);
    Expect();
}

TEST_F(VpsDisplay, TheFirstHrdDependsOnTheRecord) {
    vps_->vps_timing_info_present_flag = 1;
    vps_->vps_num_hrd_parameters = 1;
    const std::string common = "nal_hrd_parameters_present_flag=0.\n";
    EXPECT_THAT(DisplayedTexts(6, [this] { H265Lib_Display_vps(vps_.get()); }), Not(Contains(common)));
    vps_->cprms_present_flag[0] = 1;
    EXPECT_THAT(DisplayedTexts(6, [this] { H265Lib_Display_vps(vps_.get()); }), Contains(common));
}

TEST_F(VpsDisplay, LayerIdsAboveSevenRaiseAnAssertion) {
    vps_->vps_max_layer_id = 9;
    vps_->vps_num_layers_sets_minus1 = 1;
    const TraceCapture trace(5);
    H265Lib_Display_vps(vps_.get());
    EXPECT_THAT(trace.Assertions(),
                AllOf(SizeIs(2), Each(AssertionOf("j < MAX_VPS_NUM_LAYER_SETS_MINUS1_VALUE"))));
    EXPECT_THAT(trace.Texts(5),
                IsSupersetOf({"layer_id_included_flag[1][8]=0.\n", "layer_id_included_flag[1][9]=0.\n"}));
}

TEST_F(VpsDisplay, AnyRecordStaysWithinItsArrays) {
    for (const int byte : {0xFF, 0xA5}) {
        const size_t layer_ids = static_cast<size_t>(byte) + 1;
        const size_t count = MessagesOfFilledRecord<vps_h265_t>(byte, H265Lib_Display_vps);
        EXPECT_GT(count, 1023 * (2 * layer_ids - 8));  // above 7 with an assertion
        EXPECT_LT(count, 1023 * (2 * layer_ids - 8) + 50'000);
    }
}

TEST_F(VpsDisplay, NullIsReported) {
    ExpectNullIsReported("vps != NULL", [] { H265Lib_Display_vps(nullptr); });
}

TEST_F(VpsDisplay, OfAStream) {
    const std::vector<Bytes> nal_units = SampleNalUnits("temporal-layers.hevc", 32);
    ASSERT_FALSE(nal_units.empty());
    vps_->cprms_present_flag[0] = 1;
    ASSERT_EQ(H265Lib_Parse_vps_nal(nal_units.front().data(), nal_units.front().size(), vps_.get()), TRUE);
    const auto texts = DisplayedTexts(6, [this] { H265Lib_Display_vps(vps_.get()); });
    EXPECT_THAT(texts, IsSupersetOf({"vps_max_sub_layers_minus1=1.\n", "vps_reserved_0xffff_16bits=65535",
                                     "general_profile_idc=1.\n", "sub_layer_level_present_flag[0]=0.\n",
                                     "vps_timing_info_present_flag=0\n"}));
}

}  // namespace
}  // namespace test
