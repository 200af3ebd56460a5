#include "h265/sei/pic_timing.h"

#include <gmock/gmock.h>

#include <climits>
#include <cstring>

#include "h265/sei/built_sei.h"
#include "support/silence.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kWriter = "_set_pictiming_elements";
const std::string kRefused = "SEI pictiming RBSP Encapsulation failed!\n";
const std::string kTooShort = AssertionOf("*pBufferLen >= MIN_PICTIMING_SEI_NAL_LENGTH");

const auto kVui = std::make_unique<vui_h265_t>();  // large records
const auto kTiming = std::make_unique<sei_h265_pic_timing_t>();

class FormatPicTimingSei : public testing::Test {
 protected:
    FormatPicTimingSei() {
        pt_.pic_struct = 1;
        pt_.source_scan_type = 2;
        pt_.duplicate_flag = 1;
        pt_.au_cpb_removal_delay_minus1 = 0x12345678;
        pt_.pic_dpb_output_delay = 0x9ABCDEF1;
    }

    // With NAL parameters, VCL parameters, or (with neither) no delays at all.
    void SetHrd(int nal, int vcl, int au_cpb_removal_delay_length = 1, int dpb_output_delay_length = 1) {
        hrd_.nal_hrd_parameters_present_flag = nal;
        hrd_.vcl_hrd_parameters_present_flag = vcl;
        hrd_.au_cpb_removal_delay_length_minus1 = static_cast<unsigned char>(au_cpb_removal_delay_length - 1);
        hrd_.dpb_output_delay_length_minus1 = static_cast<unsigned char>(dpb_output_delay_length - 1);
    }

    // The message as clause D.2.3 has it, without decoding units; delays longer than 32 bits are left out.
    Syntax Message() const {
        return SeiMessage(1, [this](Syntax *payload) {
            const std::string scan_type = "Failed to set source_scan_type:";
            payload
                ->U(4, pt_.pic_struct, kNotKept,
                    "Failed to set pic_struct:" + std::to_string(pt_.pic_struct) + ".\n")
                .U(2, pt_.source_scan_type, kNotKept,
                   scan_type + std::to_string(pt_.source_scan_type) + ".\n")
                .U(1, pt_.duplicate_flag != 0, kNotKept,
                   scan_type + std::to_string(pt_.duplicate_flag) + ".\n");
            if (!hrd_.nal_hrd_parameters_present_flag && !hrd_.vcl_hrd_parameters_present_flag)
                return;
            if (hrd_.au_cpb_removal_delay_length_minus1 < 32)
                payload->U(hrd_.au_cpb_removal_delay_length_minus1 + 1U, pt_.au_cpb_removal_delay_minus1,
                           kNotKept, "Failed to set au_cpb_removal_delay_minus1.\n");
            if (hrd_.dpb_output_delay_length_minus1 < 32)
                payload->U(hrd_.dpb_output_delay_length_minus1 + 1U, pt_.pic_dpb_output_delay, kNotKept,
                           "Failed to set dpb_output_delay.\n");
        });
    }

    // Builds it into a block of the capacity.
    BOOL Format(Output *output, int capacity) {
        length_ = static_cast<UINT>(capacity);
        return H265Lib_format_sei_pictiming_nal(output->data(), &length_, &vui_, &pt_);
    }

    Bytes ExpectFormats() {
        const Bytes nal = SeiNalUnit(Message());
        Output output(40);
        EXPECT_EQ(Format(&output, 40), TRUE);
        EXPECT_EQ(length_, nal.size());
        EXPECT_EQ(output.bytes(), output.Holding(nal));
        return nal;
    }

    void ExpectComesBack(UINT64 mask_au_cpb, UINT64 mask_dpb) {
        const Bytes nal = ExpectFormats();
        const ScannedSei sei = ScanOnly(nal);
        EXPECT_EQ(sei.suid, SUID_PICTURE_TIMING);
        vui_.frame_field_info_present_flag = 1;
        vui_.CpbDpbDelaysPresentFlag =
            hrd_.nal_hrd_parameters_present_flag || hrd_.vcl_hrd_parameters_present_flag;
        sei_h265_pic_timing_t &read = *kTiming;
        std::memset(&read, 0, sizeof read);
        ASSERT_EQ(H265Lib_Parse_sei_pictiming_nal(nal.data(), static_cast<int>(nal.size()), &sei.header,
                                                  &vui_, &read),
                  TRUE);
        EXPECT_EQ(read.pic_struct, pt_.pic_struct);
        EXPECT_EQ(read.source_scan_type, pt_.source_scan_type);
        EXPECT_EQ(read.duplicate_flag, pt_.duplicate_flag);
        EXPECT_EQ(read.au_cpb_removal_delay_minus1, pt_.au_cpb_removal_delay_minus1 & mask_au_cpb);
        EXPECT_EQ(read.pic_dpb_output_delay, pt_.pic_dpb_output_delay & mask_dpb);
    }

