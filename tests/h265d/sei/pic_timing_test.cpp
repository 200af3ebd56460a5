#include "h265d/sei/pic_timing.h"

#include <gmock/gmock.h>

#include <climits>
#include <map>

#include "support/fields.h"
#include "support/interposed.h"
#include "support/nal_unit.h"
#include "support/samples.h"
#include "support/silence.h"
#include "support/syntax.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

constexpr int kPrefix = 39;
constexpr char kFailed[] = "Failed to parse sei pic_timing.\n";

// What is present in a message: the flags of the VUI and its HRD, and the decoding units.
struct Shape {
    int frame_field_info = 0;
    int delays = 0;
    int sub_pic = 0;
    int in_pic_timing = 0;
    int common = 0;
    uint64_t units = 1;
};

class PicTimingSei : public testing::Test {
 protected:
    PicTimingSei() { std::memset(&pt_, kPrefill, sizeof pt_); }

    // Values of n bits with the highest and the lowest bit set.
    static uint64_t Value(unsigned int n) { return (uint64_t{1} << (n - 1)) | 1; }

    void SetLengths(unsigned char au, unsigned char dpb, unsigned char dpb_du, unsigned char increment) {
        vui_.nal_hrd.au_cpb_removal_delay_length_minus1 = static_cast<unsigned char>(au - 1);
        vui_.nal_hrd.dpb_output_delay_length_minus1 = static_cast<unsigned char>(dpb - 1);
        vui_.nal_hrd.dpb_output_delay_du_length_minus1 = static_cast<unsigned char>(dpb_du - 1);
        vui_.nal_hrd.du_cpb_removal_delay_increment_length_minus1 = static_cast<unsigned char>(increment - 1);
        au_ = au;
        dpb_ = dpb;
        dpb_du_ = dpb_du;
        increment_ = increment;
    }

    // The VUI and the message that it asks for. Of more than 511 units nobody reads the rest.
    void Build(const Shape &shape) {
        syntax_ = {};
        vui_.frame_field_info_present_flag = shape.frame_field_info;
        vui_.CpbDpbDelaysPresentFlag = shape.delays;
        vui_.nal_hrd.sub_pic_hrd_params_present_flag = shape.sub_pic;
        vui_.nal_hrd.sub_pic_cpb_params_in_pic_timing_sei_flag = shape.in_pic_timing;
        if (shape.frame_field_info)
            syntax_.U(4, 9, FIELD(pt_, pic_struct))
                .U(2, 2, FIELD(pt_, source_scan_type))
                .Flag(1, FIELD(pt_, duplicate_flag));
        if (!shape.delays)
            return;
        syntax_.U(au_, Value(au_), FIELD(pt_, au_cpb_removal_delay_minus1))
            .U(dpb_, Value(dpb_), &pt_.pic_dpb_output_delay, Unreadable("dpb_output_delay"));
        if (shape.sub_pic)
            syntax_.U(dpb_du_, Value(dpb_du_), FIELD(pt_, pic_dpb_output_du_delay));
        if (!shape.sub_pic || !shape.in_pic_timing)
            return;
        syntax_.Ue(shape.units - 1, FIELD(pt_, num_decoding_units_minus1))
            .Flag(shape.common, FIELD(pt_, du_common_cpb_removal_delay_flag));
        if (shape.common)  // reported under the name of an element before it
            syntax_.U(increment_, Value(increment_), &pt_.du_common_cpb_removal_delay_increment_minus1,
                      Unreadable("dpb_output_delay"));
        for (int i = 0; i <= 510 && static_cast<uint64_t>(i) < shape.units; i++) {
            // reported under the name of the count
            syntax_.Ue(static_cast<uint64_t>(i), KeptAt(pt_.num_nalus_in_du_minus1, i),
                       Unreadable("num_decoding_units_minus1", i));
            if (!shape.common && i < 510 && static_cast<uint64_t>(i) < shape.units - 1)
                syntax_.U(increment_, Value(increment_),
                          ENTRY(pt_, du_cpb_removal_delay_increment_minus1, i));
        }
    }

