#include <gmock/gmock.h>

#include <climits>
#include <cstring>

#include "h265/sei/built_sei.h"
#include "support/interposed.h"
#include "support/silence.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kRefused = "SEI CC RBSP Encapsulation failed!\n";

vanc_t Caption(unsigned char flag, unsigned char type, unsigned char data1, unsigned char data2) {
    vanc_t entry{};
    entry.suid = SUID_CLOSED_CAPTION;
    entry.vanc_data.caption = {flag, type, data1, data2};
    return entry;
}

vanc_t OfOtherKind(UINT suid = SUID_AFD) {
    vanc_t entry = Caption(1, 1, 0xEE, 0xEE);
    entry.suid = suid;
    return entry;
}

// Captions of every cc_valid and cc_type.
std::vector<vanc_t> Captions(int count) {
    std::vector<vanc_t> entries;
    for (int i = 0; i < count; i++)
        entries.push_back(Caption(i % 3 != 0, static_cast<unsigned char>(i % 4),
                                  static_cast<unsigned char>(0x80 + i), static_cast<unsigned char>(7 * i)));
    return entries;
}

// The NAL unit with the captions among the entries, padded to `count`.
Bytes Expected(const std::vector<vanc_t> &entries, int count) {
    Bytes rbsp = {0x04, static_cast<unsigned char>(3 * count + 11), 0xB5, 0x00, 0x31, 'G', 'A', '9', '4',
                  0x03, static_cast<unsigned char>(0xC0 | count),   0xFF};
    int taken = 0;
    for (const vanc_t &entry : entries) {
        const caption_t &caption = entry.vanc_data.caption;
        if (entry.suid != SUID_CLOSED_CAPTION || taken == count)
            continue;
        rbsp.insert(rbsp.end(), {static_cast<unsigned char>(0xF8 + caption.flag % 2 * 4 + caption.type % 4),
                                 caption.data1, caption.data2});
        taken++;
    }
    for (; taken < count; taken++)
        rbsp.insert(rbsp.end(), {0xFA, 0x00, 0x00});
    rbsp.insert(rbsp.end(), {0xFF, 0x80});
    return NalUnit(kPrefixSei, rbsp, kSeiStartCodeLength);
}

std::string Address(const void *address) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", address);
    return text;
}

std::string Capped(int count) {
    return "cc_count:" + std::to_string(count) + " is greater than maximum of 31.\n";
}

class FormatCaptionSei : public testing::Test {
 protected:
    int Format(const std::vector<vanc_t> &entries, int cc_count) {
        records_ = -1;
        output_ = Output(kCapacity);
        return H265Lib_format_sei_cc_nal(output_.data(), kCapacity, entries.data(),
                                         static_cast<int>(entries.size() * sizeof(vanc_t)), cc_count,
                                         &records_);
    }

    void ExpectFormats(const std::vector<vanc_t> &entries, int cc_count, int count, int records) {
        const Bytes nal = Expected(entries, count);
        EXPECT_EQ(Format(entries, cc_count), static_cast<int>(nal.size()));
        EXPECT_EQ(output_.bytes(), output_.Holding(nal));
        EXPECT_EQ(records_, records);
    }

    void ExpectFormatsNothing(const std::vector<vanc_t> &entries, int cc_count) {
        EXPECT_EQ(Format(entries, cc_count), 0);
        EXPECT_EQ(output_.bytes(), output_.Holding(kSeiPrefix));
        EXPECT_EQ(records_, 0);
    }

    static constexpr int kCapacity = 2000;
    ControlledClock clock_{FreshTime()};
    Output output_{kCapacity};
    int records_ = -1;
};

TEST_F(FormatCaptionSei, CaptionsAmongOtherEntriesArePaddedToTheCount) {
    std::vector<vanc_t> entries = Captions(10);
    for (int i = 0; i < 5; i++)
        entries.insert(entries.begin() + 3 * i, OfOtherKind());
    ExpectFormats(entries, 20, 20, 10);
    EXPECT_EQ(output_.data()[5 + 1], 71);
    EXPECT_EQ(output_.data()[5 + 10], 0xD4);
}

