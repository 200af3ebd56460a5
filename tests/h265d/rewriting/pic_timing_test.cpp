#include "h265d/rewriting/pic_timing.h"

#include <gmock/gmock.h>

#include <climits>
#include <cstring>
#include <memory>

#include "support/interposed.h"
#include "support/samples.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kPrefixSeiNut = 39;
constexpr UINT kFirstPayload = 2;  // behind type and size

const std::string kNoSodb = "Failed to get SODB from RBSP. Output buffer is too small.\n";
const std::string kNotSet = "Failed to set SEI pictiming parameters.\n";

class PicTimingModification : public testing::Test {
 protected:
    PicTimingModification() { vui_->frame_field_info_present_flag = 1; }

    // Changes the pic_struct to that of pt_, in a buffer of the NAL unit's size.
    BOOL Modify(Bytes *nal, UINT payload_index = kFirstPayload) {
        UINT length = static_cast<UINT>(nal->size());
        const BOOL result =
            H265Lib_modify_pictiming_sei_NAL(nal->data(), &length, vui_.get(), payload_index, &pt_);
        EXPECT_LE(length, nal->size());
        nal->resize(length);
        return result;
    }

    // The result for the payload of a prefix SEI NAL unit.
    Bytes Modified(const Bytes &rbsp, UINT payload_index = kFirstPayload) {
        Bytes nal = NalUnit(kPrefixSeiNut, rbsp);
        EXPECT_EQ(Modify(&nal, payload_index), TRUE);
        return nal;
    }

    void ExpectFailure(const Bytes &nal, UINT payload_index, const std::vector<std::string> &reports) {
        SCOPED_TRACE(reports.front());
        const auto expect_failure = [&] {
            Bytes copy = nal;
            EXPECT_EQ(Modify(&copy, payload_index), FALSE);
            EXPECT_EQ(copy, nal);
        };
        const TraceCapture trace(3);
        expect_failure();
        EXPECT_EQ(trace.Errors(), reports);
        InSilence(expect_failure);
    }

    static Bytes Nal(const Bytes &rbsp) { return NalUnit(kPrefixSeiNut, rbsp); }

    const std::unique_ptr<vui_h265_t> vui_ = std::make_unique<vui_h265_t>();
    sei_h265_pic_timing_t pt_ = {};
};

TEST_F(PicTimingModification, WritesEveryPicStruct) {
    for (unsigned int pic_struct = 0; pic_struct < 256; pic_struct++) {
        pt_.pic_struct = static_cast<unsigned char>(pic_struct);  // the low four bits
        const unsigned char first = static_cast<unsigned char>(pic_struct << 4 | 0xA);
        for (const int start_code_length : {3, 4}) {
            Bytes nal = NalUnit(kPrefixSeiNut, {1, 2, 0x5A, 0xFF, 0x80}, start_code_length);
            EXPECT_EQ(Modify(&nal), TRUE);
            EXPECT_EQ(nal, NalUnit(kPrefixSeiNut, {1, 2, first, 0xFF, 0x80}, start_code_length));
        }
    }
}

TEST_F(PicTimingModification, AppliesNoOtherField) {
    pt_.source_scan_type = 3;
    pt_.duplicate_flag = 1;
    pt_.pic_struct = 1;
    EXPECT_EQ(Modified({1, 1, 0x00, 0x80}), Nal({1, 1, 0x10, 0x80}));
}

TEST_F(PicTimingModification, TheMessagesAroundItStay) {
    pt_.pic_struct = 9;
    const Bytes before = {137, 4, 0, 0, 2, 0xFF};
    for (const UINT messages : {1U, 2U, 3U}) {
        Bytes rbsp;
        for (UINT i = 0; i < messages; i++)
            rbsp.insert(rbsp.end(), before.begin(), before.end());
        const size_t payload = rbsp.size() + 2;
        rbsp.insert(rbsp.end(), {1, 3, 0x7C, 0, 0, 1, 1, 0xF0, 0x80});  // and one more behind it
        Bytes expected = rbsp;
        expected[payload] = 0x9C;
        EXPECT_EQ(Modified(rbsp, static_cast<UINT>(payload)), Nal(expected));
    }
}

