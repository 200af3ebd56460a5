#include "h265d/sei/time_code.h"

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

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int kPrefix = 39;
constexpr char kNoSodb[] = "Failed to deencapsulate SODB from NAL.\n";

// One clock timestamp: which of its parts are there.
struct Clock {
    int present = 1;
    int full = 1;
    int parts = 0;  // without the full flag: of seconds, minutes and hours
    unsigned int offset_length = 0;
    int64_t offset = 0;
};

class TimeCodeSei : public testing::Test {
 protected:
    TimeCodeSei() { std::memset(&tc_, kPrefill, sizeof tc_); }

// An element of clock i. What is told of it, when it cannot be read, has no index.
#define CLOCK_ELEMENT(name) &tc_.name[i], #name

    void Build(const std::vector<Clock> &clocks) {
        Build(clocks.size(), clocks);
    }
    void Build(uint64_t num_clocks_ts, const std::vector<Clock> &clocks) {
        syntax_ = {};
        syntax_.U(2, num_clocks_ts, &tc_.num_clocks_ts, "num_clocks_ts");
        for (size_t i = 0; i < clocks.size(); i++) {
            syntax_.Flag(clocks[i].present, CLOCK_ELEMENT(clock_timestamp_flag));
            if (clocks[i].present)
                AddClock(i, clocks[i]);
        }
    }

    void AddClock(size_t i, const Clock &clock) {
        syntax_.Flag(1, CLOCK_ELEMENT(units_field_based_flag))
            .U(5, 20 + i, CLOCK_ELEMENT(counting_type))
            .Flag(clock.full, CLOCK_ELEMENT(full_timestamp_flag))
            .Flag(0, CLOCK_ELEMENT(discontinuity_flag))
            .Flag(1, CLOCK_ELEMENT(cnt_drop_flag))
            .U(9, 300 + i, CLOCK_ELEMENT(n_frames));
        if (clock.full)  // implied: flags of no bits
            syntax_.U(0, 1, CLOCK_ELEMENT(seconds_flag))
                .U(0, 1, CLOCK_ELEMENT(minutes_flag))
                .U(0, 1, CLOCK_ELEMENT(hours_flag));
        const int parts = clock.full ? 3 : clock.parts;
        const auto flag = [&](int value, int *field, const std::string &name) {
            if (!clock.full)
                syntax_.Flag(value, field, name);
        };
        flag(parts > 0, CLOCK_ELEMENT(seconds_flag));
        if (parts > 0) {
            syntax_.U(6, 50 + i, CLOCK_ELEMENT(seconds_value));
            flag(parts > 1, CLOCK_ELEMENT(minutes_flag));
        }
        if (parts > 1) {
            syntax_.U(6, 40 + i, CLOCK_ELEMENT(minutes_value));
            flag(parts > 2, CLOCK_ELEMENT(hours_flag));
        }
        if (parts > 2)
            syntax_.U(5, 20 + i, CLOCK_ELEMENT(hours_value));
        syntax_.U(5, clock.offset_length, CLOCK_ELEMENT(time_offset_length));
        if (clock.offset_length > 0)
            syntax_.U(clock.offset_length, static_cast<uint64_t>(clock.offset),
                      CLOCK_ELEMENT(time_offset_value));
    }

    // Cuts the message at every bit. The reader itself reports nothing: its code is reported here, under the
    // name of the element that had it first, so that two elements with one code do not go unnoticed.
    void Sweep() {
        syntax_.SweepTruncations(&tc_, [this](bitbuffer_t *bb, sei_h265_time_code_t *tc) {
            const SEI_message_t message = {};
            int line = 0;
            if (_parse_sei_timecode(bb, &message, tc, &line) == TRUE) {
                EXPECT_EQ(line, 0);
                return true;
            }
            EXPECT_NE(line, 0);
            const std::vector<std::string> reports = syntax_.ReportsWhenCut(bb->num_bits);
            if (!reports.empty())
                elements_.try_emplace(line, reports.front());
            if (g_hH265LibDbg != nullptr && g_hH265LibDbg->nMaxLevel >= 3)
                _DoDbgPrintEx(g_hH265LibDbg, 3, "", "", 0, "%s", elements_[line].c_str());
            return false;
        });
    }

