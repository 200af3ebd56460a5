#include "h265d/parsing/slice_header.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <iterator>
#include <map>
#include <memory>

#include "support/interposed.h"
#include "support/nal_unit.h"
#include "support/silence.h"
#include "support/syntax.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Le;

constexpr char kFailed[] = "Failed to parse slice header NAL!\n";

constexpr int kTrail = 1;
constexpr int kIdr = 19;
constexpr int kCra = 21;

std::string Unreadable(const std::string &element) {
    return "failed to get " + element + ".\n";
}

std::string Formatted(const char *format, const void *pointer) {
    char text[120];
    std::snprintf(text, sizeof text, format, pointer);
    return text;
}

// An element's field, and what is reported when it cannot be read.
#define ELEMENT(name) &ssh_.name, Unreadable(#name)

// A field that the reader sets whether or not its element is there: its value when so many bits are read.
template <typename Field>
class History {
 public:
    void Set(size_t length, Field value) { values_[length] = value; }
    Field At(size_t length) const {
        const auto next = values_.upper_bound(length);
        return next == values_.begin() ? PrefilledValue<Field>() : std::prev(next)->second;
    }

 private:
    std::map<size_t, Field> values_;
};

// What a slice segment header of a test is, besides what the parameter sets say.
struct Slice {
    int nal_unit_type = kTrail;
    int first = 1;
    int dependent = 0;
};

class SliceHeader : public testing::Test {
 protected:
    SliceHeader() : sps_(std::make_unique<sps_h265_t>()), pps_(std::make_unique<pps_h265_t>()) {
        SetPicture(1920, 1080, 0, 3);
        sps_->log2_max_pic_order_cnt_lsb_minus4 = 4;
    }

    void SetPicture(UINT64 width, UINT64 height, UINT64 log2_min_minus3, UINT64 log2_diff) {
        sps_->pic_width_in_luma_samples = width;
        sps_->pic_height_in_luma_samples = height;
        sps_->log2_min_luma_coding_block_size_minus3 = log2_min_minus3;
        sps_->log2_diff_max_min_luma_coding_block_size = log2_diff;
    }

    size_t Length() const { return syntax_.bits().size(); }

    // Writes the header that the parameter sets ask for; the address has 9 bits, as 510 CTBs want.
    void Build(const Slice &slice, unsigned int address_bits = 9, uint64_t address = 300) {
        syntax_ = {};
        dependent_flag_ = output_flag_ = {};
        pic_order_cnt_lsb_ = {};
        syntax_.Flag(slice.first, ELEMENT(first_slice_segment_in_pic_flag));
        if (slice.nal_unit_type >= 16 && slice.nal_unit_type <= 23)
            syntax_.Flag(1, ELEMENT(no_output_of_prior_pics_flag));
        syntax_.Ue(5, ELEMENT(slice_pic_parameter_set_id));
        dependent_flag_.Set(Length(), 0);
        if (!slice.first) {
            if (pps_->dependent_slice_segments_enabled_flag)
                syntax_.Flag(slice.dependent, kNotKept, Unreadable("dependent_slice_segment_flag"));
            dependent_flag_.Set(Length(), slice.dependent);
            syntax_.U(address_bits, address, ELEMENT(slice_segment_address));
        }
        output_flag_.Set(Length(), 1);
        if (slice.dependent)
            return;
        if (pps_->num_extra_slice_header_bits)
            syntax_.U(pps_->num_extra_slice_header_bits, 1, kNotKept, Unreadable("slice_reserved flag"));
        syntax_.Ue(2, ELEMENT(slice_type));
        if (pps_->output_flag_present_flag) {
            syntax_.Flag(0, kNotKept, Unreadable("pic_output_flag"));
            output_flag_.Set(Length(), 0);
        }
        if (sps_->separate_colour_plane_flag == 1)
            syntax_.U(2, 2, ELEMENT(colour_plane_id));
        pic_order_cnt_lsb_.Set(Length(), 0);
        if (slice.nal_unit_type == 19 || slice.nal_unit_type == 20)
            return;
        const auto width = static_cast<unsigned int>(sps_->log2_max_pic_order_cnt_lsb_minus4) + 4;
        const UINT64 lsb = (uint64_t{1} << width) - 3;
        syntax_.U(width, lsb, kNotKept, Unreadable("slice_pic_order_cnt_lsb"));
        pic_order_cnt_lsb_.Set(Length(), lsb);
    }