    BOOL Parse(const BitString &bits, UINT payload_index = 0) {
        std::vector<unsigned char> bytes = bits.Bytes();
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(bits.size())};
        const SEI_message_t message = {1, 0, payload_index};
        const BOOL parsed = _parse_sei_pic_timing(&bb, &message, &vui_, &pt_);
        bit_offset_ = bb.bit_offset;
        return parsed;
    }

    void Sweep() {
        syntax_.SweepTruncations(&pt_, [this](bitbuffer_t *bb, sei_h265_pic_timing_t *pt) {
            const SEI_message_t message = {};
            return _parse_sei_pic_timing(bb, &message, &vui_, pt) == TRUE;
        });
    }

    BOOL ParseNal(const Bytes &nal, UINT payload_index = 2) {
        const SEI_message_t message = {1, 1, payload_index};
        return H265Lib_Parse_sei_pictiming_nal(nal.data(), static_cast<int>(nal.size()), &message, &vui_,
                                               &pt_);
    }

    Syntax syntax_;
    vui_h265_t vui_{};
    sei_h265_pic_timing_t pt_;
    unsigned int bit_offset_ = 0;
    unsigned int au_ = 1;
    unsigned int dpb_ = 1;
    unsigned int dpb_du_ = 1;
    unsigned int increment_ = 1;
};

TEST_F(PicTimingSei, EveryCombinationOfFlagsCutAtEveryBit) {
    SetLengths(24, 9, 5, 7);
    for (int flags = 0; flags < 32; flags++) {
        SCOPED_TRACE(flags);
        Build({.frame_field_info = flags & 1,
               .delays = flags >> 1 & 1,
               .sub_pic = flags >> 2 & 1,
               .in_pic_timing = flags >> 3 & 1,
               .common = flags >> 4 & 1,
               .units = 4});
        Sweep();
        EXPECT_EQ(pt_.num_nalus_in_du_minus1[4], PrefilledValue<UINT64>());
        EXPECT_EQ(pt_.du_cpb_removal_delay_increment_minus1[3], PrefilledValue<UINT64>());
    }
}

TEST_F(PicTimingSei, NothingPresentReadsNothing) {
    EXPECT_EQ(Parse({}), TRUE);
    EXPECT_EQ(bit_offset_, 0u);
    EXPECT_EQ(pt_.pic_struct, kPrefill);
    EXPECT_EQ(pt_.au_cpb_removal_delay_minus1, PrefilledValue<UINT64>());
}

TEST_F(PicTimingSei, TheVclHrdIsNotConsulted) {
    vui_.nal_hrd.vcl_hrd_parameters_present_flag = 1;  // and no NAL HRD: its lengths hold all the same
    SetLengths(3, 4, 1, 1);
    Build({.delays = 1});
    Sweep();
}

TEST_F(PicTimingSei, LengthsFrom1To32) {
    for (unsigned char n = 1; n <= 32; n++) {
        SCOPED_TRACE(int{n});
        const auto other = static_cast<unsigned char>(33 - n);
        SetLengths(n, other, n, other);
        for (const int common : {0, 1}) {
            Build({.delays = 1, .sub_pic = 1, .in_pic_timing = 1, .common = common, .units = 2});
            EXPECT_EQ(Parse(syntax_.bits()), TRUE);
            syntax_.ExpectFields(syntax_.bits().size());
            EXPECT_EQ(bit_offset_, syntax_.bits().size());
        }
    }
}

// No parsed VUI has such a length; a record can.
TEST_F(PicTimingSei, LengthsAbove32AreUnreadable) {
    hrd_h265_t &hrd = vui_.nal_hrd;
    const struct {
        unsigned char *length;
        int common;
        std::string report;
    } cases[] = {{&hrd.au_cpb_removal_delay_length_minus1, 0, Unreadable("au_cpb_removal_delay_minus1")},
                 {&hrd.dpb_output_delay_length_minus1, 0, Unreadable("dpb_output_delay")},
                 {&hrd.dpb_output_delay_du_length_minus1, 0, Unreadable("pic_dpb_output_du_delay")},
                 {&hrd.du_cpb_removal_delay_increment_length_minus1, 1, Unreadable("dpb_output_delay")},
                 {&hrd.du_cpb_removal_delay_increment_length_minus1, 0,
                  Unreadable("du_cpb_removal_delay_increment_minus1", 0)}};
    for (const auto &[length, common, report] : cases) {
        SCOPED_TRACE(report);
        SetLengths(8, 8, 8, 8);
        Build({.delays = 1, .sub_pic = 1, .in_pic_timing = 1, .common = common, .units = 2});
        BitString bits = syntax_.bits();
        bits.U(32, 0).U(32, 0);  // the data does not end
        EXPECT_EQ(Parse(bits), TRUE);
        for (const unsigned char minus1 : Bytes{32, 63, 255}) {
            *length = minus1;
            const TraceCapture trace(3);
            EXPECT_EQ(Parse(bits), FALSE);
            EXPECT_THAT(trace.Errors(), ElementsAre(report));
        }
    }
}

