#include "h265d/rewriting/vps.h"

#include <gmock/gmock.h>

#include <climits>
#include <cstring>
#include <filesystem>
#include <memory>

#include "support/bit_string.h"
#include "support/interposed.h"
#include "support/samples.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kVpsNut = 32;
constexpr size_t kFlagsByte = 9;  // of the SODB; the four source flags are its upper half

const std::string kNoSodb = "Failed to get SODB from RBSP. Output buffer is too small.\n";

Bytes Sodb(const Bytes &nal) {
    Bytes sodb(nal.size());
    const size_t header = nal[2] == 1 ? 3 : 4;
    sodb.resize(static_cast<size_t>(H265Lib_SODB_deencapsulation_from_NAL(
        nal.data() + header, static_cast<unsigned int>(nal.size() - header), sodb.data(),
        static_cast<unsigned int>(sodb.size()))));
    return sodb;
}

unsigned char Interlaced(unsigned char flags) {
    return static_cast<unsigned char>((flags & 0x2F) | 0x40);
}

// A VPS of one layer whose byte of source flags is `flags`, with reserved bits and a level that give it the
// bytes behind it: `behind` is the next byte.
Bytes Vps(unsigned char flags, unsigned char behind = 0, int start_code_length = 4) {
    return NalUnit(
        kVpsNut,
        {0x0C, 0x01, 0xFF, 0xFF, 0x01, 0x60, 0, 0, 0, flags, behind, 0, 0, 0, 0, 93, 0x95, 0x98, 0x09},
        start_code_length);
}

class VpsRewriting : public testing::Test {
 protected:
    static BOOL Modify(Bytes *nal) {
        return H265Lib_modify_vps_NAL(nal->data(), static_cast<unsigned int>(nal->size()));
    }

    static void ExpectFailure(const Bytes &nal, const std::vector<std::string> &reports) {
        SCOPED_TRACE(reports.back());
        const auto expect_failure = [&nal] {
            Bytes copy = nal;
            EXPECT_EQ(Modify(&copy), FALSE);
            EXPECT_EQ(copy, nal);
        };
        const TraceCapture trace(3);
        expect_failure();
        EXPECT_EQ(trace.Errors(), reports);
        InSilence(expect_failure);
        EXPECT_EQ(trace.messages().back().function, "H265Lib_modify_vps_NAL");
    }
};

TEST_F(VpsRewriting, ChangesThreeBitsOfAProgressiveVps) {
    for (const int start_code_length : {3, 4}) {
        Bytes nal = Vps(0x90, 0x12, start_code_length);
        const Bytes expected = Vps(0x40, 0x12, start_code_length);
        EXPECT_EQ(Modify(&nal), TRUE);
        EXPECT_EQ(nal, expected);
        EXPECT_EQ(Modify(&nal), TRUE);  // interlaced already
        EXPECT_EQ(nal, expected);
    }
}

TEST_F(VpsRewriting, KeepsEveryOtherBit) {
    for (unsigned int flags = 0; flags < 256; flags++) {
        Bytes nal = Vps(static_cast<unsigned char>(flags), 0x01);
        const Bytes input = nal;
        const TraceCapture trace(3);
        EXPECT_EQ(Modify(&nal), TRUE);
        Bytes expected = Vps(Interlaced(static_cast<unsigned char>(flags)), 0x01);
        // with fewer emulation prevention bytes the last bytes stay behind the result
        expected.insert(expected.end(),
                        input.end() - static_cast<std::ptrdiff_t>(input.size() - expected.size()),
                        input.end());
        EXPECT_EQ(nal, expected) << flags;
        EXPECT_THAT(trace.messages(), IsEmpty());
    }
}

TEST_F(VpsRewriting, MarksEverySample) {
    int count = 0;
    const auto before = std::make_unique<vps_h265_t>();
    const auto after = std::make_unique<vps_h265_t>();
    for (const auto &entry : std::filesystem::directory_iterator(SAMPLES_DIR)) {
        if (entry.path().extension() != ".hevc")
            continue;
        for (Bytes &nal : SampleNalUnits(entry.path().filename().string(), kVpsNut)) {
            SCOPED_TRACE(entry.path().filename());
            count++;
            Bytes expected = Sodb(nal);
            expected[kFlagsByte] = Interlaced(expected[kFlagsByte]);
            *before = *after = {};
            before->cprms_present_flag[0] = after->cprms_present_flag[0] = 1;
            ASSERT_EQ(H265Lib_Parse_vps_nal(nal.data(), nal.size(), before.get()), TRUE);
            const size_t size = nal.size();
            ASSERT_EQ(Modify(&nal), TRUE);
            ASSERT_EQ(nal, NalUnit(kVpsNut, expected, 3));
            EXPECT_EQ(nal.size(), size);
            ASSERT_EQ(H265Lib_Parse_vps_nal(nal.data(), nal.size(), after.get()), TRUE);
            before->ptl.general_progressive_source_flag = 0;
            before->ptl.general_interlaced_source_flag = 1;
            before->ptl.general_frame_only_constraint_flag = 0;
            EXPECT_EQ(std::memcmp(before.get(), after.get(), sizeof *after), 0);
        }
    }
    EXPECT_GE(count, 22);
}