    BOOL Parse(int *line, UINT payload_index = 0) {
        std::vector<unsigned char> bytes = syntax_.bits().Bytes();
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(syntax_.bits().size())};
        const SEI_message_t message = {136, 5, payload_index};
        return _parse_sei_timecode(&bb, &message, &tc_, line);
    }

    BOOL ParseNal(const Bytes &nal, UINT payload_index = 2) {
        const SEI_message_t message = {136, 5, payload_index};
        return H265Lib_Parse_sei_timecode_nal(nal.data(), static_cast<int>(nal.size()), &message, &tc_);
    }

    Syntax syntax_;
    sei_h265_time_code_t tc_;
    std::map<int, std::string> elements_;  // by the code of their failure
};

TEST_F(TimeCodeSei, NoClockReadsTwoBits) {
    Build({});
    EXPECT_EQ(syntax_.bits().size(), 2u);
    Sweep();
    EXPECT_EQ(tc_.clock_timestamp_flag[0], PrefilledValue<int>());
}

TEST_F(TimeCodeSei, EveryCombinationOfPartsCutAtEveryBit) {
    for (const int full : {0, 1}) {
        for (int parts = 0; parts <= (full ? 0 : 3); parts++) {
            for (const auto &[length, offset] : {std::pair<unsigned int, int64_t>{0, 0},
                                                 {1, -1},
                                                 {5, -1},
                                                 {5, 15},
                                                 {31, -(1 << 30)},
                                                 {31, (1 << 30) - 1}}) {
                SCOPED_TRACE(testing::Message() << full << ' ' << parts << ' ' << offset);
                Build({{.full = full, .parts = parts, .offset_length = length, .offset = offset}});
                Sweep();
            }
        }
    }
    EXPECT_EQ(elements_.size(), 16u + 3) << "three of the elements are read in two places";
}

TEST_F(TimeCodeSei, UpToThreeClocks) {
    const Clock absent = {.present = 0};
    const Clock full = {.offset_length = 5, .offset = -16};
    const Clock minutes = {.full = 0, .parts = 2, .offset_length = 31, .offset = 1};
    for (const std::vector<Clock> &clocks : {std::vector{absent},
                                             {absent, absent, absent},
                                             {full, minutes},
                                             {minutes, absent, full},
                                             {absent, full, minutes},
                                             {full, full, full}}) {
        Build(clocks);
        Sweep();
    }
}

TEST_F(TimeCodeSei, ImpliedFlagsAndAbsentPartsInAPrefilledRecord) {
    int line = 0;
    Build({{}, {.full = 0}});
    EXPECT_EQ(Parse(&line), TRUE);
    EXPECT_THAT(tc_.seconds_flag, ElementsAre(1, 0, PrefilledValue<int>()));
    EXPECT_THAT(tc_.minutes_flag, ElementsAre(1, PrefilledValue<int>(), PrefilledValue<int>()));
    EXPECT_THAT(tc_.hours_flag, ElementsAre(1, PrefilledValue<int>(), PrefilledValue<int>()));
    EXPECT_THAT(tc_.seconds_value, ElementsAre(50, kPrefill, kPrefill));
    EXPECT_EQ(tc_.time_offset_value[0], PrefilledValue<INT64>());
}

TEST_F(TimeCodeSei, ClocksAreTraced) {
    tc_.time_offset_value[1] = 77;
    Build({{.offset_length = 5, .offset = -1}, {}, {.present = 0}});
    const TraceCapture trace;
    int line = 0;
    EXPECT_EQ(Parse(&line), TRUE);
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Advancing to Payload index:0, Payload_type:0x88, Payload_size:0x5.\n"));
    EXPECT_THAT(trace.Texts(8),
                ElementsAre("DEBUG - HH:MM:SS:FF:20:40:50:300. ct_full_flag:1, ct_flag:1 time_offset:-1.\n",
                            "DEBUG - HH:MM:SS:FF:21:41:51:301. ct_full_flag:1, ct_flag:1 time_offset:77.\n"));
    for (const TracedMessage &message : trace.messages())
        EXPECT_EQ(message.function, "_parse_sei_timecode");
    EXPECT_EQ(trace.messages().size(), 3u);
}

TEST_F(TimeCodeSei, PayloadsBehindTheData) {
    Build({{}});
    for (const UINT index : {6U, 7U, 1U << 29, UINT_MAX}) {
        int line = 0;
        EXPECT_EQ(Parse(&line, index), FALSE);
        EXPECT_NE(line, 0);
        EXPECT_EQ(tc_.num_clocks_ts, kPrefill);
    }
}