TEST_F(PicTimingSei, At510DecodingUnitsTheRecordIsFull) {
    SetLengths(1, 1, 1, 9);
    for (const uint64_t units : {509ULL, 510ULL, 511ULL, 600ULL, 1ULL << 32}) {
        for (const int common : {0, 1}) {
            SCOPED_TRACE(units);
            std::memset(&pt_, kPrefill, sizeof pt_);
            Build({.delays = 1, .sub_pic = 1, .in_pic_timing = 1, .common = common, .units = units});
            const TraceCapture trace(3);
            EXPECT_EQ(Parse(syntax_.bits()), TRUE);
            std::vector<std::string> reports;
            if (units > 510)
                reports = {"cannot store more than 510 num_decoding_units_minus1.\n"};
            EXPECT_EQ(trace.Errors(), reports);
            syntax_.ExpectFields(syntax_.bits().size());
            EXPECT_EQ(bit_offset_, syntax_.bits().size());
            const size_t increments = common ? 0 : std::min<size_t>(units - 1, 510);
            for (size_t i = increments; i < 510; i++)
                ASSERT_EQ(pt_.du_cpb_removal_delay_increment_minus1[i], PrefilledValue<UINT64>()) << i;
            InSilence([this] { EXPECT_EQ(Parse(syntax_.bits()), TRUE); });
        }
    }
}

TEST_F(PicTimingSei, The511thUnitIsReadThoughNotKept) {
    SetLengths(1, 1, 1, 9);
    Build({.delays = 1, .sub_pic = 1, .in_pic_timing = 1, .units = 600});
    const TraceCapture trace(3);
    EXPECT_EQ(Parse(syntax_.bits().Prefix(syntax_.bits().size() - 1)), FALSE);
    EXPECT_THAT(trace.Errors(), ElementsAre(Unreadable("num_decoding_units_minus1", 510)));
}

TEST_F(PicTimingSei, TheReaderGoesToThePayload) {
    vui_.frame_field_info_present_flag = 1;
    const TraceCapture trace(7);
    EXPECT_EQ(Parse(BitString().U(16, 0x0101).U(8, 0x14), 2), TRUE);
    EXPECT_EQ(pt_.pic_struct, 1);
    EXPECT_EQ(pt_.source_scan_type, 1);
    EXPECT_EQ(pt_.duplicate_flag, 0);
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Advancing to Payload index:2, Payload_type:0x1, Payload_size:0.\n"));
    EXPECT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, "_parse_sei_pic_timing");
}

TEST_F(PicTimingSei, PayloadsBehindTheData) {
    vui_.frame_field_info_present_flag = 1;
    for (const UINT index : {2U, 3U, (1U << 29) - 1, 1U << 29, (1U << 29) + 1, UINT_MAX}) {
        SCOPED_TRACE(index);
        const TraceCapture trace(3);
        EXPECT_EQ(Parse(BitString().U(16, 0x1414), index), FALSE);
        EXPECT_THAT(trace.Errors(), ElementsAre(Unreadable("pic_struct")));
        EXPECT_EQ(ParseNal({0, 0, 1, 0x4E, 1, 0x14, 0x14}, index), FALSE);
        EXPECT_EQ(pt_.pic_struct, kPrefill);
    }
}