TEST_F(FormatCaptionSei, OneCaptionByteForByte) {
    EXPECT_EQ(Format({Caption(1, 0, 0x94, 0x2C)}, 2), 25);
    EXPECT_EQ(output_.bytes(),
              output_.Holding({0x00, 0x00, 0x01, 0x4E, 0x01, 0x04, 0x11, 0xB5, 0x00, 0x31, 0x47, 0x41, 0x39,
                               0x34, 0x03, 0xC2, 0xFF, 0xFC, 0x94, 0x2C, 0xFA, 0x00, 0x00, 0xFF, 0x80}));
}

TEST_F(FormatCaptionSei, EveryCountComesBack) {
    for (int count = 1; count <= 31; count++) {
        SCOPED_TRACE(count);
        for (const int given : {1, (count + 1) / 2, count, 40}) {
            const std::vector<vanc_t> entries = Captions(given);
            const int taken = std::min(given, count);
            const int length = Format(entries, count);
            Bytes nal(output_.data(), output_.data() + length);
            ASSERT_EQ(nal, Expected(entries, count));
            ASSERT_EQ(records_, taken);
            const ScannedSei sei = ScanOnly(nal);
            ASSERT_EQ(sei.suid, SUID_CLOSED_CAPTION);
            SEI_cc_t captions{};
            ASSERT_EQ(H265Lib_Parse_sei_cc_nal(nal.data(), length, &captions), TRUE);
            ASSERT_EQ(captions.header.payload_size, sei.header.payload_size);
            ASSERT_EQ(captions.cc_data.cc_count, count);
            ASSERT_EQ(captions.cc_data.process_cc_data_flag, 1);
            ASSERT_EQ(captions.cc_data.marker_bits, 0xFF);
            for (int i = 0; i < count; i++) {
                const caption_t in =
                    i < taken ? entries[static_cast<size_t>(i)].vanc_data.caption : caption_t{0, 2, 0, 0};
                const caption_t &out = captions.cc_bytes[i];
                ASSERT_THAT((Bytes{out.flag, out.type, out.data1, out.data2}),
                            ElementsAre(in.flag, in.type, in.data1, in.data2));
            }
        }
    }
}

TEST_F(FormatCaptionSei, OnlyTheLowBitsOfFlagAndTypeAreWritten) {
    Format({Caption(0xFE, 0xFD, 1, 2), Caption(0xFF, 0x06, 3, 4)}, 2);
    EXPECT_EQ(Bytes(output_.data() + 17, output_.data() + 23), (Bytes{0xF9, 1, 2, 0xFE, 3, 4}));
}

TEST_F(FormatCaptionSei, NoCaptionBytesNeedEmulationPrevention) {
    for (unsigned char code = 0; code <= 3; code++)
        for (const vanc_t &caption : {Caption(0, 0, 0, code), Caption(0, 0, code, 0)}) {
            const std::vector<vanc_t> entries(31, caption);
            ExpectFormats(entries, 31, 31, 31);
            EXPECT_EQ(Format(entries, 31), 5 + 12 + 3 * 31 + 2);
        }
}

TEST_F(FormatCaptionSei, CountsAreCappedAt31) {
    for (const int cc_count : {31, 32, 40, 511, 512}) {
        SCOPED_TRACE(cc_count);
        clock_.Set(FreshTime());
        const TraceCapture trace;
        ExpectFormats(Captions(3), cc_count, 31, 3);
        EXPECT_EQ(output_.data()[5 + 10], 0xDF);
        if (cc_count > 31)
            EXPECT_THAT(trace.Texts(4), ElementsAre(Capped(cc_count)));
        else
            EXPECT_THAT(trace.Texts(4), IsEmpty());
    }
}