    void Sweep() {
        SweepCapacities(Message(), kWriter,
                        [this](bitbuffer_t *bb) { return _set_pictiming_elements(bb, 32, &vui_, &pt_); });
    }

    vui_h265_t &vui_ = *kVui = {};
    hrd_h265_t &hrd_ = vui_.nal_hrd;
    sei_h265_pic_timing_t pt_{};
    UINT length_ = 0;
};

TEST_F(FormatPicTimingSei, WithoutHrdThereAreSevenBits) {
    Output output(32);
    EXPECT_EQ(Format(&output, 32), TRUE);
    EXPECT_EQ(length_, 9u);
    EXPECT_EQ(output.bytes(), output.Holding({0x00, 0x00, 0x01, 0x4E, 0x01, 0x01, 0x01, 0x1B, 0x80}));
}

TEST_F(FormatPicTimingSei, WithNalParametersThereAreTheDelays) {
    SetHrd(1, 0, 24, 5);
    pt_.au_cpb_removal_delay_minus1 = 0xABCDEF;
    pt_.pic_dpb_output_delay = 0x15;
    Output output(32);
    EXPECT_EQ(Format(&output, 32), TRUE);
    EXPECT_EQ(length_, 13u);
    // 0001 10 1, 24 bits, 10101, 1000
    EXPECT_EQ(output.bytes(),
              output.Holding({0x00, 0x00, 0x01, 0x4E, 0x01, 0x01, 0x05, 0x1B, 0x57, 0x9B, 0xDF, 0x58, 0x80}));
}

