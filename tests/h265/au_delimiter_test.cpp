#include <gmock/gmock.h>

#include <memory>

#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

std::string Report(const void *buffer, const std::string &len) {
    char pointer[32];
    std::snprintf(pointer, sizeof pointer, "%p", buffer);
    return std::string("ERROR - buffer:") + pointer + " should not be NULL or len:" + len +
           ", should be greater than 8!\n";
}

TEST(AuDelimiterFormatting, PicTypeStandsInFrontOfTheStopBit) {
    const int last_bytes[] = {0x10, 0x30, 0x50};
    for (unsigned int pic_type = 0; pic_type <= 2; pic_type++) {
        const auto buffer = std::make_unique<unsigned char[]>(8);
        buffer[7] = 9;
        const TraceCapture trace;
        EXPECT_EQ(H265Lib_format_au_delimiter_nalu(buffer.get(), 8, pic_type), 7);
        EXPECT_THAT(std::vector<int>(buffer.get(), buffer.get() + 8),
                    ElementsAre(0, 0, 0, 1, 0x46, 1, last_bytes[pic_type], 9));
        EXPECT_THAT(trace.messages(), IsEmpty());
    }
}

TEST(AuDelimiterFormatting, LessThanEightBytesFailAlthoughSevenWouldDo) {
    for (const unsigned int len : {0u, 6u, 7u}) {
        unsigned char buffer[] = {9, 9, 9, 9, 9, 9, 9};
        const TraceCapture trace(3);
        EXPECT_EQ(H265Lib_format_au_delimiter_nalu(buffer, len, 0), -1);
        EXPECT_THAT(buffer, Each(9));
        EXPECT_THAT(trace.Errors(), ElementsAre(Report(buffer, std::to_string(len))));
        ASSERT_EQ(trace.messages().size(), 1u);
        EXPECT_EQ(trace.messages()[0].function, "H265Lib_format_au_delimiter_nalu");
        EXPECT_EQ(trace.messages()[0].file, "au_delimiter.cpp");
    }
}

TEST(AuDelimiterFormatting, NullBufferFails) {
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_format_au_delimiter_nalu(nullptr, 100, 3), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre(Report(nullptr, "100")));
    EXPECT_EQ(trace.messages().size(), 1u);
}

TEST(AuDelimiterFormatting, PicTypesAbove2FailWithNothingWritten) {
    for (const unsigned int pic_type : {3u, 7u, 8u, 0x7FFFFFFFu}) {
        unsigned char buffer[] = {9, 9, 9, 9, 9, 9, 9, 9};
        const TraceCapture trace;
        EXPECT_EQ(H265Lib_format_au_delimiter_nalu(buffer, sizeof buffer, pic_type), -1);
        EXPECT_THAT(buffer, Each(9));
        EXPECT_THAT(trace.Errors(), ElementsAre("primary_pic_type:" + std::to_string(pic_type) +
                                                ", should not be greater than 2!\n"));
        EXPECT_EQ(trace.messages().size(), 1u);
        InSilence([&] {
            EXPECT_EQ(H265Lib_format_au_delimiter_nalu(buffer, sizeof buffer, pic_type), -1);
            EXPECT_THAT(buffer, Each(9));
        });
    }
}

}  // namespace
}  // namespace test
