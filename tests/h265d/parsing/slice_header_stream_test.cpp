// Slice segment headers of the sample streams, with the parameter sets that are active for them.

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <set>

#include "h265.h"
#include "support/samples.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::IsEmpty;
using testing::Le;
using testing::Matcher;

struct ParsedSlice {
    int nal_unit_type;
    ssh_h265_t header;
    UINT64 pic_size_in_ctbs;
};

class SliceHeaderOfStream : public testing::Test {
 protected:
    // Parses all slice headers of a sample with the sets that are active for them.
    void Read(const std::string &sample, bool one_ctb_less = false) {
        slices_.clear();
        for (const Bytes &nal : SampleNalUnits(sample + ".hevc")) {
            const int nal_unit_type = nal[3] >> 1;
            if (nal_unit_type == 33)
                AddSps(nal);
            else if (nal_unit_type == 34)
                AddPps(nal);
            else if (nal_unit_type < 32)
                AddSlice(nal, nal_unit_type, one_ctb_less);
        }
    }

    void AddSps(const Bytes &nal) {
        auto sps = std::make_unique<sps_h265_t>();
        ASSERT_TRUE(H265Lib_Parse_sps_nal(nal.data(), nal.size(), sps.get()));
        const UINT64 id = sps->seq_parameter_set_id;
        sps_[id] = std::move(sps);
    }

    void AddPps(const Bytes &nal) {
        auto pps = std::make_unique<pps_h265_t>();
        ASSERT_TRUE(H265Lib_Parse_pps_nal(nal.data(), static_cast<int>(nal.size()), pps.get()));
        const UINT64 id = pps->pps_pic_parameter_set_id;
        pps_[id] = std::move(pps);
    }

    static UINT64 PicSizeInCtbs(const sps_h265_t &sps, UINT64 ctb_size) {
        return ((sps.pic_width_in_luma_samples + ctb_size - 1) / ctb_size) *
               ((sps.pic_height_in_luma_samples + ctb_size - 1) / ctb_size);
    }

    void AddSlice(const Bytes &nal, int nal_unit_type, bool one_ctb_less) {
        const pps_h265_t &pps = *pps_.at(PpsId(nal));
        auto sps = std::make_unique<sps_h265_t>(*sps_.at(pps.pps_seq_parameter_set_id));
        const UINT64 ctb_size = UINT64{8} << (sps->log2_min_luma_coding_block_size_minus3 +
                                              sps->log2_diff_max_min_luma_coding_block_size);
        ParsedSlice slice{nal_unit_type, {}, PicSizeInCtbs(*sps, ctb_size)};
        if (one_ctb_less) {
            sps->pic_width_in_luma_samples = (slice.pic_size_in_ctbs - 1) * ctb_size;
            sps->pic_height_in_luma_samples = ctb_size;
        }
        const TraceCapture trace(3);
        EXPECT_TRUE(H265Lib_Parse_slice_header_nal(nal.data(), static_cast<int>(nal.size()), sps.get(), &pps,
                                                   &slice.header));
        EXPECT_THAT(trace.messages(), IsEmpty());
        slices_.push_back(slice);
    }

    // slice_pic_parameter_set_id, which is read whatever the parameter sets say.
    static UINT64 PpsId(const Bytes &nal) {
        const auto no_sps = std::make_unique<sps_h265_t>();
        const auto no_pps = std::make_unique<pps_h265_t>();
        ssh_h265_t header{};
        const TraceCapture trace(3);  // of a failure behind it
        H265Lib_Parse_slice_header_nal(nal.data(), static_cast<int>(nal.size()), no_sps.get(), no_pps.get(),
                                       &header);
        return header.slice_pic_parameter_set_id;
    }

    // The addresses, picture by picture; that of a first segment is 0.
    std::vector<std::vector<UINT64>> Addresses() const {
        std::vector<std::vector<UINT64>> pictures;
        for (const ParsedSlice &slice : slices_) {
            if (slice.header.first_slice_segment_in_pic_flag)
                pictures.push_back({});
            pictures.back().push_back(slice.header.slice_segment_address);
        }
        return pictures;
    }

    // What holds in any stream, if the header was read at the right bits.
    void ExpectSound() const {
        std::set<UINT64> pic_order_cnts;  // since the last IRAP picture
        UINT64 current = 0;
        for (const ParsedSlice &slice : slices_) {
            const ssh_h265_t &header = slice.header;
            const bool irap = slice.nal_unit_type >= 16;
            EXPECT_THAT(header.slice_type, irap ? Matcher<UINT64>(2) : Matcher<UINT64>(Le(2u)));
            EXPECT_LT(header.slice_segment_address, slice.pic_size_in_ctbs);
            EXPECT_EQ(header.pic_output_flag, 1);
            EXPECT_EQ(header.dependent_slice_segment_flag, 0);
            if (!header.first_slice_segment_in_pic_flag) {
                EXPECT_EQ(header.slice_pic_order_cnt_lsb, current);
                continue;
            }
            if (irap)
                pic_order_cnts.clear();
            current = header.slice_pic_order_cnt_lsb;
            EXPECT_TRUE(pic_order_cnts.insert(current).second)
                << "picture order count " << current << " twice";
        }
    }

    std::map<UINT64, std::unique_ptr<sps_h265_t>> sps_;
    std::map<UINT64, std::unique_ptr<pps_h265_t>> pps_;
    std::vector<ParsedSlice> slices_;
};

using Picture = std::vector<UINT64>;

TEST_F(SliceHeaderOfStream, OneSlicePerPicture) {
    const std::map<std::string, size_t> pictures = {
        {"temporal-layers", 40}, {"repeated-headers", 24}, {"interlaced-field-hrd", 16}};
    for (const auto &[sample, count] : pictures) {
        SCOPED_TRACE(sample);
        Read(sample);
        ExpectSound();
        EXPECT_EQ(Addresses(), std::vector<Picture>(count, {0}));
    }
}

TEST_F(SliceHeaderOfStream, ThreeSlicesPerPicture) {
    Read("slices");
    ExpectSound();
    EXPECT_EQ(Addresses(), std::vector<Picture>(6, {0, 26, 52}));
}

TEST_F(SliceHeaderOfStream, APowerOfTwoNeedsAnSpsWithOneCtbLess) {
    Read("slices-pow2", true);
    ExpectSound();
    EXPECT_EQ(Addresses(), std::vector<Picture>(6, {0, 32, 64, 96}));
}

TEST_F(SliceHeaderOfStream, APowerOfTwoTakesOneBitOfTheSliceTypeIntoTheAddress) {
    Read("slices-pow2", true);
    const std::vector<ParsedSlice> standard = slices_;
    Read("slices-pow2");
    ASSERT_EQ(slices_.size(), 24u);
    for (size_t i = 0; i < slices_.size(); i++) {
        const ssh_h265_t &as_coded = standard[i].header;
        const bool first = as_coded.first_slice_segment_in_pic_flag;
        EXPECT_EQ(slices_[i].header.first_slice_segment_in_pic_flag, first);
        // slice_type, 1 or 01x, follows the seven bits
        const UINT64 with_one_bit_more = as_coded.slice_segment_address * 2 + (as_coded.slice_type == 0);
        EXPECT_EQ(slices_[i].header.slice_segment_address, first ? 0 : with_one_bit_more);
    }
}

}  // namespace
}  // namespace test