TEST_F(FormatCaptionSei, TheCapIsReportedOnceASecond) {
    const std::time_t start = FreshTime();
    const auto reports = [&](std::time_t now, int level) {
        clock_.Set(now);
        const TraceCapture trace(level);
        Format(Captions(1), 40);
        return trace.Texts(4).size();
    };
    EXPECT_EQ(reports(start, 4), 1u);
    EXPECT_EQ(reports(start, 4), 0u);
    EXPECT_EQ(reports(start + 1, 4), 1u);
    EXPECT_EQ(reports(start + 2, 3), 0u);
    EXPECT_EQ(reports(start + 2, 4), 0u);  // counted although the level held it back
    EXPECT_EQ(reports(start, 4), 0u);      // a clock that was set back
    EXPECT_EQ(reports(start + 3, 4), 1u);
}

TEST_F(FormatCaptionSei, AnEncoderIdIsTakenOutOfTheCount) {
    struct Folded {
        int cc_count, encoder_id, count;
    };
    for (const Folded &folded : {Folded{513, 0, 1}, Folded{512 + 20, 0, 20}, Folded{1024 + 10, 1, 10},
                                 Folded{512 * 100 + 31, 99, 31}}) {
        SCOPED_TRACE(folded.cc_count);
        const TraceCapture trace(7);
        ExpectFormats(Captions(1), folded.cc_count, folded.count, 1);
        EXPECT_EQ(trace.Texts(7).at(0), "Derived nEncoderID:" + std::to_string(folded.encoder_id) +
                                            " from cc_count:" + std::to_string(folded.cc_count) + ".\n");
        EXPECT_THAT(trace.Texts(4), IsEmpty());
    }
    ExpectFormatsNothing(Captions(1), 1024);  // no construct
}

// The count of such a message does not fit its five bits, nor its size the size byte.
TEST_F(FormatCaptionSei, ACountBehindAnEncoderIdIsNotCapped) {
    for (const int cc_count : {512 + 32, 1024 + 511, INT_MAX}) {
        SCOPED_TRACE(cc_count);
        const TraceCapture trace(7);
        ExpectFormats(Captions(600), cc_count, cc_count % 512, cc_count % 512);
        EXPECT_THAT(trace.Texts(4), IsEmpty());
    }
    Format(Captions(1), INT_MAX);
    EXPECT_EQ(output_.data()[5 + 1], (3 * 511 + 11) % 256);
    EXPECT_EQ(output_.data()[5 + 10], 0xFF);
}

TEST_F(FormatCaptionSei, WithoutCaptionsThereIsNoNalUnit) {
    const std::vector<vanc_t> others = {OfOtherKind(0), OfOtherKind(1), OfOtherKind(3),
                                        OfOtherKind(4), OfOtherKind(7), OfOtherKind(0xFFFFFFFF)};
    for (const std::vector<vanc_t> &entries : {std::vector<vanc_t>{}, others}) {
        const TraceCapture trace(7);
        ExpectFormatsNothing(entries, 20);
        EXPECT_EQ(trace.Texts(7).back(), "SEI cc_records:0 is 0. No entries were closed captions.\n");
        EXPECT_THAT(trace.Errors(), IsEmpty());
    }
    ExpectFormatsNothing(Captions(1), 0);

    constexpr int kEntry = sizeof(vanc_t);
    const vanc_t caption = Caption(1, 0, 1, 2);
    for (const int size : {0, kEntry - 1, -1, -kEntry, INT_MIN}) {
        int records = 5;
        Output output(kCapacity);
        EXPECT_EQ(H265Lib_format_sei_cc_nal(output.data(), kCapacity, &caption, size, 20, &records), 0);
        EXPECT_EQ(records, 0);
    }
    EXPECT_EQ(H265Lib_format_sei_cc_nal(output_.data(), kCapacity, nullptr, INT_MAX, 20, nullptr), 0);
}

TEST_F(FormatCaptionSei, ABegunEntryIsNotLookedAt) {
    const std::vector<vanc_t> entries = Captions(2);
    constexpr int size = 2 * sizeof(vanc_t) - 1;
    EXPECT_EQ(H265Lib_format_sei_cc_nal(output_.data(), kCapacity, entries.data(), size, 2, &records_), 25);
    EXPECT_EQ(records_, 1);
    EXPECT_EQ(output_.bytes(), output_.Holding(Expected(Captions(1), 2)));
}