    void ExpectDefaults(size_t length) const {
        EXPECT_EQ(ssh_.dependent_slice_segment_flag, dependent_flag_.At(length));
        EXPECT_EQ(ssh_.pic_output_flag, output_flag_.At(length));
        EXPECT_EQ(ssh_.slice_pic_order_cnt_lsb, pic_order_cnt_lsb_.At(length));
    }

    void Sweep(const Slice &slice, unsigned int address_bits = 9) {
        Build(slice, address_bits);
        syntax_.SweepTruncations(&ssh_, [&](bitbuffer_t *bb, ssh_h265_t *ssh) {
            const bool parsed =
                _parse_slice_header(bb, sps_.get(), pps_.get(), slice.nal_unit_type, ssh) == 0;
            ExpectDefaults(bb->num_bits);
            return parsed;
        });
    }

    // Parses the bits into a prefilled record.
    int Parse(const BitString &bits, int nal_unit_type = kTrail) {
        Bytes bytes = bits.Bytes();
        bb_ = {bytes.data(), 0, static_cast<unsigned int>(bits.size())};
        std::memset(&ssh_, kPrefill, sizeof ssh_);
        return _parse_slice_header(&bb_, sps_.get(), pps_.get(), nal_unit_type, &ssh_);
    }

    BOOL ParseNal(const Bytes &nal) {
        return H265Lib_Parse_slice_header_nal(nal.data(), static_cast<int>(nal.size()), sps_.get(),
                                              pps_.get(), &ssh_);
    }

    // The NAL unit of the header that was built, with some slice data.
    Bytes Nal(int nal_unit_type = kTrail, int start_code_length = 4) const {
        return NalUnit(nal_unit_type, BitString(syntax_.bits()).U(20, 0x56789).TrailingBits().Bytes(),
                       start_code_length);
    }

    // Widths of 0 and of more than 32 bits cannot be read.
    void ExpectAddressBits(unsigned int expected) {
        const unsigned int in_front = 2;  // flag and id
        const TraceCapture trace(7);
        const int result = Parse(BitString().U(2, 1).U(64, 0));
        EXPECT_THAT(trace.Texts(7), ElementsAre("ssh: slice_segment_address length is " +
                                                std::to_string(expected) + " bits\n"));
        EXPECT_EQ(trace.messages()[0].function, "_parse_slice_header");
        EXPECT_EQ(result, -1);  // nothing but zeros: no slice_type
        const bool readable = expected >= 1 && expected <= 32;
        EXPECT_THAT(trace.Errors(),
                    ElementsAre(Unreadable(readable ? "slice_type" : "slice_segment_address")));
        EXPECT_EQ(bb_.bit_offset, in_front + (readable ? expected : 0));
        EXPECT_EQ(ssh_.slice_segment_address, readable ? 0 : PrefilledValue<UINT64>());
        EXPECT_EQ(ssh_.pic_output_flag, readable ? 1 : PrefilledValue<int>());
    }

    Syntax syntax_;
    History<int> dependent_flag_, output_flag_;
    History<UINT64> pic_order_cnt_lsb_;
    std::unique_ptr<sps_h265_t> sps_;
    std::unique_ptr<pps_h265_t> pps_;
    ssh_h265_t ssh_{};
    bitbuffer_t bb_{};
};

// ---- syntax ----------------------------------------------------------------------------------------------

TEST_F(SliceHeader, FirstSegmentOfEachNalUnitType) {
    pps_->dependent_slice_segments_enabled_flag = 1;
    for (int nal_unit_type = 0; nal_unit_type < 64; nal_unit_type++) {
        SCOPED_TRACE(nal_unit_type);
        Sweep({.nal_unit_type = nal_unit_type});
        const bool irap = nal_unit_type >= 16 && nal_unit_type <= 23;
        EXPECT_EQ(ssh_.no_output_of_prior_pics_flag, irap ? 1 : PrefilledValue<int>());
        const bool idr = nal_unit_type == 19 || nal_unit_type == 20;
        EXPECT_EQ(ssh_.slice_pic_order_cnt_lsb, idr ? 0u : 253u);
        EXPECT_EQ(ssh_.dependent_slice_segment_flag, 0);
        EXPECT_EQ(ssh_.slice_segment_address, PrefilledValue<UINT64>());
        EXPECT_EQ(ssh_.colour_plane_id, kPrefill);
    }
}

TEST_F(SliceHeader, FurtherSegmentsHaveAnAddress) {
    for (const int nal_unit_type : {kTrail, kIdr, kCra})
        Sweep({.nal_unit_type = nal_unit_type, .first = 0});
}

