// Of a slice segment NAL unit, no more is looked at than its header can take, unless a trace tells the
// length.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "h265.h"
#include "support/bit_string.h"
#include "support/nal_unit.h"
#include "support/trace_capture.h"

namespace test {
namespace {

constexpr int kCra = 21;

// No header is longer. Nearly all of its bits are zeros, and most pairs of zero bytes need emulation
// prevention.
TEST(SliceHeaderPrefix, HoldsTheLongestHeader) {
    const auto sps = std::make_unique<sps_h265_t>();
    const auto pps = std::make_unique<pps_h265_t>();
    sps->pic_width_in_luma_samples = 1 << 19;  // addresses of 32 bits
    sps->pic_height_in_luma_samples = 1 << 18;
    sps->separate_colour_plane_flag = 1;
    sps->log2_max_pic_order_cnt_lsb_minus4 = 28;
    pps->dependent_slice_segments_enabled_flag = 1;
    pps->output_flag_present_flag = 1;
    pps->num_extra_slice_header_bits = 32;
    BitString bits;
    bits.U(2, 0).Ue(UINT32_MAX).U(1, 0).U(64, 0).Ue(UINT32_MAX).U(3, 0).U(32, 3);
    ASSERT_EQ(bits.size(), 232u);

    for (const size_t slice_data : {0u, 1u, 100u}) {
        Bytes rbsp = bits.Bytes();
        rbsp.resize(rbsp.size() + slice_data);
        rbsp.push_back(0x80);
        const Bytes nal = NalUnit(kCra, rbsp);
        ASSERT_GE(nal.size(), 4 + 2 + rbsp.size() + 11);
        for (const int level : {3, 7}) {
            SCOPED_TRACE(testing::Message() << slice_data << " bytes behind, level " << level);
            const TraceCapture trace(level);
            ssh_h265_t ssh;
            std::memset(&ssh, 0x5A, sizeof ssh);
            ASSERT_TRUE(H265Lib_Parse_slice_header_nal(nal.data(), static_cast<int>(nal.size()), sps.get(),
                                                       pps.get(), &ssh));
            EXPECT_EQ(ssh.slice_pic_parameter_set_id, UINT32_MAX);
            EXPECT_EQ(ssh.slice_segment_address, 0u);
            EXPECT_EQ(ssh.slice_type, UINT32_MAX);
            EXPECT_EQ(ssh.pic_output_flag, 0);
            EXPECT_EQ(ssh.colour_plane_id, 0u);
            EXPECT_EQ(ssh.slice_pic_order_cnt_lsb, 3u);
        }
    }
}

}  // namespace
}  // namespace test
