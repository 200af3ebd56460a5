#include <gmock/gmock.h>

#include "h265.h"
#include "h265d/sei/message_scan.h"
#include "support/nal_unit.h"
#include "support/samples.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Field;

constexpr int kPrefix = 39;

const Bytes kCaptions = {0xB5, 0, 0x31, 'G', 'A', '9', '4', 3, 0xC0, 0xFF, 0xFF};
const Bytes kActiveFormat = {0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8};

TEST(RegisteredUserData, FindSuidLooksNoFurtherThanItsLength) {
    constexpr int kUntouched = -77;
    const auto find = [](const Bytes &payload, size_t length) {
        const Bytes exact(payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(length));
        int suid = kUntouched;
        const BOOL found = _FindSEIUserDataRegisteredSUID(exact.data(), static_cast<int>(length), &suid);
        return std::pair(found, suid);
    };
    const TraceCapture trace(3);
    for (size_t length = 1; length <= 9; length++) {
        EXPECT_EQ(find(kCaptions, length),
                  length > 7 ? std::pair(TRUE, int{SUID_CLOSED_CAPTION}) : std::pair(FALSE, 0));
        EXPECT_EQ(find(kActiveFormat, length),
                  length > 6 ? std::pair(TRUE, int{SUID_AFD}) : std::pair(FALSE, 0));
    }
    EXPECT_EQ(trace.Errors(),
              std::vector<std::string>(7 + 6, "Failed to determine SEI data registered type!\n"));
    EXPECT_THAT(trace.messages(), Each(Field(&TracedMessage::function, "_FindSEIUserDataRegisteredSUID")));
}

TEST(RegisteredUserData, FindSuidReportsNullPointers) {
    const TraceCapture trace;
    int suid = 0;
    EXPECT_EQ(_FindSEIUserDataRegisteredSUID(nullptr, 8, &suid), FALSE);
    EXPECT_EQ(_FindSEIUserDataRegisteredSUID(kCaptions.data(), 8, nullptr), FALSE);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("pBuffer != NULL"), AssertionOf("penSUID != NULL")));
    EXPECT_EQ(trace.messages().size(), 2u);
}

TEST(RegisteredUserData, ShortActiveFormatsAreRefusedHere) {
    unsigned char nal[] = {0, 0, 1, 0x4E, 1};
    for (const int length : {4, 0, -1}) {
        const TraceCapture trace;
        EXPECT_EQ(H265Lib_Parse_sei_afd_nal(nal, length, nullptr), FALSE);
        EXPECT_THAT(trace.Errors(),
                    ElementsAre("buffer_len:" + std::to_string(length) + " is too small. Malformed NAL.\n"));
        EXPECT_EQ(trace.messages().size(), 1u) << "nothing from the other library";
        InSilence([&] { EXPECT_EQ(H265Lib_Parse_sei_afd_nal(nal, length, nullptr), FALSE); });
    }
}

TEST(RegisteredUserData, EverythingElseIsReportedByTheOtherLibrary) {
    unsigned char nal[] = {0, 0, 1, 0x4E, 1};
    const auto is = [](const char *function, const std::string &end) {
        return testing::AllOf(Field(&TracedMessage::channel, "H264LIB"),
                              Field(&TracedMessage::function, function),
                              Field(&TracedMessage::text, testing::EndsWith(end)));
    };
    const TraceCapture trace;
    SEI_cc_t captions;
    SEI_afd_t format;
    EXPECT_EQ(H265Lib_Parse_sei_cc_nal(nal, 4, &captions), FALSE);
    EXPECT_EQ(H265Lib_Parse_sei_cc_nal(nal, 5, &captions), FALSE);
    EXPECT_EQ(H265Lib_Parse_sei_afd_nal(nal, 5, &format), FALSE);
    EXPECT_THAT(trace.messages(),
                ElementsAre(is("parse_sei_cc_nal", " of length:4 is no SEI NAL unit.\n"),
                            is("parse_sei_cc_nal", "No closed caption message in the SEI NAL unit.\n"),
                            is("parse_sei_afd_nal", "No active format description in the SEI NAL unit.\n")));
}

TEST(RegisteredUserData, NullPointersAreReportedByTheOtherLibrary) {
    unsigned char nal[] = {0, 0, 1, 0x4E, 1};
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_Parse_sei_cc_nal(nullptr, 5, nullptr), FALSE);
    EXPECT_EQ(H265Lib_Parse_sei_afd_nal(nullptr, 5, nullptr), FALSE);
    EXPECT_EQ(H265Lib_Parse_sei_afd_nal(nal, 5, nullptr), FALSE);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("buffer != NULL"), AssertionOf("sei_cc != NULL"),
                                                AssertionOf("buffer != NULL"), AssertionOf("sei_afd != NULL"),
                                                AssertionOf("sei_afd != NULL")));
    EXPECT_EQ(trace.messages().size(), 5u);
}

// Each picture has either. The text is that of CEA-608 channel 1, parity removed.
TEST(RegisteredUserData, CaptionsAndFormatsOfARealStream) {
    int formats = 0;
    int captions = 0;
    std::vector<std::string> text;
    for (Bytes &nal : SampleNalUnits("captions-a53.hevc", kPrefix)) {
        const int length = static_cast<int>(nal.size());
        SEI_cc_t cc;
        SEI_afd_t afd;
        const TraceCapture trace;
        if (H265Lib_Parse_sei_cc_nal(nal.data(), length, &cc)) {
            captions++;
            EXPECT_EQ(cc.cc_data.cc_count, 20);
            EXPECT_EQ(cc.cc_data.marker_bits, 0xFF);
            EXPECT_EQ(cc.cc_bytes[0].flag, 1);
            EXPECT_EQ(cc.cc_bytes[0].type, 0);
            EXPECT_EQ(cc.cc_bytes[19].flag, 0);
            EXPECT_EQ(cc.cc_bytes[19].type, 2);
            const char bytes[] = {static_cast<char>(cc.cc_bytes[0].data1 & 0x7F),
                                  static_cast<char>(cc.cc_bytes[0].data2 & 0x7F)};
            if (bytes[0] >= ' ')
                text.emplace_back(bytes, 2);
            EXPECT_EQ(H265Lib_Parse_sei_afd_nal(nal.data(), length, &afd), FALSE);
        } else {
            EXPECT_EQ(H265Lib_Parse_sei_afd_nal(nal.data(), length, &afd), TRUE);
            formats++;
            EXPECT_EQ(afd.afd_data.active_format_flag, 1);
            EXPECT_EQ(afd.afd_data.active_format, 8);
        }
    }
    EXPECT_EQ(captions, 12);
    EXPECT_EQ(formats, 4);
    EXPECT_THAT(text, ElementsAre("LL", "HE", "O."));  // in decoding order
}

}  // namespace
}  // namespace test