TEST_F(FormatCaptionSei, NegativeCountsTakeNothing) {
    for (const int cc_count : {-1, -2, -3, -4}) {
        SCOPED_TRACE(cc_count);
        const TraceCapture trace(4);
        ExpectFormatsNothing(Captions(3), cc_count);
        EXPECT_THAT(trace.messages(), IsEmpty());
    }
    struct TooMany {
        int cc_count, bytes_needed;
    };
    for (const TooMany &many : {TooMany{-5, -3}, TooMany{-1000, -2988}, TooMany{INT_MIN, INT_MIN + 12}}) {
        SCOPED_TRACE(many.cc_count);
        const TraceCapture trace(4);
        EXPECT_EQ(Format(Captions(3), many.cc_count), 0);
        EXPECT_EQ(records_, 0);
        EXPECT_THAT(trace.Errors(), ElementsAre("BytesNeeded:" + std::to_string(many.bytes_needed) +
                                                " is greater than MAX SEI RBSP:1850.\n"));
        EXPECT_EQ(trace.messages().size(), 1u);
        EXPECT_EQ(output_.bytes(), output_.Holding({}));
        InSilence([&] { EXPECT_EQ(Format(Captions(3), many.cc_count), 0); });
    }
}

TEST_F(FormatCaptionSei, ABufferThatIsTooSmallHoldsThePrefixAtMost) {
    const std::vector<vanc_t> entries = Captions(2);
    const Bytes nal = Expected(entries, 3);
    const auto format = [&](Output *output, int length) {
        records_ = -1;
        return H265Lib_format_sei_cc_nal(output->data(), length, entries.data(), 2 * sizeof(vanc_t), 3,
                                         &records_);
    };
    for (int length = -2; length < static_cast<int>(nal.size()); length++) {
        SCOPED_TRACE(length);
        Output output(std::max(length, 0));
        const TraceCapture trace(4);
        EXPECT_EQ(format(&output, length), 0);
        EXPECT_EQ(records_, 0);
        EXPECT_EQ(output.bytes(), output.Holding(length < 5 ? Bytes{} : kSeiPrefix));
        EXPECT_THAT(trace.Texts(4), ElementsAre(kRefused));
        EXPECT_EQ(trace.messages().size(), 1u);
    }
    Output untouched(3);
    EXPECT_EQ(format(&untouched, INT_MIN), 0);
    EXPECT_EQ(untouched.bytes(), untouched.Holding({}));
    Output exact(static_cast<int>(nal.size()));
    EXPECT_EQ(format(&exact, static_cast<int>(nal.size())), static_cast<int>(nal.size()));
    EXPECT_EQ(exact.bytes(), nal);
    EXPECT_EQ(records_, 2);

    Output short_prefix(4);
    EXPECT_EQ(H265Lib_format_sei_cc_nal(short_prefix.data(), 4, nullptr, 0, 3, nullptr), 0);
    EXPECT_EQ(short_prefix.bytes(), short_prefix.Holding({}));
}

TEST_F(FormatCaptionSei, TheNumberOfRecordsNeedNotBeAskedFor) {
    const std::vector<vanc_t> entries = Captions(1);
    EXPECT_EQ(
        H265Lib_format_sei_cc_nal(output_.data(), kCapacity, entries.data(), sizeof(vanc_t), 2, nullptr), 25);
}

TEST_F(FormatCaptionSei, ANullBufferIsReportedAndFails) {
    const std::vector<vanc_t> entries = Captions(1);
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_format_sei_cc_nal(nullptr, kCapacity, entries.data(), sizeof(vanc_t), 2, &records_), 0);
    EXPECT_EQ(records_, 0);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("buffer != NULL")));
    EXPECT_THAT(trace.Errors(), IsEmpty());
}

