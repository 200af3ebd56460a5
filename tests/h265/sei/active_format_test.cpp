#include <gmock/gmock.h>

#include <climits>

#include "h265/sei/built_sei.h"
#include "support/silence.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Bytes kNoActiveFormat = {0x00, 0x00, 0x01, 0x4E, 0x01, 0x04, 0x08, 0xB5,
                               0x00, 0x31, 0x44, 0x54, 0x47, 0x31, 0x01, 0x80};

Bytes WithActiveFormat(int code) {
    return {0x00, 0x00, 0x01, 0x4E, 0x01, 0x04, 0x09, 0xB5,
            0x00, 0x31, 0x44, 0x54, 0x47, 0x31, 0x41, static_cast<unsigned char>(0xF0 | code),
            0x80};
}

vanc_t Afd(int flag, unsigned char code) {
    vanc_t entry{};
    entry.suid = SUID_AFD;
    entry.vanc_data.afd_data = {flag, code};
    return entry;
}

// Its bytes would make an active format with the flag set.
vanc_t OfOtherKind(UINT suid) {
    vanc_t entry = Afd(1, 5);
    entry.suid = suid;
    return entry;
}

int SizeOf(const std::vector<vanc_t> &entries) {
    return static_cast<int>(entries.size() * sizeof(vanc_t));
}

std::string NoAncData(const vanc_t *entries, int count) {
    char text[96];
    std::snprintf(text, sizeof text, "vanc_data:%p, vanc_entries:%d, No ANC data is present.\n",
                  static_cast<const void *>(entries), count);
    return text;
}

// What is built into a buffer with room to spare, and traced at level 8.
Bytes Formatted(const std::vector<vanc_t> &entries, int size, TraceCapture *trace) {
    Output output(32);
    trace->Clear();
    const int length = H265Lib_format_sei_afd_nal(output.data(), 32, entries.data(), size);
    EXPECT_EQ(trace->Assertions().size() + trace->Errors().size(), 0u);
    const Bytes nal(output.data(), output.data() + length);
    EXPECT_EQ(output.bytes(), output.Holding(nal));
    return nal;
}

TEST(FormatActiveFormatSei, EveryCodeComesBack) {
    for (int code = 0; code <= 15; code++) {
        SCOPED_TRACE(code);
        TraceCapture trace;
        Bytes nal = Formatted({Afd(1, static_cast<unsigned char>(code))}, sizeof(vanc_t), &trace);
        EXPECT_EQ(nal, WithActiveFormat(code));
        EXPECT_THAT(trace.messages(), IsEmpty());
        const ScannedSei sei = ScanOnly(nal);
        EXPECT_EQ(sei.suid, SUID_AFD);
        EXPECT_EQ(sei.header.payload_size, 9u);
        SEI_afd_t afd{};
        ASSERT_EQ(H265Lib_Parse_sei_afd_nal(nal.data(), static_cast<int>(nal.size()), &afd), TRUE);
        EXPECT_EQ(afd.itu_t_t35_country_code, 0xB5);
        EXPECT_EQ(afd.itu_t_t35_provider_code, 0x0031);
        EXPECT_EQ(afd.user_identifier, 0x44544731u);
        EXPECT_EQ(afd.afd_data.active_format_flag, 1);
        EXPECT_EQ(afd.afd_data.active_format, code);
        EXPECT_EQ(afd.header.payload_index, sei.header.payload_index);
    }
}

TEST(FormatActiveFormatSei, WithoutEntriesThereIsNoActiveFormat) {
    constexpr int kEntry = sizeof(vanc_t);
    const std::vector<vanc_t> entries = {Afd(1, 8)};
    for (const int size : {0, 1, kEntry - 1, -1, -kEntry, -3 * kEntry, INT_MIN}) {
        SCOPED_TRACE(size);
        TraceCapture trace;
        EXPECT_EQ(Formatted(entries, size, &trace), kNoActiveFormat);
        EXPECT_THAT(trace.Texts(4), ElementsAre(NoAncData(entries.data(), size / kEntry)));
        EXPECT_EQ(trace.messages().size(), 1u);
    }
    for (const int size : {0, kEntry, INT_MAX}) {
        TraceCapture trace;
        Bytes nal = Formatted({}, size, &trace);
        EXPECT_EQ(nal, kNoActiveFormat);
        EXPECT_THAT(trace.Texts(4), ElementsAre(NoAncData(nullptr, size / kEntry)));
        SEI_afd_t afd{};
        ASSERT_EQ(H265Lib_Parse_sei_afd_nal(nal.data(), static_cast<int>(nal.size()), &afd), TRUE);
        EXPECT_EQ(afd.afd_data.active_format_flag, 0);
    }
}

