#include <gmock/gmock.h>

#include <climits>
#include <string>
#include <vector>

#include "bitbuffer.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Cursor, OpensAtBitZero) {
    unsigned char bytes[2] = {};
    bitbuffer_t bb{nullptr, 5, 6};
    EXPECT_EQ(__DoInitBitBuffer(&bb, bytes, 13, "F", "f.cpp", 1), 0);
    EXPECT_EQ(bb.bit_buffer, bytes);
    EXPECT_EQ(bb.bit_offset, 0u);
    EXPECT_EQ(bb.num_bits, 13u);
}

TEST(Cursor, OpensOnNothing) {
    bitbuffer_t bb{nullptr, 5, 6};
    const TraceCapture trace;
    EXPECT_EQ(__DoInitBitBuffer(&bb, nullptr, 0, "F", "f.cpp", 1), 0);
    EXPECT_EQ(bb.bit_offset, 0u);
    EXPECT_EQ(bb.num_bits, 0u);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST(Cursor, WithoutBytesHasNoBits) {
    bitbuffer_t bb{nullptr, 0, 64};
    unsigned char byte = 9;
    uint32_t number = 9;
    EXPECT_EQ(GetNextNBitsAsUint8(&bb, 1, &byte), -1);
    EXPECT_EQ(GetUint32Golomb(&bb, &number), -1);
    EXPECT_EQ(GetNextNBitsAsStringEx(&bb, 8, &byte, 1), -1);
    EXPECT_EQ(__DoSetNextBit(&bb, 1, "F", "f.cpp", 1), -1);
    EXPECT_EQ(SetNextNBitsFromUint32(&bb, 32, 1), -1);
    EXPECT_EQ(SetUint32Golomb(&bb, 0), -1);
    EXPECT_EQ(SetNextNBitsFromString(&bb, 8, &byte), -1);
    EXPECT_EQ(bb.bit_offset, 0u);
    EXPECT_EQ(byte, 9);
    EXPECT_EQ(number, 9u);
}

TEST(Cursor, NullArgumentsAreReportedInTheNameOfTheCaller) {
    unsigned char byte = 0;
    bitbuffer_t bb{&byte, 5, 6};
    const TraceCapture trace;
    EXPECT_NE(__DoInitBitBuffer(nullptr, &byte, 8, "Caller", "caller.cpp", 17), 0);
    EXPECT_NE(__DoInitBitBuffer(&bb, nullptr, 1, "Caller", "caller.cpp", 17), 0);
    EXPECT_EQ(bb.bit_buffer, &byte);
    EXPECT_EQ(bb.bit_offset, 5u);
    EXPECT_EQ(bb.num_bits, 6u);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL"), AssertionOf("buffer != NULL")));
    for (const TracedMessage &message : trace.messages()) {
        EXPECT_EQ(message.function, "Caller");
        EXPECT_EQ(message.file, "caller.cpp");
        EXPECT_EQ(message.line, 17);
    }
}

TEST(Cursor, AdvancesAlsoBehindTheEnd) {
    unsigned char byte = 0;
    bitbuffer_t bb{&byte, 0, 8};
    AdvanceBitOffset(&bb, 0);
    EXPECT_EQ(bb.bit_offset, 0u);
    AdvanceBitOffset(&bb, 7);
    EXPECT_EQ(bb.bit_offset, 7u);
    AdvanceBitOffset(&bb, 15);
    EXPECT_EQ(bb.bit_offset, 22u);
    EXPECT_EQ(bb.num_bits, 8u);
}

TEST(Cursor, NeverWrapsToTheFront) {
    unsigned char byte = 0;
    bitbuffer_t bb{&byte, 1, 8};
    AdvanceBitOffset(&bb, UINT_MAX - 1);
    EXPECT_EQ(bb.bit_offset, UINT_MAX);
    AdvanceBitOffset(&bb, 1);
    EXPECT_EQ(bb.bit_offset, UINT_MAX);
    AdvanceBitOffset(&bb, UINT_MAX);
    EXPECT_EQ(bb.bit_offset, UINT_MAX);
}

TEST(Cursor, AdvancingNothingIsReported) {
    const TraceCapture trace;
    AdvanceBitOffset(nullptr, 8);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL")));
}

class DisplayedCursor : public testing::Test {
 protected:
    // The channel belongs to the library, which names it when it is loaded.
    void TearDown() override { BitBufferSetTraceChannel(&g_hH265LibDbg); }

    unsigned char bytes_[3] = {0x41, 0x00, 0xFE};
    bitbuffer_t bb_{bytes_, 3, 17};
};

TEST_F(DisplayedCursor, IsDumpedWholeAtLevel7) {
    const TraceCapture trace(7);
    DisplayBitBuffer(&bb_, "FINAL VPS");
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("FINAL VPS (3 bytes):\n",
                            "00000000  41 00 FE                                         |A..|\n"));
    EXPECT_EQ(trace.messages().size(), 2u);
    EXPECT_EQ(bb_.bit_offset, 3u);
}

TEST_F(DisplayedCursor, IsSilentBelowLevel7) {
    const TraceCapture trace(6);
    DisplayBitBuffer(&bb_, "FINAL VPS");
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST_F(DisplayedCursor, IsSilentWithoutChannel) {
    const TraceCapture trace(8);
    BitBufferSetTraceChannel(nullptr);
    DisplayBitBuffer(&bb_, "FINAL VPS");
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST_F(DisplayedCursor, ReadsTheHandleAtEachDump) {
    const TraceCapture trace(8);
    HDBG handle = nullptr;
    BitBufferSetTraceChannel(&handle);
    DisplayBitBuffer(&bb_, "CLOSED");
    EXPECT_THAT(trace.messages(), IsEmpty());
    handle = g_hH265LibDbg;
    DisplayBitBuffer(&bb_, "OPEN");
    EXPECT_EQ(trace.messages().size(), 2u);
}

TEST_F(DisplayedCursor, WithoutBytesIsATitle) {
    const TraceCapture trace(7);
    const bitbuffer_t nothing{nullptr, 0, 0};
    DisplayBitBuffer(&nothing, "EMPTY");
    EXPECT_THAT(trace.Texts(7), ElementsAre("EMPTY (0 bytes):\n"));
}

TEST_F(DisplayedCursor, OfNullIsReported) {
    const TraceCapture trace(8);
    DisplayBitBuffer(nullptr, "NOTHING");
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL")));
    EXPECT_EQ(trace.messages().size(), 1u);
}

}  // namespace
}  // namespace test
