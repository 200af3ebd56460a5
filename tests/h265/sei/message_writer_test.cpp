#include "h265/sei/message_writer.h"

#include <gmock/gmock.h>

#include <climits>

#include "h265/sei/built_sei.h"
#include "h265/sei/sei_nal_unit.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr TraceSite kSite = {"_set_something", "something.cpp", 42};
constexpr int kPayloadType = 200;

// Writes a message whose payload consists of `bits` ones.
int WriteOnes(bitbuffer_t *bb, unsigned int bits) {
    unsigned int size_position = 0;
    if (BeginSeiMessage(kSite, bb, kPayloadType, &size_position) == -1)
        return -1;
    EXPECT_EQ(size_position, 8u);
    for (unsigned int i = 0; i < bits; i++) {
        if (SetNextNBitsFromUint8(bb, 1, 1) == -1) {
            TraceAt(kSite, 3, "one");
            return -1;
        }
    }
    if (EndSeiMessage(kSite, bb, size_position) == -1)
        return -1;
    return static_cast<int>(bb->bit_offset / 8);
}

Syntax Ones(unsigned int bits) {
    return SeiMessage(kPayloadType, [bits](Syntax *payload) {
        for (unsigned int i = 0; i < bits; i++)
            payload->Flag(1, kNotKept, "one");
    });
}

TEST(SeiMessageWriter, CompletesPayloadsOfEveryLength) {
    for (unsigned int bits = 0; bits <= 24; bits++) {
        SCOPED_TRACE(bits);
        SweepCapacities(Ones(bits), kSite.function, [bits](bitbuffer_t *bb) { return WriteOnes(bb, bits); });
    }
}

TEST(SeiMessageWriter, APayloadOfWholeBytesHasNoAlignment) {
    unsigned char bytes[4] = {};
    bitbuffer_t bb{bytes, 0, 32};
    EXPECT_EQ(WriteOnes(&bb, 8), 4);
    EXPECT_THAT(bytes, ElementsAre(kPayloadType, 1, 0xFF, 0x80));
}

TEST(SeiMessageWriter, TracesTheSizeAndItsPlace) {
    unsigned char bytes[8] = {};
    bitbuffer_t bb{bytes, 0, 64};
    const TraceCapture trace;
    EXPECT_EQ(WriteOnes(&bb, 9), 5);
    EXPECT_THAT(trace.Texts(7), ElementsAre("last_payload_size_byte:2, bitoffset before/after:8/32.\n"));
    ASSERT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, kSite.function);
    EXPECT_EQ(trace.messages()[0].file, kSite.file);
    EXPECT_EQ(trace.messages()[0].line, kSite.line);
}

TEST(SeiMessageWriter, TheSizeByteWraps) {
    Output block(303);
    bitbuffer_t bb{block.data(), 0, 303 * 8};
    const TraceCapture trace(7);
    EXPECT_EQ(WriteOnes(&bb, 300 * 8), 303);
    EXPECT_EQ(block.data()[1], 300 % 256);
    EXPECT_THAT(trace.Texts(7), ElementsAre("last_payload_size_byte:300, bitoffset before/after:8/2416.\n"));
}

TEST(SeiMessageWriter, ASizeThatCannotBeWrittenIsReported) {
    unsigned char bytes[3] = {0, 0, 0x55};
    bitbuffer_t bb{bytes, 24, 24};
    const TraceCapture trace;
    EXPECT_EQ(EndSeiMessage(kSite, &bb, 17), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to set last_payload_size_byte:1.\n"));
    EXPECT_EQ(trace.messages().size(), 1u);
    EXPECT_THAT(bytes, ElementsAre(0, 0, 0x55));
}

TEST(SeiMessageWriter, FailuresAreSilentBelowTheirLevel) {
    bitbuffer_t bb{nullptr, 0, 0};
    unsigned int size_position = 0;
    const TraceCapture trace(2);
    EXPECT_EQ(BeginSeiMessage(kSite, &bb, kPayloadType, &size_position), -1);
    EXPECT_EQ(EndSeiMessage(kSite, &bb, 0), -1);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST(SeiNalUnitPrefix, StandsInFrontOfTheEncapsulatedMessage) {
    const Bytes sodb = {0x01, 0x04, 0x00, 0x00, 0x00, 0x00, 0x80};
    const Bytes nal = NalUnit(kPrefixSei, sodb, kSeiStartCodeLength);
    ASSERT_EQ(nal.size(), 5 + sodb.size() + 1);
    const int needed = static_cast<int>(nal.size());
    for (int capacity = 0; capacity <= needed + 2; capacity++) {
        SCOPED_TRACE(capacity);
        Output output(capacity);
        const int length =
            EncapsulateSei(sodb.data(), static_cast<int>(sodb.size()), output.data(), capacity);
        EXPECT_EQ(length, capacity < needed ? 0 : needed - 5);
        EXPECT_EQ(output.bytes(), output.Holding(capacity < 5        ? Bytes{}
                                                 : capacity < needed ? kSeiPrefix
                                                                     : nal));
    }
}

TEST(SeiNalUnitPrefix, NegativeLengthsAreRefused) {
    const unsigned char byte = 0x80;
    for (const int capacity : {-1, -5, INT_MIN}) {
        Output output(8);
        EXPECT_EQ(EncapsulateSei(&byte, 1, output.data(), capacity), 0);
        EXPECT_EQ(output.bytes(), output.Holding({}));
    }
    for (const int sodb_length : {0, -1, INT_MIN}) {
        Output output(8);
        EXPECT_EQ(EncapsulateSei(&byte, sodb_length, output.data(), 8), 0);
        EXPECT_EQ(output.bytes(), output.Holding(kSeiPrefix));
    }
}

}  // namespace
}  // namespace test