TEST_F(PicTimingSei, EntryPointParsesAndTraces) {
    vui_.frame_field_info_present_flag = 1;
    const TraceCapture trace(7);
    EXPECT_EQ(ParseNal({0, 0, 0, 1, 0x4E, 1, 1, 1, 0x14, 0x80}), TRUE);
    EXPECT_EQ(pt_.pic_struct, 1);
    EXPECT_EQ(pt_.source_scan_type, 1);
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("SODB deencapsulation was successful NAL unit length:10, SODB length:4.\n",
                            "Advancing to Payload index:2, Payload_type:0x1, Payload_size:0x1.\n"));
    EXPECT_EQ(trace.messages()[0].function, "H265Lib_Parse_sei_pictiming_nal");
}

TEST_F(PicTimingSei, EntryPointRemovesEmulationPrevention) {
    SetLengths(24, 16, 1, 1);
    vui_.CpbDpbDelaysPresentFlag = 1;
    EXPECT_EQ(ParseNal(NalUnit(kPrefix, {1, 5, 0, 0, 1, 0, 0, 0x80})), TRUE);
    EXPECT_EQ(pt_.au_cpb_removal_delay_minus1, 1u);
    EXPECT_EQ(pt_.pic_dpb_output_delay, 0u);
}

TEST_F(PicTimingSei, EntryPointReportsTheReadersFailure) {
    SetLengths(17, 1, 1, 1);
    vui_.CpbDpbDelaysPresentFlag = 1;
    const auto expect_failure = [this] { EXPECT_EQ(ParseNal({0, 0, 1, 0x4E, 1, 1, 1, 0x14, 0x80}), FALSE); };
    InSilence(expect_failure);
    const TraceCapture trace(3);
    expect_failure();
    EXPECT_THAT(trace.Errors(), ElementsAre(Unreadable("au_cpb_removal_delay_minus1"), kFailed));
    EXPECT_EQ(trace.messages().back().function, "H265Lib_Parse_sei_pictiming_nal");
}

TEST_F(PicTimingSei, EntryPointRefusesMalformedFrames) {
    const auto expect_error = [this](const unsigned char *nal, int length, const std::string &report) {
        const SEI_message_t message = {};
        const TraceCapture trace(3);
        EXPECT_EQ(H265Lib_Parse_sei_pictiming_nal(nal, length, &message, &vui_, &pt_), FALSE);
        EXPECT_THAT(trace.Errors(), ElementsAre(report));
        EXPECT_THAT(trace.Assertions(), IsEmpty());
        EXPECT_THAT(trace.messages(),
                    Each(Field(&TracedMessage::function, "H265Lib_Parse_sei_pictiming_nal")));
    };
    const Bytes nal = {0, 0, 0, 1, 0x4E, 1, 1, 1, 0x14, 0x80};
    for (const int length : {4, 3, 1, 0, -1, INT_MIN})
        expect_error(nal.data(), length,
                     "BufferLen:" + std::to_string(length) + " is too small. Malformed NAL.\n");
    char report[80];
    std::snprintf(report, sizeof report, "Failed to parse_sei_pictiming_nal! buffer:%p.\n",
                  static_cast<const void *>(nal.data() + 2));
    expect_error(nal.data() + 2, 8, report);
    expect_error(nal.data(), 5, "Failed to deencapsulate SODB from NAL.\n");
    expect_error(nal.data(), 6, "Failed to deencapsulate SODB from NAL.\n");
}

TEST_F(PicTimingSei, FailedAllocationIsReportedWithItsSize) {
    const FailingAllocations allocations(1);
    const TraceCapture trace(3);
    EXPECT_EQ(ParseNal({0, 0, 1, 0x4E, 1, 1, 1, 0x14, 0x80}), FALSE);
    EXPECT_THAT(trace.Errors(),
                ElementsAre("Failed to allocate memory for pNalSodbBuffer. Size requested:41.\n"));
}