TEST_F(FormatPicTimingSei, EveryLengthOfADelayComesBack) {
    for (int au_cpb = 1; au_cpb <= 32; au_cpb++) {
        for (int dpb = 1; dpb <= 32; dpb++) {
            SCOPED_TRACE(std::to_string(au_cpb) + " " + std::to_string(dpb));
            SetHrd(au_cpb % 2, au_cpb % 2 == 0 || dpb % 3 == 0, au_cpb, dpb);
            for (const UINT64 value : {UINT64{0}, UINT64{0xFFFFFFFF}, UINT64{0x5A00'0003}}) {
                pt_.au_cpb_removal_delay_minus1 = value;
                pt_.pic_dpb_output_delay = ~value & 0xFFFFFFFF;
                ExpectComesBack((UINT64{1} << au_cpb) - 1, (UINT64{1} << dpb) - 1);
                if (HasFailure())
                    return;
            }
        }
    }
}

TEST_F(FormatPicTimingSei, TheFrameAndFieldElementsComeBack) {
    for (int flag = 0; flag <= 1; flag++) {
        for (unsigned char pic_struct = 0; pic_struct <= 12; pic_struct++) {  // the values of Table D.2
            for (unsigned char scan_type = 0; scan_type <= 3; scan_type++) {
                pt_.pic_struct = pic_struct;
                pt_.source_scan_type = scan_type;
                pt_.duplicate_flag = flag;
                ExpectComesBack(0, 0);
            }
        }
    }
}

TEST_F(FormatPicTimingSei, TheVuisOwnFlagsDoNotCount) {
    const Bytes nal = ExpectFormats();
    vui_.frame_field_info_present_flag = 1;
    vui_.CpbDpbDelaysPresentFlag = 1;
    EXPECT_EQ(ExpectFormats(), nal);
}

TEST_F(FormatPicTimingSei, ValuesGoThroughTheirLowBits) {
    SetHrd(1, 1, 32, 7);
    pt_.pic_struct = 0xF3;
    pt_.source_scan_type = 0xFD;
    pt_.au_cpb_removal_delay_minus1 = 0xFFFF'FFFF'1234'5678;
    pt_.pic_dpb_output_delay = 0xFFFF'FFFF'0000'00AA;
    ExpectFormats();
}

TEST_F(FormatPicTimingSei, HasEmulationPreventionWhereverItNeedsIt) {
    SetHrd(1, 0, 32, 32);  // 71 bits, and the alignment's 1
    for (size_t place = 0; place + 3 <= 9; place++) {
        for (unsigned char code = 0; code <= 4; code++) {
            if (place + 3 == 9 && code % 2 == 0)
                continue;
            SCOPED_TRACE(std::to_string(place) + " " + std::to_string(code));
            Bytes payload(9, 0x55);
            payload[place] = payload[place + 1] = 0;
            payload[place + 2] = code;
            bitbuffer_t bb{payload.data(), 0, 71};
            uint32_t au_cpb_removal_delay_minus1 = 0;
            uint32_t pic_dpb_output_delay = 0;
            GetNextNBitsAsUint8(&bb, 4, &pt_.pic_struct);
            GetNextNBitsAsUint8(&bb, 2, &pt_.source_scan_type);
            GetNextBitEx(&bb, &pt_.duplicate_flag);
            GetNextNBitsAsUint32(&bb, 32, &au_cpb_removal_delay_minus1);
            GetNextNBitsAsUint32(&bb, 32, &pic_dpb_output_delay);
            pt_.au_cpb_removal_delay_minus1 = au_cpb_removal_delay_minus1;
            pt_.pic_dpb_output_delay = pic_dpb_output_delay;

            const Bytes nal = ExpectFormats();
            ASSERT_EQ(nal, Joined({kSeiPrefix, Encapsulated(Joined({{1, 9}, payload, {0x80}}))}));
            ASSERT_EQ(nal.size(), 5 + 2 + 9 + 1 + (code <= 3));
            ExpectComesBack(0xFFFFFFFF, 0xFFFFFFFF);
        }
    }
}

TEST_F(FormatPicTimingSei, DelaysLongerThan32BitsAreReportedAndLeftOut) {
    const std::string longer = "\" is longer than expected\n";
    for (const int length : {33, 64, 256}) {
        SCOPED_TRACE(length);
        const TraceCapture trace(3);
        SetHrd(1, 0, length, 6);
        ExpectFormats();
        SetHrd(0, 1, 6, length);
        ExpectFormats();
        SetHrd(1, 1, length, length);
        ExpectFormats();
        const std::string au_cpb = "Syntax Element \"au_cpb_removal_delay_length_minus1" + longer;
        const std::string dpb = "Syntax Element \"dpb_output_delay_length_minus1" + longer;
        EXPECT_THAT(trace.Assertions(), ElementsAre(au_cpb, dpb, au_cpb, dpb));
        EXPECT_THAT(trace.Errors(), IsEmpty());
        EXPECT_EQ(trace.messages()[0].function, kWriter);
        InSilence([this] { ExpectFormats(); });
    }
}

TEST_F(FormatPicTimingSei, DecodingUnitsAreReportedAndLeftOut) {
    SetHrd(1, 0, 24, 5);
    const Bytes nal = ExpectFormats();
    for (int flags = 0; flags <= 3; flags++) {
        SCOPED_TRACE(flags);
        hrd_.sub_pic_hrd_params_present_flag = flags & 1;
        hrd_.sub_pic_cpb_params_in_pic_timing_sei_flag = flags >> 1;
        const TraceCapture trace(3);
        EXPECT_EQ(ExpectFormats(), nal);
        EXPECT_EQ(trace.Assertions(),
                  flags == 3 ? std::vector{AssertionOf("0")} : std::vector<std::string>{});
    }
    SetHrd(0, 0);
    const TraceCapture trace(3);
    EXPECT_EQ(ExpectFormats().size(), 9u);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("0")));
    InSilence([this] { EXPECT_EQ(ExpectFormats().size(), 9u); });
}

TEST_F(FormatPicTimingSei, ACapacityBelow32IsReportedAndUsed) {
    SetHrd(1, 0, 24, 5);
    const Bytes nal = SeiNalUnit(Message());
    for (int capacity = 0; capacity <= 33; capacity++) {
        SCOPED_TRACE(capacity);
        const bool fits = capacity >= static_cast<int>(nal.size());
        const auto format = [&] {
            Output output(capacity);
            EXPECT_EQ(Format(&output, capacity), fits ? TRUE : FALSE);
            EXPECT_EQ(length_, fits ? nal.size() : static_cast<UINT>(capacity));
            EXPECT_EQ(output.bytes(), output.Holding(fits ? nal : capacity < 5 ? Bytes{} : kSeiPrefix));
        };
        InSilence(format);
        const TraceCapture trace(4);
        format();
        EXPECT_EQ(trace.Assertions(), capacity < 32 ? std::vector{kTooShort} : std::vector<std::string>{});
        EXPECT_EQ(trace.Texts(4), fits ? std::vector<std::string>{} : std::vector{kRefused});
        EXPECT_THAT(trace.Errors(), IsEmpty());
        EXPECT_EQ(trace.messages().size(), trace.Assertions().size() + !fits);
    }
}