TEST_F(SliceHeader, IndependentSegmentAmongDependentOnes) {
    pps_->dependent_slice_segments_enabled_flag = 1;
    for (const int nal_unit_type : {kTrail, kIdr, kCra})
        Sweep({.nal_unit_type = nal_unit_type, .first = 0});
}

TEST_F(SliceHeader, DependentSegmentEndsBehindTheAddress) {
    pps_->dependent_slice_segments_enabled_flag = 1;
    pps_->num_extra_slice_header_bits = 2;
    pps_->output_flag_present_flag = 1;
    for (const int nal_unit_type : {kTrail, kIdr, kCra}) {
        Sweep({.nal_unit_type = nal_unit_type, .first = 0, .dependent = 1});
        EXPECT_EQ(ssh_.dependent_slice_segment_flag, 1);
        EXPECT_EQ(ssh_.pic_output_flag, 1);
        EXPECT_EQ(ssh_.slice_type, PrefilledValue<UINT64>());
        EXPECT_EQ(ssh_.slice_pic_order_cnt_lsb, PrefilledValue<UINT64>());
    }
}

TEST_F(SliceHeader, ExtraBitsAreSkipped) {
    for (const int bits : {1, 2, 7, 32}) {
        SCOPED_TRACE(bits);
        pps_->num_extra_slice_header_bits = static_cast<unsigned char>(bits);
        Sweep({});
        Sweep({.nal_unit_type = kIdr, .first = 0});
    }
}

TEST_F(SliceHeader, MoreThan32ExtraBitsAreUnreadable) {
    Build({});
    for (const int bits : {33, 64, 255}) {
        pps_->num_extra_slice_header_bits = static_cast<unsigned char>(bits);
        const TraceCapture trace(3);
        EXPECT_EQ(Parse(BitString(syntax_.bits()).U(64, 0).U(64, 0).U(64, 0).U(64, 0)), -1);
        EXPECT_THAT(trace.Errors(), ElementsAre(Unreadable("slice_reserved flag")));
        EXPECT_EQ(ssh_.slice_type, PrefilledValue<UINT64>());
        EXPECT_EQ(ssh_.pic_output_flag, 1);
    }
}

TEST_F(SliceHeader, OutputFlag) {
    pps_->output_flag_present_flag = 1;
    for (const int nal_unit_type : {kTrail, kIdr, kCra}) {
        Sweep({.nal_unit_type = nal_unit_type});
        EXPECT_EQ(ssh_.pic_output_flag, 0);
    }
}

TEST_F(SliceHeader, ColourPlane) {
    for (const int separate_colour_plane_flag : {1, 2, -1}) {  // a flag that is not 1 is not set
        sps_->separate_colour_plane_flag = separate_colour_plane_flag;
        Sweep({});
        Sweep({.nal_unit_type = kIdr, .first = 0});
    }
    EXPECT_EQ(ssh_.colour_plane_id, kPrefill);
}

TEST_F(SliceHeader, LengthsOfThePictureOrderCount) {
    for (const UINT64 minus4 : {0u, 1u, 12u, 28u}) {
        sps_->log2_max_pic_order_cnt_lsb_minus4 = minus4;
        Sweep({});
    }
}

TEST_F(SliceHeader, PictureOrderCountsThatDoNotFitAreUnreadable) {
    Build({});
    for (const UINT64 minus4 : {UINT64{29}, UINT64{60}, UINT64{1} << 32, ~UINT64{0} - 3}) {
        SCOPED_TRACE(minus4);
        sps_->log2_max_pic_order_cnt_lsb_minus4 = minus4;
        const TraceCapture trace(3);
        EXPECT_EQ(Parse(BitString(syntax_.bits()).U(64, 0)), -1);
        EXPECT_THAT(trace.Errors(), ElementsAre(Unreadable("slice_pic_order_cnt_lsb")));
        EXPECT_EQ(ssh_.slice_type, 2u);
        EXPECT_EQ(ssh_.slice_pic_order_cnt_lsb, 0u);
    }
}

TEST_F(SliceHeader, EverythingAtOnce) {
    pps_->dependent_slice_segments_enabled_flag = 1;
    pps_->num_extra_slice_header_bits = 2;
    pps_->output_flag_present_flag = 1;
    sps_->separate_colour_plane_flag = 1;
    for (const int nal_unit_type : {kTrail, kIdr, kCra})
        Sweep({.nal_unit_type = nal_unit_type, .first = 0});
}