// The picture timing messages of a stream, found and read back through the public functions.
TEST_F(PicTimingModification, ChangesThePicStructOfEveryPictureOfASample) {
    const char *const file = "interlaced-field-hrd.hevc";
    const auto sps = std::make_unique<sps_h265_t>();
    const auto before = std::make_unique<sei_h265_pic_timing_t>();
    const auto after = std::make_unique<sei_h265_pic_timing_t>();
    const Bytes sps_nal = SampleNalUnits(file, 33).front();
    ASSERT_EQ(H265Lib_Parse_sps_nal(sps_nal.data(), sps_nal.size(), sps.get()), TRUE);
    *vui_ = sps->vui;
    const auto parse = [&](const Bytes &nal, const SEI_message_t &message,
                           sei_h265_pic_timing_t *pic_timing) {
        *pic_timing = {};
        return H265Lib_Parse_sei_pictiming_nal(nal.data(), static_cast<int>(nal.size()), &message, vui_.get(),
                                               pic_timing);
    };
    int pictures = 0;
    for (const Bytes &input : SampleNalUnits(file, kPrefixSeiNut)) {
        SEI_message_t message = {};
        int payload_offset = 0, header = 0, kind = 0;
        BOOL more = TRUE;
        while (more && kind != SUID_PICTURE_TIMING)
            ASSERT_EQ(H265Lib_DetermineSEIType(input.data(), static_cast<int>(input.size()), &payload_offset,
                                               &header, &message, &kind, &more),
                      TRUE);
        if (kind != SUID_PICTURE_TIMING)
            continue;
        pictures++;
        ASSERT_EQ(parse(input, message, before.get()), TRUE);
        for (unsigned char pic_struct = 0; pic_struct < 16; pic_struct++) {
            pt_.pic_struct = pic_struct;
            Bytes nal = input;
            nal.push_back(0);  // room
            ASSERT_EQ(Modify(&nal, message.payload_index), TRUE);
            ASSERT_EQ(parse(nal, message, after.get()), TRUE);
            EXPECT_EQ(after->pic_struct, pic_struct);
            after->pic_struct = before->pic_struct;
            EXPECT_EQ(std::memcmp(before.get(), after.get(), sizeof *after), 0);
            pt_.pic_struct = before->pic_struct;  // and back
            nal.push_back(0);
            ASSERT_EQ(Modify(&nal, message.payload_index), TRUE);
            EXPECT_EQ(nal, input);
        }
    }
    EXPECT_EQ(pictures, 16);
}

TEST_F(PicTimingModification, TheFirstOfSeveralMessagesOfAUnit) {
    const Bytes input = SampleNalUnits("units/sei-multiple.nal").front();
    pt_.pic_struct = 8;
    Bytes nal = input;
    EXPECT_EQ(Modify(&nal), TRUE);
    Bytes expected = input;
    ASSERT_EQ(expected[7], 0x31);
    expected[7] = 0x81;
    EXPECT_EQ(nal, expected);
}

// ---- the end of the NAL unit ---------------------------------------------------------------------------

TEST_F(PicTimingModification, ZerosBehindTheTrailingBitsAreDropped) {
    pt_.pic_struct = 1;
    for (const size_t zeros : {0U, 1U, 2U, 3U, 50U}) {
        Bytes nal = Nal({1, 1, 0x07, 0x80});
        nal.insert(nal.end(), zeros, 0);
        EXPECT_EQ(Modify(&nal), TRUE);
        EXPECT_EQ(nal, Nal({1, 1, 0x17, 0x80}));
    }
}

TEST_F(PicTimingModification, AStopBitInADataByteIsCarriedThrough) {
    pt_.pic_struct = 5;
    for (const unsigned char last : Bytes{0x84, 0x01, 0x40, 0xFF}) {
        for (const size_t zeros : {0U, 2U}) {
            Bytes nal = Nal({1, 2, 0x27, last});
            nal.insert(nal.end(), zeros, 0);
            EXPECT_EQ(Modify(&nal), TRUE);
            EXPECT_EQ(nal, Nal({1, 2, 0x57, last}));
        }
    }
    EXPECT_EQ(Modified({1, 1, 0x24}), Nal({1, 1, 0x54}));  // in the byte that changes
}