// The first HRD has its common part without a flag that says so. Left out, the zeros of this one would be a
// code that is too long.
TEST_F(VpsRewriting, ReadsTheFirstHrdWithItsCommonPart) {
    BitString bits;
    for (const unsigned char byte :
         Bytes{0x0C, 0x01, 0xFF, 0xFF, 0x01, 0x60, 0, 0, 0, 0x90, 0x12, 0, 0, 0, 0, 93})
        bits.U(8, byte);
    bits.U(1, 1).Ue(4).Ue(2).Ue(5).U(6, 0).Ue(0);               // up to vps_num_layer_sets_minus1
    bits.U(1, 1).U(32, 1001).U(32, 60000).U(1, 0).Ue(1).Ue(0);  // timing, and an HRD of layer set 0
    bits.U(3, 0b101).U(46, 0);  // of NAL units, with parameters of sub-pictures
    bits.U(1, 1).Ue(0).Ue(0).Ue(1).Ue(1).Ue(1).Ue(1).U(1, 0);  // the sub-layer, with one CPB
    bits.U(1, 0).TrailingBits();
    Bytes sodb = bits.Bytes();
    Bytes nal = NalUnit(kVpsNut, sodb);
    const TraceCapture trace(3);
    EXPECT_EQ(Modify(&nal), TRUE);
    EXPECT_THAT(trace.messages(), IsEmpty());
    sodb[kFlagsByte] = 0x40;
    EXPECT_EQ(nal, NalUnit(kVpsNut, sodb));
}

// ---- emulation prevention ------------------------------------------------------------------------------

TEST_F(VpsRewriting, AnEmulationPreventionByteThatGoesAwayLeavesTheEndBehind) {
    Bytes nal = Vps(0x00, 0x01);
    const Bytes input = nal;
    Bytes expected = Vps(0x40, 0x01);
    ASSERT_LT(expected.size(), input.size());
    EXPECT_EQ(Modify(&nal), TRUE);
    expected.push_back(input.back());
    EXPECT_EQ(nal, expected);
}

