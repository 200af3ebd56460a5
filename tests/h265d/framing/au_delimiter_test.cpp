#include "h265d/framing/au_delimiter.h"

#include <gmock/gmock.h>

#include "support/bit_string.h"
#include "support/nal_unit.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

constexpr int kAudNut = 35;

// The delimiter's data as the reader takes it, with a header in front: nal_type in bits 1 to 6, pic_type in
// bits 22 to 24.
BitString WithHeader(unsigned int nal_type, unsigned int pic_type) {
    return BitString().U(1, 1).U(6, nal_type).U(15, 0x5554).U(3, pic_type).U(7, 0x2A);
}

TEST(AuDelimiterParsing, AnOrdinaryDelimiterIsTooShort) {
    Bytes nal = {0, 0, 0, 1, 0x46, 1, 0x50};
    aud_h265_t aud{99, 99};
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_Parse_au_delimiter_nal(nal.data(), 7, &aud), FALSE);
    EXPECT_EQ(aud.nal_type, 40);  // bits 1 to 6 of 0x50
    EXPECT_EQ(aud.pic_type, 99);
    EXPECT_THAT(trace.Errors(),
                ElementsAre(MatchesRegex("Failed to parse aud NAL! aud_bb:0x[0-9a-f]+, num_bits:8, "
                                         "bit_offset:22, aud_data:0x[0-9a-f]+.\n")));
    EXPECT_THAT(trace.Texts(6), IsEmpty());
    EXPECT_EQ(trace.messages().back().function, "H265Lib_Parse_au_delimiter_nal");
    InSilence([&] { EXPECT_EQ(H265Lib_Parse_au_delimiter_nal(nal.data(), 7, &aud), FALSE); });
}

TEST(AuDelimiterParsing, ReadsTheTypesBehindARepeatedHeader) {
    for (const unsigned int pic_type : {0u, 1u, 2u, 5u, 7u}) {
        for (const int start_code_length : {3, 4}) {
            Bytes nal = NalUnit(kAudNut, WithHeader(kAudNut, pic_type).Bytes(), start_code_length);
            aud_h265_t aud{99, 99};
            const TraceCapture trace;
            EXPECT_EQ(H265Lib_Parse_au_delimiter_nal(nal.data(), static_cast<int>(nal.size()), &aud), TRUE);
            EXPECT_EQ(aud.nal_type, kAudNut);
            EXPECT_EQ(aud.pic_type, pic_type);
            EXPECT_THAT(trace.Texts(6),
                        ElementsAre("Sanity Check, Bitbuffer length:32, Current offset:25.\n"));
            EXPECT_EQ(trace.messages().size(), 2u);  // and the start code
            EXPECT_EQ(trace.messages().back().function, "_parse_aud");
            EXPECT_EQ(trace.messages().back().file, "au_delimiter.cpp");
        }
    }
}

TEST(AuDelimiterParsing, CutAtEveryBit) {
    for (unsigned int length = 0; length <= 32; length++) {
        SCOPED_TRACE(length);
        std::vector<unsigned char> bytes = WithHeader(21, 5).Prefix(length).Bytes();
        bitbuffer_t bb{bytes.data(), 0, length};
        aud_h265_t aud{99, 99};
        const TraceCapture trace;
        EXPECT_EQ(_parse_aud(&bb, &aud), length >= 25);
        EXPECT_EQ(aud.nal_type, length >= 7 ? 21 : 99);
        EXPECT_EQ(aud.pic_type, length >= 25 ? 5 : 99);
        EXPECT_THAT(trace.Errors(), IsEmpty());
        EXPECT_EQ(trace.Texts(6).size(), length >= 25 ? 1u : 0u);
        InSilence([&] {
            bb = {bytes.data(), 0, length};
            EXPECT_EQ(_parse_aud(&bb, &aud), length >= 25);
        });
    }
}

TEST(AuDelimiterParsing, ReaderRefusesNullArguments) {
    bitbuffer_t bb{};
    aud_h265_t aud{99, 99};
    const TraceCapture trace;
    EXPECT_EQ(_parse_aud(nullptr, &aud), FALSE);
    EXPECT_EQ(_parse_aud(&bb, nullptr), FALSE);
    EXPECT_THAT(
        trace.Errors(),
        ElementsAre(MatchesRegex("Failed to parse aud NAL! aud_bb:\\(nil\\), aud_data:0x[0-9a-f]+.\n"),
                    MatchesRegex("Failed to parse aud NAL! aud_bb:0x[0-9a-f]+, aud_data:\\(nil\\).\n")));
    EXPECT_EQ(trace.messages().size(), 2u);
}

TEST(AuDelimiterParsing, NullBufferFails) {
    aud_h265_t aud{99, 99};
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_Parse_au_delimiter_nal(nullptr, 7, &aud), FALSE);
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to parse aud NAL! buffer:(nil).\n"));
    EXPECT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(aud.nal_type, 99);
}

TEST(AuDelimiterParsing, NullRecordIsReportedByReaderAndEntryPoint) {
    Bytes nal = NalUnit(kAudNut, WithHeader(kAudNut, 2).Bytes());
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_Parse_au_delimiter_nal(nal.data(), static_cast<int>(nal.size()), nullptr), FALSE);
    EXPECT_THAT(
        trace.Errors(),
        ElementsAre(MatchesRegex("Failed to parse aud NAL! aud_bb:0x[0-9a-f]+, aud_data:\\(nil\\).\n"),
                    MatchesRegex("Failed to parse aud NAL! aud_bb:0x[0-9a-f]+, num_bits:32, "
                                 "bit_offset:0, aud_data:\\(nil\\).\n")));
    EXPECT_THAT(trace.Assertions(), IsEmpty());
}

}  // namespace
}  // namespace test
