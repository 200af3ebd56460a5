#include "h265d/framing/nal_type_offset.h"

#include <gmock/gmock.h>

#include <memory>
#include <set>

#include "support/nal_unit.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kUntouched = -77;

TEST(NalTypeOffset, StartCodeOfThreeBytes) {
    const Bytes nal = {0, 0, 1, 0x40, 1};
    int offset = kUntouched;
    const TraceCapture trace(8);
    EXPECT_EQ(_GetNALTypeOffset(nal.data(), 5, &offset), TRUE);
    EXPECT_EQ(offset, 3);
    EXPECT_THAT(trace.Texts(8), ElementsAre("Found Annex-B 3 bytes start code prefix.\n"));
    ASSERT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, "_GetNALTypeOffset");
    EXPECT_EQ(trace.messages()[0].file, "nal_type_offset.cpp");
}

TEST(NalTypeOffset, StartCodeOfFourBytes) {
    const Bytes nal = {0, 0, 0, 1, 0x40, 1};
    int offset = kUntouched;
    const TraceCapture trace(8);
    EXPECT_EQ(_GetNALTypeOffset(nal.data(), 6, &offset), TRUE);
    EXPECT_EQ(offset, 4);
    EXPECT_THAT(trace.Texts(8), ElementsAre("Found Annex-B 4 bytes start code prefix.\n"));
    EXPECT_EQ(trace.messages().size(), 1u);
}

TEST(NalTypeOffset, TracesAtLevel8Only) {
    const Bytes nal = {0, 0, 1, 0x40, 1};
    int offset = kUntouched;
    const TraceCapture trace(7);
    EXPECT_EQ(_GetNALTypeOffset(nal.data(), 5, &offset), TRUE);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST(NalTypeOffset, EachReportHasItsLine) {
    const Bytes nal = {0, 0, 0, 1};
    int offset = kUntouched;
    const TraceCapture trace;
    _GetNALTypeOffset(nal.data(), 4, &offset);
    _GetNALTypeOffset(Bytes{0, 0, 1, 0x40}.data(), 4, &offset);
    _GetNALTypeOffset(nullptr, 3, nullptr);
    std::set<int> lines;
    for (const TracedMessage &message : trace.messages()) {
        EXPECT_EQ(message.function, "_GetNALTypeOffset");
        lines.insert(message.line);
    }
    EXPECT_EQ(lines.size(), 5u);
}

TEST(NalTypeOffset, NothingButAStartCodeAtTheVeryStart) {
    const Bytes refused[] = {
        {0, 0, 0, 0, 1, 0x40, 1},  // a prefix of five bytes
        {1, 0, 0, 1, 0x40, 1},     // not at the start
        {0, 1, 0, 0, 1, 0x40, 1},  // not at the start either
        {1, 0, 1, 0x40, 1},        // byte 0 is no zero
        {0, 1, 1, 0x40, 1},        // byte 1 is no zero
        {0, 0, 2, 1, 0x40, 1},     // byte 2 is neither 0 nor 1
        {0, 0, 3, 1, 0x40, 1},     // an emulation prevention byte
        {0, 0, 0, 2, 0x40, 1},     // byte 3 is no 1
        {0x40, 1, 0x0C, 1, 0xFF},  // no start code
    };
    for (const Bytes &nal : refused) {
        SCOPED_TRACE(testing::PrintToString(nal));
        int offset = kUntouched;
        const TraceCapture trace;
        EXPECT_EQ(_GetNALTypeOffset(nal.data(), static_cast<int>(nal.size()), &offset), FALSE);
        EXPECT_EQ(offset, kUntouched);
        EXPECT_THAT(trace.messages(), IsEmpty());
    }
}

// Every buffer of up to four bytes 00, 01 and 02, each in a block of its own size.
TEST(NalTypeOffset, ShortBuffersAreAssertedAndNotReadBeyond) {
    for (int length = 0, count = 1; length <= 4; length++, count *= 3) {
        for (int digits = 0; digits < count; digits++) {
            const auto nal = std::make_unique<unsigned char[]>(static_cast<size_t>(length));
            for (int i = 0, rest = digits; i < length; i++, rest /= 3)
                nal[static_cast<size_t>(i)] = static_cast<unsigned char>(rest % 3);
            const bool zeros = length >= 3 && nal[0] == 0 && nal[1] == 0;
            const bool three = zeros && nal[2] == 1;
            const bool four = zeros && nal[2] == 0 && length == 4 && nal[3] == 1;
            SCOPED_TRACE(testing::PrintToString(Bytes(nal.get(), nal.get() + length)));

            int offset = kUntouched;
            const TraceCapture trace;
            EXPECT_EQ(_GetNALTypeOffset(nal.get(), length, &offset), three || four);
            EXPECT_EQ(offset, three ? 3 : four ? 4 : kUntouched);
            std::vector<std::string> assertions;
            if (length < 4)
                assertions.push_back(AssertionOf("buffer_len >= 4"));
            EXPECT_EQ(trace.Assertions(), assertions);
        }
    }
}

TEST(NalTypeOffset, NegativeLengthIsAssertedAndRefused) {
    const Bytes nal = {0, 0, 1, 0x40, 1};
    int offset = kUntouched;
    const TraceCapture trace;
    EXPECT_EQ(_GetNALTypeOffset(nal.data(), -5, &offset), FALSE);
    EXPECT_EQ(offset, kUntouched);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("buffer_len >= 4")));
}

TEST(NalTypeOffset, NullArgumentsAreReportedAndFail) {
    const Bytes nal = {0, 0, 1, 0x40, 1};
    int offset = kUntouched;
    TraceCapture trace;
    EXPECT_EQ(_GetNALTypeOffset(nullptr, 5, &offset), FALSE);
    EXPECT_EQ(offset, kUntouched);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pBuffer != NULL")));
    EXPECT_EQ(trace.messages().size(), 1u);
    trace.Clear();
    EXPECT_EQ(_GetNALTypeOffset(nal.data(), 5, nullptr), FALSE);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pnOffset != NULL")));
    EXPECT_EQ(trace.messages().size(), 1u);
    trace.Clear();
    EXPECT_EQ(_GetNALTypeOffset(nullptr, 3, nullptr), FALSE);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("pBuffer != NULL"), AssertionOf("buffer_len >= 4"),
                            AssertionOf("pnOffset != NULL")));
}

}  // namespace
}  // namespace test