TEST_F(VpsRewriting, AResultThatNeedsMoreRoomIsNotWritten) {
    // Three zero bytes behind the trailing bits belong to the data, where they need prevention.
    Bytes nal = Vps(0x90, 0xFF);
    nal.insert(nal.end(), 3, 0);
    const Bytes input = nal;
    const TraceCapture trace(3);
    EXPECT_EQ(Modify(&nal), TRUE);
    EXPECT_EQ(nal, input);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST_F(VpsRewriting, AResultThatNeedsMoreRoomIsWrittenWhereThereIsSome) {
    // The byte that goes away in front makes room for the one that is needed at the end.
    Bytes nal = Vps(0x00, 0x01);
    nal.insert(nal.end(), 3, 0);
    Bytes rbsp = Sodb(Vps(0x40, 0x01));
    rbsp.insert(rbsp.end(), 3, 0);
    const size_t size = nal.size();
    EXPECT_EQ(Modify(&nal), TRUE);
    EXPECT_EQ(nal, NalUnit(kVpsNut, rbsp));
    EXPECT_EQ(nal.size(), size);
}

// ---- refusals ------------------------------------------------------------------------------------------

TEST_F(VpsRewriting, AMissingStartCodeFails) {
    for (Bytes nal : {Bytes{0, 0, 2, 0x40, 1, 0}, Bytes{0, 0, 0, 0, 1, 0x40, 1, 0}}) {
        char address[32];
        std::snprintf(address, sizeof address, "%p", static_cast<void *>(nal.data()));
        const Bytes copy = nal;
        const TraceCapture trace(3);
        EXPECT_EQ(Modify(&nal), FALSE);
        EXPECT_EQ(nal, copy);
        EXPECT_THAT(trace.Errors(), ElementsAre(std::string("Failed to get NAL type offset from pBuffer:") +
                                                address + ".\n"));
        InSilence([&] { EXPECT_EQ(Modify(&nal), FALSE); });
    }
}

TEST_F(VpsRewriting, ALengthOf3IsAssertedAndFails) {
    for (const unsigned char third : Bytes{0, 1}) {
        Bytes nal = {0, 0, third};
        const TraceCapture trace(3);
        EXPECT_EQ(Modify(&nal), FALSE);
        EXPECT_THAT(nal, ElementsAre(0, 0, third));
        ASSERT_THAT(trace.Assertions(), testing::Contains(AssertionOf("buffer_len >= 4")));
        EXPECT_EQ(trace.messages().front().function, "H265Lib_modify_vps_NAL");
        EXPECT_THAT(trace.Errors(), testing::SizeIs(1));
    }
}

TEST_F(VpsRewriting, WithoutPayloadItFails) {
    for (const Bytes &nal : {Bytes{0, 0, 1, 0x40, 1}, Bytes{0, 0, 0, 1, 0x40, 1}, Bytes{0, 0, 0, 1, 0x40}})
        ExpectFailure(nal, {kNoSodb});
}

TEST_F(VpsRewriting, TakesNalUnitsOf1512Bytes) {
    Bytes nal = Vps(0x90, 0xFF);
    nal.back() = 0x0D;  // an extension
    nal.resize(4 + 1512, 0xFF);
    Bytes rbsp = Sodb(nal);
    rbsp[kFlagsByte] = 0x40;
    ASSERT_EQ(Modify(&nal), TRUE);
    EXPECT_EQ(nal, NalUnit(kVpsNut, rbsp));

    nal.push_back(0xFF);
    const ControlledClock clock(FreshTime());  // the first report is limited in rate
    ExpectFailure(nal, {"Deencapsulation cannot be done as InputBufferLength:1513 is longer than "
                        "OutputBufferLength:1512.\n",
                        kNoSodb});
}

TEST_F(VpsRewriting, AVpsThatCannotBeParsedFails) {
    Bytes nal = Vps(0x90, 0xFF);
    nal.resize(10);
    ExpectFailure(nal, {"cannot parse general_profile_space.\n", "cannot parse profile_tier_level.\n",
                        "Failed to parse VPS NAL!\n"});
}

TEST_F(VpsRewriting, NullArgumentsAreReportedAndFail) {
    vps_h265_t *const no_record = nullptr;
    bitbuffer_t bb{};
    const auto vps = std::make_unique<vps_h265_t>();
    const TraceCapture trace(3);
    EXPECT_EQ(H265Lib_modify_vps_NAL(nullptr, 30), FALSE);
    EXPECT_EQ(_modify_vps_parameters(nullptr, 1, vps.get()), -1);
    EXPECT_EQ(_modify_vps_parameters(&bb, 1, no_record), -1);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("pBuffer != NULL"), AssertionOf("pBuffer != NULL"),
                            AssertionOf("vps_bb != NULL"), AssertionOf("pVpsElements != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to get NAL type offset from pBuffer:(nil).\n"));
}

// ---- the flags -----------------------------------------------------------------------------------------

class VpsFlags : public testing::Test {
 protected:
    // Modifies `bytes` with room for `num_bits`.
    int Modify(unsigned int num_bits) {
        bitbuffer_t bb{bytes_, 5, num_bits};
        return _modify_vps_parameters(&bb, 3, vps_.get());
    }

    unsigned char bytes_[3] = {0xFF, 0xA7, 0xFF};  // 10100111
    const std::unique_ptr<vps_h265_t> vps_ = std::make_unique<vps_h265_t>();
};

TEST_F(VpsFlags, AreOverwrittenAtTheRecordedPosition) {
    vps_->ptl.general_scantype_bitoffset = 8;
    vps_->ptl.general_non_packed_constraint_flag = 1;
    vps_->after_ptl_bitoffset = 17;
    const TraceCapture trace;
    EXPECT_EQ(Modify(24), 1);  // 3 bytes, divided by 8 once more
    EXPECT_THAT(bytes_, ElementsAre(0xFF, 0x67, 0xFF));
    EXPECT_THAT(
        trace.Texts(7),
        ElementsAre(testing::MatchesRegex("Called, vps_bb:0x[0-9a-f]+, VPSSodbLength:3.\n"),
                    "Advancing to bitoffset:8.\n", "Advancing to bitoffset:17.\n", "FINAL VPS (3 bytes):\n",
                    testing::HasSubstr("FF 67 FF"), "Done.\n", "Final VPS num_bits:17, Bytes:1.\n"));
    EXPECT_EQ(trace.messages().front().function, "_modify_vps_parameters");
    EXPECT_EQ(trace.messages().back().file, "vps.cpp");
    EXPECT_THAT(trace.Errors(), IsEmpty());
}