TEST_F(SliceHeader, NothingBehindThePictureOrderCountIsRead) {
    Build({});
    const size_t length = Length();
    const TraceCapture trace;
    EXPECT_EQ(Parse(BitString(syntax_.bits()).U(30, 0x2AAA'AAAA)), 0);
    EXPECT_EQ(bb_.bit_offset, length);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

// ---- the width of the address ----------------------------------------------------------------------------

struct AddressCase {
    UINT64 width, height, log2_min_minus3, log2_diff;
    unsigned int bits;
};

TEST_F(SliceHeader, AddressBitsFollowTheNumberOfCtbs) {
    for (const AddressCase &c : {
             AddressCase{1920, 1080, 0, 3, 9},  // 30 x 17 = 510
             AddressCase{1024, 512, 0, 2, 10},  // 512, a power of two: one bit more than H.265 codes
             AddressCase{1024, 512, 2, 0, 10},  // the same, all of it the minimum size
             AddressCase{208, 112, 0, 1, 7},    // 13 x 7 = 91
             AddressCase{256, 128, 0, 1, 8},    // 128
             AddressCase{64, 64, 0, 3, 1},      // 1
             AddressCase{65, 64, 0, 3, 2},      // 2
             AddressCase{65, 65, 0, 3, 3},      // 4
             AddressCase{1, 1, 0, 3, 1},
         }) {
        SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
        SetPicture(c.width, c.height, c.log2_min_minus3, c.log2_diff);
        ExpectAddressBits(c.bits);
    }
}

TEST_F(SliceHeader, AddressBitsOfSizesThatNoSpsMayHave) {
    constexpr UINT64 kMax = ~UINT64{0};
    constexpr UINT64 kSize31 = kMax - 0x7FFF'FFFF;  // 1 << 31 as a signed 32-bit number, made unsigned
    for (const AddressCase &c : {
             AddressCase{1 << 19, 1 << 18, 0, 0, 32},  // 2^31: the longest that can be read
             AddressCase{1 << 19, 1 << 19, 0, 0, 33},  // 2^32
             AddressCase{kMax, 1, 0, 0, 62},           // 2^61
             AddressCase{kMax, kMax, 29, 0, 1},        // blocks of 1 sample: (2^64 - 1)^2 wraps to 1
             AddressCase{UINT64{1} << 32, UINT64{1} << 32, 29, 0, 0},  // wraps to 0
             AddressCase{3, 2, 29, 0, 3},                              // a shift of 32 is one of 0
             AddressCase{6, 4, 3, 27, 3},                              // a shift of 33 is one of 1
             AddressCase{3, 2, kMax - 2, 0, 3},                        // the sum wraps to 0
             AddressCase{16, 9, UINT64{1} << 32, 0, 3},                // 2^32 + 3 is 3: 2 x 2
             AddressCase{1920, 1080, 28, 0, 1},                        // 31
             AddressCase{1920, 1080, 0, 28, 1},                        // 31
             AddressCase{kSize31, kSize31, 28, 0, 1},
             AddressCase{kSize31 + 1, kSize31, 28, 0, 2},
             AddressCase{kMax, kMax, 27, 0, 0},  // 30: 2^34 x 2^34 wraps to 0
             AddressCase{0, 1080, 0, 3, 0},
             AddressCase{0, 0, kMax, kMax, 0},
         }) {
        SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height) + ", log2 " +
                     std::to_string(c.log2_min_minus3) + "+" + std::to_string(c.log2_diff));
        SetPicture(c.width, c.height, c.log2_min_minus3, c.log2_diff);
        ExpectAddressBits(c.bits);
    }
}

TEST_F(SliceHeader, AnAddressOf32BitsIsKeptInFull) {
    SetPicture(1 << 19, 1 << 18, 0, 0);
    Build({.first = 0}, 32, 0x8123'4567);
    const TraceCapture trace(3);
    EXPECT_EQ(Parse(syntax_.bits()), 0);
    EXPECT_EQ(ssh_.slice_segment_address, 0x8123'4567u);
}

// ---- null arguments --------------------------------------------------------------------------------------

TEST_F(SliceHeader, NullArgumentsOfTheReaderAreReportedAndFail) {
    TraceCapture trace;
    EXPECT_EQ(_parse_slice_header(nullptr, sps_.get(), pps_.get(), kTrail, &ssh_), -1);
    EXPECT_EQ(_parse_slice_header(&bb_, sps_.get(), pps_.get(), kTrail, nullptr), -1);
    EXPECT_EQ(_parse_slice_header(&bb_, nullptr, nullptr, kTrail, &ssh_), -1);
    EXPECT_EQ(_parse_slice_header(&bb_, sps_.get(), nullptr, kTrail, &ssh_), -1);
    EXPECT_THAT(
        trace.Errors(),
        ElementsAre(Formatted("pNal_bb:(nil) or sliceheader:%p are NULL this should not happen!\n", &ssh_),
                    Formatted("pNal_bb:%p or sliceheader:(nil) are NULL this should not happen!\n", &bb_),
                    "sps:(nil) is NULL this should not happen!\n",
                    "pps:(nil) is NULL this should not happen!\n"));
    EXPECT_EQ(trace.messages().size(), 4u);
    for (const TracedMessage &message : trace.messages())
        EXPECT_EQ(message.function, "_parse_slice_header");
    InSilence([this] {
        EXPECT_EQ(_parse_slice_header(&bb_, nullptr, pps_.get(), kTrail, &ssh_), -1);
        EXPECT_EQ(_parse_slice_header(&bb_, sps_.get(), nullptr, kTrail, &ssh_), -1);
    });
}

TEST_F(SliceHeader, NullArgumentsAreReportedAndFail) {
    Build({});
    const Bytes nal = Nal();
    const auto length = static_cast<int>(nal.size());
    const FailingAllocations allocations(1);
    TraceCapture trace;
    EXPECT_FALSE(H265Lib_Parse_slice_header_nal(nullptr, length, sps_.get(), pps_.get(), &ssh_));
    EXPECT_FALSE(H265Lib_Parse_slice_header_nal(nal.data(), length, sps_.get(), pps_.get(), nullptr));
    EXPECT_THAT(
        trace.Errors(),
        ElementsAre(
            Formatted("buffer:(nil) or slice header:%p are NULL. This should not happen!\n", &ssh_),
            Formatted("buffer:%p or slice header:(nil) are NULL. This should not happen!\n", nal.data())));
    EXPECT_EQ(trace.messages().size(), 2u);
    for (const TracedMessage &message : trace.messages())
        EXPECT_EQ(message.function, "H265Lib_Parse_slice_header_nal");
    EXPECT_EQ(FailingAllocations::Calls(), 0);
}

TEST_F(SliceHeader, NullParameterSetsFailInTheReader) {
    Build({});
    const Bytes nal = Nal();
    const auto length = static_cast<int>(nal.size());
    TraceCapture trace(3);
    EXPECT_FALSE(H265Lib_Parse_slice_header_nal(nal.data(), length, nullptr, pps_.get(), &ssh_));
    EXPECT_THAT(trace.Errors(), ElementsAre("sps:(nil) is NULL this should not happen!\n", kFailed));
    EXPECT_EQ(trace.messages()[0].function, "_parse_slice_header");
    EXPECT_EQ(trace.messages()[1].function, "H265Lib_Parse_slice_header_nal");
    trace.Clear();
    EXPECT_FALSE(H265Lib_Parse_slice_header_nal(nal.data(), length, sps_.get(), nullptr, &ssh_));
    EXPECT_THAT(trace.Errors(), ElementsAre("pps:(nil) is NULL this should not happen!\n", kFailed));
}

// ---- NAL units -------------------------------------------------------------------------------------------

TEST_F(SliceHeader, NalUnitsWithEitherStartCodeParseWithOneAllocation) {
    for (const int start_code_length : {3, 4}) {
        for (const int nal_unit_type : {kTrail, kIdr, kCra}) {
            Build({.nal_unit_type = nal_unit_type, .first = 0});
            const Bytes nal = Nal(nal_unit_type, start_code_length);
            const FailingAllocations allocations(2);
            const TraceCapture trace(7);
            EXPECT_TRUE(ParseNal(nal));
            EXPECT_EQ(FailingAllocations::Calls(), 1);
            syntax_.ExpectFields(Length());
            ExpectDefaults(Length());
            const size_t sodb_length = nal.size() - static_cast<size_t>(start_code_length) - 2;
            EXPECT_THAT(trace.Texts(7), ElementsAre("SODB deencapsulation was successful NAL unit length:" +
                                                        std::to_string(nal.size()) + ", SODB length:" +
                                                        std::to_string(sodb_length) + ".\n",
                                                    "ssh: slice_segment_address length is 9 bits\n"));
            EXPECT_EQ(trace.messages().size(), 2u);
            EXPECT_EQ(trace.messages()[0].function, "H265Lib_Parse_slice_header_nal");
        }
    }
}

TEST_F(SliceHeader, OnlyTheTypeBitsOfTheHeaderAreTheType) {
    Build({.nal_unit_type = kIdr});
    Bytes nal = Nal(kIdr);
    nal[4] |= 0x81;  // forbidden_zero_bit and the top bit of nuh_layer_id
    const TraceCapture trace(3);
    EXPECT_TRUE(ParseNal(nal));
    syntax_.ExpectFields(Length());
    EXPECT_EQ(ssh_.slice_pic_order_cnt_lsb, 0u);
}

TEST_F(SliceHeader, EmulationPreventionIsRemoved) {
    SetPicture(1 << 19, 1 << 18, 0, 0);
    Build({.first = 0}, 32, 1);
    const Bytes nal = Nal();
    const TraceCapture trace(7);
    ASSERT_TRUE(ParseNal(nal));
    EXPECT_THAT(trace.Texts(7)[0],
                testing::EndsWith("SODB length:" + std::to_string(nal.size() - 7) + ".\n"));
    syntax_.ExpectFields(Length());
}

TEST_F(SliceHeader, AnUnreadableElementIsReportedOnceMoreByTheEntryPoint) {
    const auto expect_failure = [this] { EXPECT_FALSE(ParseNal({0, 0, 1, 2, 1, 0x80})); };
    InSilence(expect_failure);
    const FailingAllocations allocations(2);
    const TraceCapture trace;
    expect_failure();
    EXPECT_THAT(trace.Errors(), ElementsAre(Unreadable("slice_pic_parameter_set_id"), kFailed));
    EXPECT_EQ(trace.messages()[trace.messages().size() - 2].function, "_parse_slice_header");
    EXPECT_EQ(trace.messages().back().function, "H265Lib_Parse_slice_header_nal");
    EXPECT_EQ(FailingAllocations::Calls(), 1);
}

TEST_F(SliceHeader, ShortInputIsRefusedUnseen) {
    const Bytes nal = {0xFF, 0xFF, 0xFF, 0xFF};
    const FailingAllocations allocations(1);
    for (const int length : {4, 0, -1, INT32_MIN}) {
        const TraceCapture trace;
        EXPECT_FALSE(H265Lib_Parse_slice_header_nal(nal.data(), length, sps_.get(), pps_.get(), &ssh_));
        EXPECT_THAT(trace.Errors(),
                    ElementsAre("buffer_len:" + std::to_string(length) + " is too small. Malformed NAL.\n"));
        EXPECT_EQ(trace.messages().size(), 1u);
    }
    EXPECT_EQ(FailingAllocations::Calls(), 0);
}

TEST_F(SliceHeader, InputWithoutStartCodeIsRefused) {
    const Bytes nal = {0, 0, 2, 1, 2, 1, 0xC0};
    const TraceCapture trace;
    EXPECT_FALSE(ParseNal(nal));
    EXPECT_THAT(trace.Errors(),
                ElementsAre(Formatted("Failed to parse slice header nal! buffer:%p.\n", nal.data())));
    EXPECT_EQ(trace.messages().back().function, "H265Lib_Parse_slice_header_nal");
}

TEST_F(SliceHeader, AHeaderWithoutPayloadIsRefused) {
    for (const Bytes &nal : {Bytes{0, 0, 1, 2, 1}, Bytes{0, 0, 0, 1, 2}}) {
        const TraceCapture trace(7);
        EXPECT_FALSE(ParseNal(nal));
        EXPECT_THAT(trace.Errors(),
                    ElementsAre("Failed to get SODB from RBSP. Output buffer is too small.\n"));
        EXPECT_THAT(trace.Texts(7), IsEmpty());
    }
}

TEST_F(SliceHeader, AFailedAllocationIsReportedWithItsSize) {
    Build({});
    const Bytes nal = Nal();
    std::memset(&ssh_, kPrefill, sizeof ssh_);
    const FailingAllocations allocations(1);
    const TraceCapture trace;
    EXPECT_FALSE(ParseNal(nal));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to allocate memory for nal_sodb_buffer. Size requested:" +
                                            std::to_string(nal.size() + 32) + ".\n"));
    EXPECT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, "H265Lib_Parse_slice_header_nal");
    EXPECT_EQ(ssh_.first_slice_segment_in_pic_flag, PrefilledValue<int>());
}

}  // namespace
}  // namespace test
