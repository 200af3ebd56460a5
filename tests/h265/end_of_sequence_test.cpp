#include <gmock/gmock.h>

#include <memory>

#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Report(const void *buffer, const std::string &len) {
    char pointer[32];
    std::snprintf(pointer, sizeof pointer, "%p", buffer);
    return std::string("ERROR - buffer:") + pointer + " should not be NULL or len:" + len +
           ", should be greater than 5!\n";
}

TEST(EndOfSequence, IsFiveBytesInAnExactlyFittingBuffer) {
    const auto buffer = std::make_unique<unsigned char[]>(5);
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_format_end_of_sequence_nalu(buffer.get(), 5), 5);
    EXPECT_THAT(std::vector<int>(buffer.get(), buffer.get() + 5), ElementsAre(0, 0, 1, 0x48, 1));
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST(EndOfSequence, LeavesTheBytesBehindItAlone) {
    unsigned char buffer[] = {9, 9, 9, 9, 9, 9, 9};
    EXPECT_EQ(H265Lib_format_end_of_sequence_nalu(buffer, sizeof buffer), 5);
    EXPECT_THAT(buffer, ElementsAre(0, 0, 1, 0x48, 1, 9, 9));
    EXPECT_EQ(H265Lib_format_end_of_sequence_nalu(buffer, 0xFFFFFFFF), 5);
}

TEST(EndOfSequence, LessThanFiveBytesFailWithNothingWritten) {
    for (const unsigned int len : {0u, 4u}) {
        unsigned char buffer[] = {9, 9, 9, 9, 9};
        const TraceCapture trace(3);
        EXPECT_EQ(H265Lib_format_end_of_sequence_nalu(buffer, len), -1);
        EXPECT_THAT(buffer, ElementsAre(9, 9, 9, 9, 9));
        EXPECT_THAT(trace.Errors(), ElementsAre(Report(buffer, std::to_string(len))));
        ASSERT_EQ(trace.messages().size(), 1u);
        EXPECT_EQ(trace.messages()[0].function, "H265Lib_format_end_of_sequence_nalu");
        EXPECT_EQ(trace.messages()[0].file, "end_of_sequence.cpp");
    }
}

TEST(EndOfSequence, NullBufferFails) {
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_format_end_of_sequence_nalu(nullptr, 100), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre(Report(nullptr, "100")));
    EXPECT_EQ(trace.messages().size(), 1u);
}

}  // namespace
}  // namespace test