TEST_F(PicTimingModification, EmulationPreventionInFrontOfTheTrailingBitsIsTakenOff) {
    pt_.pic_struct = 0;
    Bytes nal = {0, 0, 1, 0x4E, 1, 1, 3, 0x7C, 0, 0, 3, 0x80};
    EXPECT_EQ(Modify(&nal), TRUE);  // 80 behind 00 00 needs none
    EXPECT_THAT(nal, ElementsAre(0, 0, 1, 0x4E, 1, 1, 3, 0x0C, 0, 0, 0x80));
}

// ---- emulation prevention ------------------------------------------------------------------------------

TEST_F(PicTimingModification, GrowsByAnEmulationPreventionByteWhereThereIsRoom) {
    Bytes nal = Nal({1, 3, 0x10, 0, 1, 0x80});
    const Bytes input = nal;
    nal.push_back(0);
    pt_.pic_struct = 0;
    EXPECT_EQ(Modify(&nal), TRUE);
    EXPECT_EQ(nal, Nal({1, 3, 0x00, 0, 1, 0x80}));
    EXPECT_EQ(nal.size(), input.size() + 1);
    pt_.pic_struct = 1;  // and back
    EXPECT_EQ(Modify(&nal), TRUE);
    EXPECT_EQ(nal, input);
}