TEST_F(FormatCaptionSei, LooksAtTheLevelForEachEntry) {
    const std::vector<vanc_t> entries = {OfOtherKind(3), Caption(1, 0, 1, 2), Caption(1, 0, 3, 4)};
    std::vector<std::string> texts;
    DbgTraceSetSink(
        [](const DbgTraceMessage *message, void *user) {
            static_cast<std::vector<std::string> *>(user)->emplace_back(message->text);
            if (std::strstr(message->text, "is NOT Caption") != nullptr)
                g_hH265LibDbg->nMaxLevel = 8;  // raised among the entries
        },
        &texts);
    clock_.Set(FreshTime());
    g_hH265LibDbg->nMaxLevel = 6;
    Format(entries, 2);
    DbgTraceSetSink(nullptr, nullptr);
    g_hH265LibDbg->nMaxLevel = DBGTRACE_DEFAULT_LEVEL;
    const std::string vanc_data = "vanc_data:";
    EXPECT_THAT(texts, testing::IsSupersetOf({vanc_data + Address(&entries[1]) + ", Entry:1, cc_type:0.\n",
                                              vanc_data + Address(&entries[2]) + ", Entry:2, cc_type:0.\n"}));
}

TEST_F(FormatCaptionSei, TracesInputStatusAndEntries) {
    const std::vector<vanc_t> entries = {OfOtherKind(7), Caption(1, 0x13, 1, 2), OfOtherKind(1)};
    const TraceCapture trace;
    Format(entries, 5);
    const std::string vanc_data = "vanc_data:" + Address(entries.data());
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Sanity, " + vanc_data + ", vanc_size:" + std::to_string(3 * sizeof(vanc_t)) +
                            ", vanc_entries:3, cc_count:5, buffer_len:2000, BytesNeeded:27.\n"));
    EXPECT_THAT(trace.Texts(6), ElementsAre(vanc_data + ", vanc_entries:3, cc_count:5.\n",
                                            "Entry:0, SUID:7 is NOT Caption SUID:2.\n"));
    EXPECT_THAT(trace.Texts(8),
                ElementsAre("vanc_data:" + Address(&entries[1]) + ", Entry:1, cc_type:19.\n"));
    for (const TracedMessage &message : trace.messages()) {
        EXPECT_EQ(message.function, "H265Lib_format_sei_cc_nal");
        EXPECT_EQ(message.file, "closed_captions.cpp");
    }
    EXPECT_EQ(trace.messages().size(), 4u);
}

TEST_F(FormatCaptionSei, EntriesBehindTheLastCaptionTakenAreNotExamined) {
    const TraceCapture trace(6);
    ExpectFormats({Caption(1, 0, 1, 2), Caption(1, 0, 3, 4), OfOtherKind()}, 2, 2, 2);
    EXPECT_EQ(trace.Texts(6).size(), 1u);  // the status alone
}

TEST_F(FormatCaptionSei, StatusAndOtherKindsAreTracedEveryFifthSecondEachForItself) {
    const std::time_t start = FreshTime();
    struct Traced {
        bool status, other_kind;
        bool operator==(const Traced &) const = default;
    };
    const auto traced = [&](std::time_t now, bool with_other_kind, int level = 6) {
        clock_.Set(now);
        const TraceCapture trace(level);
        Format(with_other_kind ? std::vector{OfOtherKind()} : Captions(1), 1);
        Traced result{};
        for (const std::string &text : trace.Texts(6))
            (text.starts_with("Entry:") ? result.other_kind : result.status) = true;
        return result;
    };
    EXPECT_EQ(traced(start, false), (Traced{true, false}));
    EXPECT_EQ(traced(start + 2, true), (Traced{false, true}));
    EXPECT_EQ(traced(start + 4, true), (Traced{false, false}));
    EXPECT_EQ(traced(start + 5, true), (Traced{true, false}));
    EXPECT_EQ(traced(start + 7, true), (Traced{false, true}));
    EXPECT_EQ(traced(start + 20, true, 5), (Traced{false, false}));
    EXPECT_EQ(traced(start + 24, true), (Traced{false, false}));  // counted although held back
    EXPECT_EQ(traced(start + 25, true), (Traced{true, true}));
}

}  // namespace
}  // namespace test