// Of every length of the NAL unit the entry point gives what the reader gives, in a block of that size.
TEST_F(TimeCodeSei, EntryPointWithANalUnitCutAtEveryByte) {
    Build({{.offset_length = 31, .offset = -3}, {.full = 0, .parts = 3}});
    BitString rbsp = BitString().U(16, 0x880F);
    const size_t needed = rbsp.Append(syntax_.bits()).size();
    const Bytes whole = NalUnit(kPrefix, rbsp.TrailingBits().Bytes(), 3);
    for (size_t length = 6; length <= whole.size(); length++) {
        SCOPED_TRACE(length);
        Bytes nal(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        bitbuffer_t bb{nal.data() + 5, 0, static_cast<unsigned int>(length - 5) * 8};
        const SEI_message_t message = {136, 15, 2};
        int line = 0;
        sei_h265_time_code_t tc;
        ASSERT_EQ(_parse_sei_timecode(&bb, &message, &tc, &line), (length - 5) * 8 >= needed);

        const TraceCapture trace(3);
        EXPECT_EQ(ParseNal(nal), (length - 5) * 8 >= needed);
        if (line == 0)
            EXPECT_THAT(trace.messages(), IsEmpty());
        else
            EXPECT_THAT(trace.Errors(),
                        ElementsAre("Failed to parse sei time_code on line " + std::to_string(line) + ".\n"));
    }
}

TEST_F(TimeCodeSei, EntryPointTraces) {
    const TraceCapture trace(7);
    EXPECT_EQ(ParseNal({0, 0, 0, 1, 0x4E, 1, 136, 1, 0x20, 0x80}), TRUE);
    EXPECT_EQ(tc_.num_clocks_ts, 0);
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("SODB deencapsulation was successful NAL unit length:10, SODB length:4.\n",
                            "Advancing to Payload index:2, Payload_type:0x88, Payload_size:0x5.\n"));
    EXPECT_EQ(trace.messages()[0].function, "H265Lib_Parse_sei_timecode_nal");
}

TEST_F(TimeCodeSei, ShortBuffersAreReportedAndFail) {
    const auto expect = [this](const Bytes &nal, const std::string &error) {
        const Bytes exact(nal);
        char address[32];
        std::snprintf(address, sizeof address, " buffer:%p.\n", static_cast<const void *>(exact.data()));
        const TraceCapture trace(3);
        EXPECT_EQ(ParseNal(exact), FALSE);
        EXPECT_THAT(trace.Errors(), ElementsAre(error + (error == kNoSodb ? "" : address)));
        std::vector<std::string> assertions;
        if (nal.size() <= 4)
            assertions.push_back(AssertionOf("BufferLen > 4"));
        if (nal.size() < 4)
            assertions.push_back(AssertionOf("buffer_len >= 4"));
        EXPECT_EQ(trace.Assertions(), assertions);
    };
    const std::string no_start_code = "Failed to parse_sei_timecode_nal!";
    expect({0}, no_start_code);
    expect({0, 0}, no_start_code);
    expect({0, 0, 0}, no_start_code);
    expect({0, 0, 0, 0}, no_start_code);
    expect({0, 0, 2, 0x4E, 1, 136, 1, 0x20, 0x80}, no_start_code);
    expect({0, 0, 1}, kNoSodb);
    expect({0, 0, 0, 1}, kNoSodb);
    expect({0, 0, 1, 0x4E}, kNoSodb);
    expect({0, 0, 1, 0x4E, 1}, kNoSodb);
}

TEST_F(TimeCodeSei, LengthsOfZeroAndLessFail) {
    const Bytes nal = {0, 0, 1, 0x4E, 1, 136, 1, 0x20, 0x80};
    const SEI_message_t message = {136, 1, 2};
    for (const int length : {0, -1, -32}) {
        const TraceCapture trace(3);
        EXPECT_EQ(H265Lib_Parse_sei_timecode_nal(nal.data(), length, &message, &tc_), FALSE);
        EXPECT_EQ(trace.Errors().size(), 1u);
    }
}