TEST_F(PicTimingModification, WithoutRoomTheBufferStaysAndTheLengthIsThatOfTheHeader) {
    const Bytes input = Nal({1, 3, 0x10, 0, 1, 0x80});
    Bytes nal = input;
    UINT length = static_cast<UINT>(nal.size());
    const TraceCapture trace(3);
    EXPECT_EQ(H265Lib_modify_pictiming_sei_NAL(nal.data(), &length, vui_.get(), kFirstPayload, &pt_), TRUE);
    EXPECT_EQ(length, 6u);
    EXPECT_EQ(nal, input);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

// ---- limits --------------------------------------------------------------------------------------------

TEST_F(PicTimingModification, TakesASingleByte) {
    pt_.pic_struct = 3;
    EXPECT_EQ(Modified({0x14}, 0), Nal({0x34}));
    EXPECT_EQ(Modified({0x14, 0x80}, 0), Nal({0x34, 0x80}));
}

TEST_F(PicTimingModification, TakesAsManyBytesAsTheScratchHolds) {
    const std::string too_long =
        "Deencapsulation cannot be done as InputBufferLength:1513 is longer than "
        "OutputBufferLength:1512.\n";
    pt_.pic_struct = 3;
    for (const unsigned char last : Bytes{0x84, 0x80}) {
        // a byte of trailing bits alone does not count
        const size_t longest = last == 0x80 ? 1513 : 1512;
        Bytes nal = Nal({1, 3, 0x77});
        nal.resize(4 + longest, 0xEE);
        nal.back() = last;
        Bytes expected = nal;
        expected[8] = 0x37;
        EXPECT_EQ(Modify(&nal), TRUE);
        EXPECT_EQ(nal, expected);

        nal.insert(nal.end() - 1, 0xEE);
        const ControlledClock clock(FreshTime());  // the first report is limited in rate
        ExpectFailure(nal, kFirstPayload, {too_long, kNoSodb});
    }
}

TEST_F(PicTimingModification, AnIndexBehindTheDataFails) {
    pt_.pic_struct = 15;
    const std::vector<std::string> reports = {"Failed to set pic_struct.\n", kNotSet};
    const Bytes nal = Nal({1, 1, 0x07, 0x80});
    for (const UINT index : {3U, 4U, 5U, 1000U, UINT_MAX / 8, UINT_MAX / 8 + 1, UINT_MAX / 8 + 3, UINT_MAX})
        ExpectFailure(nal, index, reports);
    EXPECT_EQ(Modified({1, 2, 0x07, 0x24}, 3), Nal({1, 2, 0x07, 0xF4}));  // the last byte is data
}

TEST_F(PicTimingModification, WithoutFieldInfoItFailsWithATextAssertion) {
    vui_->frame_field_info_present_flag = 0;
    const TraceCapture trace;
    Bytes nal = Nal({1, 1, 0x07, 0x80});
    const Bytes input = nal;
    EXPECT_EQ(Modify(&nal), FALSE);
    EXPECT_EQ(nal, input);
    EXPECT_THAT(trace.Assertions(), ElementsAre("VUI frame_field_info_present_flag should be present.\n"));
    EXPECT_THAT(trace.Errors(), ElementsAre(kNotSet));
    const std::vector<std::string> steps = trace.Texts(7);
    ASSERT_GE(steps.size(), 2u);
    EXPECT_EQ(steps[steps.size() - 2], "Advancing to Payload index:2.\n");
    EXPECT_EQ(steps.back(), "Done.\n");
    InSilence([&] { EXPECT_EQ(Modify(&nal), FALSE); });
}

TEST_F(PicTimingModification, AMissingStartCodeFails) {
    for (Bytes nal : {Bytes{0, 0, 2, 0x4E, 1, 1, 1, 0, 0x80}, Bytes{0, 0, 0, 0, 1, 0x4E, 1, 1, 1, 0, 0x80},
                      Bytes{0, 0, 0}}) {
        char address[32];
        std::snprintf(address, sizeof address, "%p", static_cast<void *>(nal.data()));
        const Bytes input = nal;
        const TraceCapture trace(3);
        EXPECT_EQ(Modify(&nal), FALSE);
        EXPECT_EQ(nal, input);
        EXPECT_THAT(trace.Errors(), ElementsAre(std::string("Failed to get NAL type offset from pBuffer:") +
                                                address + ".\n"));
        InSilence([&] { EXPECT_EQ(Modify(&nal), FALSE); });
    }
}

TEST_F(PicTimingModification, WithoutPayloadItFails) {
    for (const Bytes &nal : {Bytes{0, 0, 1}, Bytes{0, 0, 1, 0x4E}, Bytes{0, 0, 0, 1}, Bytes{0, 0, 1, 0x4E, 1},
                             Bytes{0, 0, 0, 1, 0x4E, 1, 0, 0, 0}, Bytes{0, 0, 0, 1, 0x4E, 1, 0x80},
                             Bytes{0, 0, 1, 0x4E, 0x80}, Bytes{0, 0, 1, 0x4E, 0}, Bytes{0, 0, 1, 0, 0, 0, 0}})
        ExpectFailure(nal, kFirstPayload, {kNoSodb});
}

TEST_F(PicTimingModification, TracesItsSearchInHalfAHeaderToo) {
    Bytes nal = {0, 0, 1, 0x4E};
    const TraceCapture trace;
    ASSERT_EQ(Modify(&nal), FALSE);
    EXPECT_THAT(trace.Texts(6),
                ElementsAre("NALTypeOffset:3, PayloadStartOffset:5.\n",
                            "Found StopBitPos:2, StopBitOffsetFromEoNAL:0, LastByte[3]:4E, "
                            "NALLenWoRBSPTrailingBits:1, NALTypeOffset:3, BufferLength:4.\n"));
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Attempting to find the stop bit position for the LastByte[3]:4E.\n",
                            "ORIGINAL SEI NAL (4 bytes):\n", testing::HasSubstr("00 00 01 4E")));
}

// ---- traces and arguments ------------------------------------------------------------------------------

TEST_F(PicTimingModification, TracesAndDumpsEveryStep) {
    pt_.pic_struct = 7;
    Bytes nal = {0, 0, 0, 1, 0x4E, 1, 1, 1, 0x23, 0x80, 0, 0};
    const TraceCapture trace;
    ASSERT_EQ(Modify(&nal), TRUE);
    const auto row = [](const std::string &bytes) { return testing::HasSubstr(bytes); };
    EXPECT_THAT(trace.Texts(6),
                ElementsAre("NALTypeOffset:4, PayloadStartOffset:6.\n",
                            "Found StopBitPos:8, StopBitOffsetFromEoNAL:2, LastByte[9]:80, "
                            "NALLenWoRBSPTrailingBits:5, NALTypeOffset:4, BufferLength:12.\n",
                            "Set pic_struct to:7.\n", "MODIFIED SEI NAL (10 bytes):\n", row("01 73 80")));
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Attempting to find the stop bit position for the LastByte[11]:00.\n",
                            "Attempting to find the stop bit position for the LastByte[10]:00.\n",
                            "Attempting to find the stop bit position for the LastByte[9]:80.\n",
                            "ORIGINAL SEI NAL (12 bytes):\n", row("23 80 00 00"),
                            testing::MatchesRegex("Called, sei_nalu_bb:0x[0-9a-f]+, SEISodbLength:3.\n"),
                            "ORIGINAL PICTIMING BUFFER. (3 bytes):\n", row("01 01 23"),
                            "Advancing to Payload index:2.\n", "FINAL pictiming SEI (3 bytes):\n",
                            row("01 01 73"), "Final pictiming SEI num_bits:20, Bytes:3.\n",
                            "SEINALInputLength:12, SEINALOutputLength:10.\n"));
    EXPECT_EQ(trace.messages()[1].function, "H265Lib_modify_pictiming_sei_NAL");
    EXPECT_EQ(trace.messages().back().function, "H265Lib_modify_pictiming_sei_NAL");
}