TEST_F(FormatPicTimingSei, AHugeCapacityIsAsGoodAsAny) {
    const Bytes nal = SeiNalUnit(Message());
    for (const UINT capacity : {static_cast<UINT>(INT_MAX), static_cast<UINT>(INT_MAX) + 1, UINT_MAX}) {
        Output output(static_cast<int>(nal.size()));
        length_ = capacity;
        EXPECT_EQ(H265Lib_format_sei_pictiming_nal(output.data(), &length_, &vui_, &pt_), TRUE);
        EXPECT_EQ(length_, nal.size());
        EXPECT_EQ(output.bytes(), nal);
    }
}

TEST_F(FormatPicTimingSei, TracesTheSizeTheBytesAndTheLengths) {
    const TraceCapture trace;
    Output output(32);
    EXPECT_EQ(Format(&output, 32), TRUE);
    const std::vector<std::string> texts = trace.Texts(7);
    ASSERT_GE(texts.size(), 4u);
    EXPECT_EQ(texts[0], "last_payload_size_byte:1, bitoffset before/after:8/24.\n");
    EXPECT_EQ(texts[1].substr(0, 19), "FINAL PICTIMING SEI");
    EXPECT_NE(texts[1].find("32 bytes"), std::string::npos);
    EXPECT_EQ(texts.back(), "Final sei pictiming num_bits:32, Bytes:4.\n");
    EXPECT_EQ(trace.messages().size(), texts.size());
    EXPECT_EQ(trace.messages().back().function, kWriter);
    EXPECT_EQ(trace.messages().back().file, "pic_timing.cpp");
}

TEST_F(FormatPicTimingSei, NullPointersAreReportedAndFail) {
    Output output(32);
    length_ = 32;
    TraceCapture trace;
    const auto expect_refused = [&](BOOL result, const std::string &assertion) {
        EXPECT_EQ(result, FALSE);
        EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf(assertion)));
        EXPECT_EQ(trace.messages().size(), 1u);
        trace.Clear();
    };
    expect_refused(H265Lib_format_sei_pictiming_nal(nullptr, &length_, &vui_, &pt_), "pBuffer != NULL");
    expect_refused(H265Lib_format_sei_pictiming_nal(output.data(), nullptr, &vui_, &pt_),
                   "pBufferLen != NULL");
    expect_refused(H265Lib_format_sei_pictiming_nal(output.data(), &length_, nullptr, &pt_), "pVui != NULL");
    expect_refused(H265Lib_format_sei_pictiming_nal(output.data(), &length_, &vui_, nullptr), "pPt != NULL");
    EXPECT_EQ(length_, 32u);
    EXPECT_EQ(output.bytes(), output.Holding({}));
}

using PicTimingElements = FormatPicTimingSei;

TEST_F(PicTimingElements, WithoutDelays) {
    for (int flag = 0; flag <= 1; flag++) {
        pt_.duplicate_flag = flag;
        Sweep();
    }
}

TEST_F(PicTimingElements, WithDelays) {
    for (const auto &[au_cpb, dpb] : {std::pair{24, 5}, {1, 1}, {32, 32}, {8, 17}}) {
        SCOPED_TRACE(au_cpb);
        SetHrd(1, 0, au_cpb, dpb);
        Sweep();
    }
}

TEST_F(PicTimingElements, ALengthOfNothingIsReportedOnly) {
    for (const int length : {0, -1, INT_MIN}) {
        unsigned char bytes[4] = {};
        bitbuffer_t bb{bytes, 0, 32};
        const TraceCapture trace(3);
        EXPECT_EQ(_set_pictiming_elements(&bb, length, &vui_, &pt_), 4);
        EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("PicTimingSodbLength > 0")));
    }
}

TEST_F(PicTimingElements, NullPointersAreReportedAndFail) {
    bitbuffer_t bb{};
    TraceCapture trace;
    const auto expect_refused = [&](int result, const std::string &assertion) {
        EXPECT_EQ(result, -1);
        EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf(assertion)));
        EXPECT_EQ(trace.messages().size(), 1u);
        trace.Clear();
    };
    expect_refused(_set_pictiming_elements(nullptr, 32, &vui_, &pt_), "pictiming_bb != NULL");
    expect_refused(_set_pictiming_elements(&bb, 32, nullptr, &pt_), "pVui != NULL");
    expect_refused(_set_pictiming_elements(&bb, 32, &vui_, nullptr), "pPt != NULL");
}

}  // namespace
}  // namespace test