TEST_F(TimeCodeSei, FailedAllocationIsReportedWithItsSize) {
    const FailingAllocations allocations(1);
    const TraceCapture trace(3);
    EXPECT_EQ(ParseNal({0, 0, 1, 0x4E, 1, 136, 1, 0x20, 0x80}), FALSE);
    EXPECT_THAT(trace.Errors(),
                ElementsAre("Failed to allocate memory for pNalSodbBuffer. Size requested:41.\n"));
}

TEST_F(TimeCodeSei, FailsToAllocateNegativeSizes) {
    const Bytes nal = {0, 0, 1, 0x4E, 1, 136, 1, 0x20, 0x80};
    const SEI_message_t message = {};
    for (const auto &[length, size] : {std::pair{-33, "-1"}, {-100, "-68"}, {INT_MIN, "-2147483616"}}) {
        const TraceCapture trace(3);
        EXPECT_EQ(H265Lib_Parse_sei_timecode_nal(nal.data(), length, &message, &tc_), FALSE);
        EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("BufferLen > 4")));
        EXPECT_THAT(trace.Errors(),
                    ElementsAre(std::string("Failed to allocate memory for pNalSodbBuffer. Size requested:") +
                                size + ".\n"));
    }
}

TEST_F(TimeCodeSei, NullPointersAreReported) {
    const SEI_message_t message = {};
    bitbuffer_t bb{};
    int line = 0;
    const TraceCapture trace(3);
    const Bytes nal = {0, 0, 1, 0x4E, 1, 136, 1, 0x20, 0x80};
    EXPECT_EQ(H265Lib_Parse_sei_timecode_nal(nullptr, 9, &message, &tc_), FALSE);
    EXPECT_EQ(H265Lib_Parse_sei_timecode_nal(nal.data(), 9, &message, nullptr), FALSE);
    for (const int missing : {0, 1, 2}) {
        line = 0;
        EXPECT_EQ(_parse_sei_timecode(missing == 0 ? nullptr : &bb, missing == 1 ? nullptr : &message,
                                      missing == 2 ? nullptr : &tc_, &line),
                  FALSE);
        EXPECT_NE(line, 0);
    }
    EXPECT_EQ(_parse_sei_timecode(&bb, &message, &tc_, nullptr), FALSE);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("pBuffer != NULL"), AssertionOf("pBuffer != NULL"),
                            AssertionOf("pTc != NULL"), AssertionOf("pTc != NULL"),
                            AssertionOf("pSeiTimeCodeBb != NULL"), AssertionOf("pMsgHeader != NULL"),
                            AssertionOf("pTc != NULL"), AssertionOf("pLine != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to parse_sei_timecode_nal! buffer:(nil).\n",
                                            StartsWith("Failed to parse sei time_code on line ")));
}

TEST_F(TimeCodeSei, AMissingHeaderIsLeftToTheReader) {
    const Bytes nal = {0, 0, 1, 0x4E, 1, 136, 1, 0x20, 0x80};
    const TraceCapture trace(3);
    EXPECT_EQ(H265Lib_Parse_sei_timecode_nal(nal.data(), 9, nullptr, &tc_), FALSE);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pMsgHeader != NULL")));
    EXPECT_THAT(trace.Errors(), ElementsAre(testing::StartsWith("Failed to parse sei time_code on line ")));
    InSilence([&] { EXPECT_EQ(H265Lib_Parse_sei_timecode_nal(nal.data(), 9, nullptr, &tc_), FALSE); });
}

TEST_F(TimeCodeSei, RealUnits) {
    const struct {
        std::string file;
        UINT index;
        std::vector<int> values;  // counting type, frames, seconds, minutes, hours
    } units[] = {{"units/sei-time-code.nal", 2, {4, 29, 58, 59, 23}},
                 {"units/sei-multiple.nal", 5, {0, 4, 3, 2, 1}}};
    for (const auto &[file, index, values] : units) {
        SCOPED_TRACE(file);
        const std::vector<Bytes> nals = SampleNalUnits(file);
        ASSERT_EQ(nals.size(), 1u);
        EXPECT_EQ(ParseNal(nals[0], index), TRUE);
        EXPECT_EQ(tc_.num_clocks_ts, 1);
        EXPECT_EQ((std::vector<int>{tc_.counting_type[0], tc_.n_frames[0], tc_.seconds_value[0],
                                    tc_.minutes_value[0], tc_.hours_value[0]}),
                  values);
    }
}

}  // namespace
}  // namespace test