TEST_F(PicTimingModification, ReturnsTheBytesUpToThePicStruct) {
    unsigned char sodb[4] = {1, 2, 0xFF, 0xFF};
    bitbuffer_t bb{sodb, 0, 32};
    EXPECT_EQ(_modify_sei_pictiming_parameters(&bb, 4, vui_.get(), 2, &pt_), 3);
    EXPECT_EQ(bb.bit_offset, 20u);
    EXPECT_THAT(sodb, ElementsAre(1, 2, 0x0F, 0xFF));
    bb = {sodb, 0, 27};  // three bits of room
    const TraceCapture trace(3);
    EXPECT_EQ(_modify_sei_pictiming_parameters(&bb, 0, vui_.get(), 3, &pt_), -1);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("SEISodbLength > 0")));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to set pic_struct.\n"));
    EXPECT_EQ(trace.messages().back().function, "_modify_sei_pictiming_parameters");
    EXPECT_EQ(sodb[3], 0xFF);
}

TEST_F(PicTimingModification, NullArgumentsAreReportedAndFail) {
    Bytes nal = Nal({1, 1, 0x07, 0x80});
    UINT length = static_cast<UINT>(nal.size());
    const vui_h265_t *const vui = vui_.get();
    bitbuffer_t bb{};
    TraceCapture trace(3);
    EXPECT_EQ(H265Lib_modify_pictiming_sei_NAL(nullptr, &length, vui, 2, &pt_), FALSE);
    EXPECT_EQ(H265Lib_modify_pictiming_sei_NAL(nal.data(), nullptr, vui, 2, &pt_), FALSE);
    EXPECT_EQ(H265Lib_modify_pictiming_sei_NAL(nal.data(), &length, nullptr, 2, &pt_), FALSE);
    EXPECT_EQ(H265Lib_modify_pictiming_sei_NAL(nal.data(), &length, vui, 2, nullptr), FALSE);
    EXPECT_EQ(_modify_sei_pictiming_parameters(nullptr, 1, vui, 2, &pt_), -1);
    EXPECT_EQ(_modify_sei_pictiming_parameters(&bb, 1, nullptr, 2, &pt_), -1);
    EXPECT_EQ(_modify_sei_pictiming_parameters(&bb, 1, vui, 2, nullptr), -1);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("pBuffer != NULL"), AssertionOf("pBuffer != NULL"),
                            AssertionOf("pBufferLen != NULL"), AssertionOf("pVUI != NULL"),
                            AssertionOf("pVUI != NULL"), AssertionOf("pPt != NULL"),
                            AssertionOf("pPt != NULL"), AssertionOf("sei_nalu_bb != NULL"),
                            AssertionOf("pVUI != NULL"), AssertionOf("pPt != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to get NAL type offset from pBuffer:(nil).\n",
                                            "Failed to set SEI pictiming parameters.\n",
                                            "Failed to set SEI pictiming parameters.\n"));
    trace.Clear();
    length = 3;
    EXPECT_EQ(H265Lib_modify_pictiming_sei_NAL(nal.data(), &length, vui, 2, &pt_), FALSE);
    EXPECT_EQ(length, 3u);
    EXPECT_THAT(trace.Assertions(), testing::Contains(AssertionOf("*pBufferLen >= 4")));
}

}  // namespace
}  // namespace test