TEST(FormatActiveFormatSei, OtherKindsArePassedOverInSilence) {
    std::vector<vanc_t> entries;
    for (const UINT suid : {0U, 1U, 2U, 4U, 7U, 0xFFFFFFFFU})
        entries.push_back(OfOtherKind(suid));
    TraceCapture trace;
    EXPECT_EQ(Formatted(entries, SizeOf(entries), &trace), kNoActiveFormat);
    EXPECT_THAT(trace.messages(), IsEmpty());
    entries.push_back(Afd(1, 10));
    EXPECT_EQ(Formatted(entries, SizeOf(entries), &trace), WithActiveFormat(10));
}

TEST(FormatActiveFormatSei, TheFirstEntryWithTheFlagCounts) {
    TraceCapture trace;
    std::vector<vanc_t> entries = {Afd(0, 1), Afd(2, 2), Afd(3, 3), Afd(1, 4)};  // bit 0 is the flag
    EXPECT_EQ(Formatted(entries, SizeOf(entries), &trace), WithActiveFormat(3));
    entries[1].vanc_data.afd_data.active_format_flag = 1;
    EXPECT_EQ(Formatted(entries, SizeOf(entries), &trace), WithActiveFormat(2));
    entries.resize(1);
    EXPECT_EQ(Formatted(entries, SizeOf(entries), &trace), kNoActiveFormat);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST(FormatActiveFormatSei, ABegunEntryIsNotLookedAt) {
    TraceCapture trace;
    const std::vector<vanc_t> entries = {OfOtherKind(SUID_CLOSED_CAPTION), Afd(1, 9)};
    EXPECT_EQ(Formatted(entries, SizeOf(entries) - 1, &trace), kNoActiveFormat);
    EXPECT_EQ(Formatted(entries, SizeOf(entries), &trace), WithActiveFormat(9));
}

TEST(FormatActiveFormatSei, BitsAboveTheCodeAreReservedOnes) {
    TraceCapture trace;
    EXPECT_EQ(Formatted({Afd(1, 0x18)}, sizeof(vanc_t), &trace), WithActiveFormat(8));
    EXPECT_EQ(Formatted({Afd(-1, 0xFF)}, sizeof(vanc_t), &trace), WithActiveFormat(15));
}

TEST(FormatActiveFormatSei, ABufferThatIsTooSmallIsLeftAlone) {
    const vanc_t entry = Afd(1, 8);
    for (const bool present : {true, false}) {
        const int needed = present ? 19 : 18;
        const int size = present ? sizeof entry : 0;
        for (const int length : {needed - 1, 4, 1, 0, -1, INT_MIN}) {
            SCOPED_TRACE(length);
            Output output(std::max(length, 0));
            const TraceCapture trace;
            EXPECT_EQ(H265Lib_format_sei_afd_nal(output.data(), length, &entry, size), 0);
            EXPECT_EQ(output.bytes(), output.Holding({}));
            EXPECT_THAT(trace.Errors(), ElementsAre("SEI output buffer length:" + std::to_string(length) +
                                                    " is too small!\n"));
            std::vector<std::string> assertions;
            if (length <= 0)
                assertions.push_back(AssertionOf("BufferLen > 0"));
            if (length == 0 || length == 1)  // a negative one has become a huge one
                assertions.push_back(AssertionOf("buffer_len > 3"));
            EXPECT_EQ(trace.Assertions(), assertions);
        }
        Output output(needed);
        EXPECT_EQ(H265Lib_format_sei_afd_nal(output.data(), needed, &entry, size), needed - 2);
        EXPECT_EQ(output.bytes(), output.Holding(present ? WithActiveFormat(8) : kNoActiveFormat));
    }
}

TEST(FormatActiveFormatSei, ANullBufferIsReportedAndFails) {
    const vanc_t entry = Afd(1, 8);
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_format_sei_afd_nal(nullptr, 32, &entry, sizeof entry), 0);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("pBuffer != NULL"), AssertionOf("buffer != NULL")));
    EXPECT_THAT(trace.Errors(), IsEmpty());
    InSilence([] { EXPECT_EQ(H265Lib_format_sei_afd_nal(nullptr, 0, nullptr, 0), 0); });
}

}  // namespace
}  // namespace test