TEST_F(PicTimingSei, NullPointersAreReported) {
    const Bytes nal = {0, 0, 1, 0x4E, 1, 1, 1, 0x14, 0x80};
    const SEI_message_t message = {};
    bitbuffer_t bb{};
    const TraceCapture trace(3);
    EXPECT_EQ(H265Lib_Parse_sei_pictiming_nal(nullptr, 9, &message, &vui_, &pt_), FALSE);
    EXPECT_EQ(H265Lib_Parse_sei_pictiming_nal(nal.data(), 9, nullptr, &vui_, &pt_), FALSE);
    EXPECT_EQ(H265Lib_Parse_sei_pictiming_nal(nal.data(), 9, &message, nullptr, &pt_), FALSE);
    EXPECT_EQ(H265Lib_Parse_sei_pictiming_nal(nal.data(), 9, &message, &vui_, nullptr), FALSE);
    EXPECT_EQ(_parse_sei_pic_timing(nullptr, &message, &vui_, &pt_), FALSE);
    EXPECT_EQ(_parse_sei_pic_timing(&bb, nullptr, &vui_, &pt_), FALSE);
    EXPECT_EQ(_parse_sei_pic_timing(&bb, &message, nullptr, &pt_), FALSE);
    EXPECT_EQ(_parse_sei_pic_timing(&bb, &message, &vui_, nullptr), FALSE);
    std::vector<std::string> assertions;
    for (const char *expression :
         {"pBuffer", "pBuffer", "pMsgHeader", "pMsgHeader", "pVUI", "pVui", "pPt", "pPt",  // each on its way
          "pSeiPicTimingBb", "pMsgHeader", "pVui", "pPt"})
        assertions.push_back(AssertionOf(std::string(expression) + " != NULL"));
    EXPECT_EQ(trace.Assertions(), assertions);
    EXPECT_THAT(trace.Errors(),
                ElementsAre("Failed to parse_sei_pictiming_nal! buffer:(nil).\n", kFailed, kFailed, kFailed));
}

TEST_F(PicTimingSei, NalUnitCutAtEveryByte) {
    SetLengths(16, 16, 8, 8);
    Build({.frame_field_info = 1, .delays = 1, .sub_pic = 1, .in_pic_timing = 1, .units = 3});
    BitString rbsp = BitString().U(16, 0x0110);
    const size_t needed = rbsp.Append(syntax_.bits()).size();
    const Bytes whole = NalUnit(kPrefix, rbsp.TrailingBits().Bytes());
    for (size_t length = 1; length <= whole.size(); length++) {
        const Bytes nal(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const TraceCapture trace(3);
        ASSERT_EQ(ParseNal(nal), length >= 6 && (length - 6) * 8 >= needed) << length;
    }
}

TEST_F(PicTimingSei, PictureStructuresAndDelaysOfRealStreams) {
    const std::pair<std::string, std::map<int, int>> streams[] = {
        // pic_struct and how often
        {"progressive-hrd-vui.hevc", {{kPrefill, 12}}},  // not coded
        {"interlaced-field-hrd.hevc", {{1, 8}, {2, 8}}}};
    for (const auto &[file, expected] : streams) {
        SCOPED_TRACE(file);
        sps_h265_t sps{};
        const std::vector<Bytes> sps_nals = SampleNalUnits(file, 33);
        ASSERT_FALSE(sps_nals.empty());
        ASSERT_EQ(H265Lib_Parse_sps_nal(sps_nals[0].data(), sps_nals[0].size(), &sps), TRUE);
        vui_ = sps.vui;
        std::map<int, int> structures;
        bool after_buffering_period = false;
        UINT64 delay_minus1 = 0;  // pictures since the one with the last buffering period
        for (const Bytes &nal : SampleNalUnits(file, kPrefix)) {
            after_buffering_period |= nal[5] == 0;
            if (nal[5] != 1)
                continue;
            std::memset(&pt_, kPrefill, sizeof pt_);
            ASSERT_EQ(ParseNal(nal), TRUE);
            structures[pt_.pic_struct]++;
            EXPECT_EQ(pt_.au_cpb_removal_delay_minus1, delay_minus1);
            delay_minus1 = after_buffering_period ? 0 : delay_minus1 + 1;
            after_buffering_period = false;
        }
        EXPECT_EQ(structures, expected);
    }
}

TEST_F(PicTimingSei, PictureStructureOfARealUnit) {
    const std::vector<Bytes> nals = SampleNalUnits("units/sei-multiple.nal");
    ASSERT_EQ(nals.size(), 1u);
    vui_.frame_field_info_present_flag = 1;
    EXPECT_EQ(ParseNal(nals[0]), TRUE);
    EXPECT_EQ(pt_.pic_struct, 3);
    EXPECT_EQ(pt_.source_scan_type, 0);
    EXPECT_EQ(pt_.duplicate_flag, 0);
}

}  // namespace
}  // namespace test