TEST_F(VpsFlags, AnUnexpectedNonPackedFlagIsReportedAndKept) {
    vps_->ptl.general_scantype_bitoffset = 8;
    const TraceCapture trace(3);
    EXPECT_EQ(Modify(24), 1);
    EXPECT_THAT(bytes_, ElementsAre(0xFF, 0x67, 0xFF));
    EXPECT_THAT(trace.Errors(),
                ElementsAre("general_non_packed_constraint_flag is not of expected value.\n"));
    InSilence([this] { EXPECT_EQ(Modify(24), 1); });
}

TEST_F(VpsFlags, EachThatHasNoRoomIsReported) {
    vps_->ptl.general_scantype_bitoffset = 8;
    vps_->ptl.general_non_packed_constraint_flag = 1;
    const char *const reports[] = {"Failed to set general_progressive_source_flag.\n",
                                   "Failed to set general_interlaced_source_flag.\n",
                                   "cannot parse general_non_packed_constraint_flag.\n",
                                   "Failed to set general_frame_only_constraint_flag.\n"};
    for (unsigned int room = 0; room < 4; room++) {
        const TraceCapture trace(3);
        EXPECT_EQ(Modify(8 + room), -1);
        EXPECT_THAT(trace.Errors(), ElementsAre(reports[room]));
        InSilence([&] { EXPECT_EQ(Modify(8 + room), -1); });
        EXPECT_EQ(trace.messages().back().function, "_modify_vps_parameters");
    }
    EXPECT_EQ(Modify(12), 1);
}

TEST_F(VpsFlags, PositionsOutsideTheDataFail) {
    for (const int position : {-1, INT_MIN, 24, INT_MAX}) {
        vps_->ptl.general_scantype_bitoffset = position;
        const TraceCapture trace(3);
        EXPECT_EQ(Modify(24), -1);
        EXPECT_THAT(trace.Errors(), ElementsAre("Failed to set general_progressive_source_flag.\n"));
    }
    EXPECT_THAT(bytes_, ElementsAre(0xFF, 0xA7, 0xFF));
}

TEST_F(VpsFlags, AnEmptyLengthIsAssertedOnly) {
    vps_->ptl.general_scantype_bitoffset = 8;
    bitbuffer_t bb{bytes_, 0, 24};
    const TraceCapture trace;
    EXPECT_EQ(_modify_vps_parameters(&bb, 0, vps_.get()), 0);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("VPSSodbLength > 0")));
}

TEST_F(VpsRewriting, DumpsInputAndResult) {
    Bytes nal = Vps(0x90, 0xFF);
    const std::string bytes = " (" + std::to_string(nal.size()) + " bytes):\n";
    const TraceCapture trace(6);
    ASSERT_EQ(Modify(&nal), TRUE);
    // the second caption is that of the SEI modification
    const std::vector<std::string> dumped = trace.Texts(6);
    const size_t rows = dumped.size() / 2;
    EXPECT_EQ(dumped.front(), "ORIGINAL VPS NAL" + bytes);
    EXPECT_EQ(dumped.at(rows), "MODIFIED SEI NAL" + bytes);
    EXPECT_THAT(dumped[2], testing::HasSubstr("90 FF"));
    EXPECT_THAT(dumped[rows + 2], testing::HasSubstr("40 FF"));
    EXPECT_EQ(trace.messages().front().function, "H265Lib_modify_vps_NAL");
    EXPECT_EQ(trace.messages().back().file, "vps.cpp");
}

TEST_F(VpsRewriting, MoreThanTheResultIsNotTouched) {
    Bytes nal = Vps(0x90, 0xFF);
    const size_t size = nal.size();
    nal.insert(nal.end(), 40, 0xCC);
    EXPECT_EQ(H265Lib_modify_vps_NAL(nal.data(), static_cast<unsigned int>(size)), TRUE);
    EXPECT_THAT(Bytes(nal.begin() + static_cast<std::ptrdiff_t>(size), nal.end()), testing::Each(0xCC));
}

}  // namespace
}  // namespace test
