#include <gmock/gmock.h>

#include "h265/sei/time_code.h"
#include "h265/sei/time_code_syntax.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kWriter = "_set_sei_timecode_elements";

// Clock i with values of its own; `given` counts the parts of the time that are there when it is not full.
void AddClock(sei_h265_time_code_t *tc, bool full, int given, int offset_length) {
    const int i = tc->num_clocks_ts++;
    tc->clock_timestamp_flag[i] = 1;
    tc->units_field_based_flag[i] = i != 1;
    tc->counting_type[i] = static_cast<unsigned char>(21 - i);
    tc->full_timestamp_flag[i] = full;
    tc->discontinuity_flag[i] = i != 0;
    tc->cnt_drop_flag[i] = i != 2;
    tc->n_frames[i] = static_cast<unsigned short>(0x155 + i);
    tc->seconds_flag[i] = given >= 1;
    tc->minutes_flag[i] = given >= 2;
    tc->hours_flag[i] = given >= 3;
    tc->seconds_value[i] = static_cast<unsigned char>(58 - i);
    tc->minutes_value[i] = static_cast<unsigned char>(37 + i);
    tc->hours_value[i] = static_cast<unsigned char>(22 - i);
    tc->time_offset_length[i] = static_cast<unsigned char>(offset_length);
    tc->time_offset_value[i] = -3 - i;
}

void Sweep(const sei_h265_time_code_t &tc) {
    SweepCapacities(TimeCodeMessage(tc), kWriter,
                    [&tc](bitbuffer_t *bb) { return _set_sei_timecode_elements(bb, &tc); });
}

TEST(TimeCodeElements, FullTimestamp) {
    for (const int offset_length : {0, 1, 9, 31}) {
        SCOPED_TRACE(offset_length);
        sei_h265_time_code_t tc{};
        AddClock(&tc, true, 0, offset_length);
        Sweep(tc);
    }
}

TEST(TimeCodeElements, PartsOfTheTime) {
    for (int given = 0; given <= 3; given++) {
        SCOPED_TRACE(given);
        sei_h265_time_code_t tc{};
        AddClock(&tc, false, given, 3);
        Sweep(tc);
        // a part is there only when the one in front of it is
        tc.minutes_flag[0] = tc.hours_flag[0] = 1;
        Sweep(tc);
    }
}

TEST(TimeCodeElements, NoneToThreeClocks) {
    sei_h265_time_code_t tc{};
    Sweep(tc);
    AddClock(&tc, true, 0, 5);
    AddClock(&tc, false, 2, 0);
    Sweep(tc);
    AddClock(&tc, false, 3, 24);
    Sweep(tc);
    tc.clock_timestamp_flag[1] = 0;
    Sweep(tc);
}

TEST(TimeCodeElements, ClocksThatTheRecordCannotHoldAreNotWritten) {
    sei_h265_time_code_t tc{};
    for (int i = 0; i < 3; i++)
        AddClock(&tc, true, 0, 0);
    const Syntax three = TimeCodeMessage(tc);
    tc.num_clocks_ts = 0xFF;  // its two bits make 3
    Output block(30);
    bitbuffer_t bb{block.data(), 0, 240};
    EXPECT_EQ(_set_sei_timecode_elements(&bb, &tc), static_cast<int>(three.bits().size() / 8));
    EXPECT_EQ(block.bytes(), block.Holding(three.bits().Bytes()));
}

TEST(TimeCodeElements, OffsetsGoThroughTheirLow32Bits) {
    sei_h265_time_code_t tc{};
    AddClock(&tc, true, 0, 31);
    tc.time_offset_value[0] = 0x7FFF'FFFF'8000'0001;
    Sweep(tc);
}

TEST(TimeCodeElements, AnOffsetOfMoreThan32BitsCannotBeWritten) {
    for (const int length : {33, 255}) {
        sei_h265_time_code_t tc{};
        AddClock(&tc, true, 0, length);
        unsigned char bytes[64] = {};
        bitbuffer_t bb{bytes, 0, 512};
        const TraceCapture trace(3);
        EXPECT_EQ(_set_sei_timecode_elements(&bb, &tc), -1);
        EXPECT_THAT(trace.Errors(), ElementsAre("Failed to set time_offset_value[0]:-3.\n"));
    }
}

TEST(TimeCodeElements, TracesTheOffsetAndTheLengths) {
    sei_h265_time_code_t tc{};
    AddClock(&tc, true, 0, 9);
    unsigned char bytes[30] = {};
    bitbuffer_t bb{bytes, 0, 240};
    TraceCapture trace;
    EXPECT_EQ(_set_sei_timecode_elements(&bb, &tc), 10);
    EXPECT_THAT(trace.Texts(7), ElementsAre("num_bits:9 for time_offset_value.\n",
                                            "last_payload_size_byte:7, bitoffset before/after:8/72.\n",
                                            "Final sei time_code num_bits:80, Bytes:10.\n"));
    EXPECT_EQ(trace.messages().size(), 3u);
    for (const TracedMessage &message : trace.messages())
        EXPECT_EQ(message.function, kWriter);
}

TEST(TimeCodeElements, NullPointersAreReportedAndFail) {
    const sei_h265_time_code_t tc{};
    bitbuffer_t bb{};
    TraceCapture trace;
    EXPECT_EQ(_set_sei_timecode_elements(nullptr, &tc), -1);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("sei_nalu_bb != NULL")));
    trace.Clear();
    EXPECT_EQ(_set_sei_timecode_elements(&bb, nullptr), -1);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pTc != NULL")));
    EXPECT_THAT(trace.Errors(), IsEmpty());
}

}  // namespace
}  // namespace test
