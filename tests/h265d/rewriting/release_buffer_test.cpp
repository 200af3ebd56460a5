// Releasing the buffers of the SPS rewritings; that they are released is for the leak checker to say.

#include <gtest/gtest.h>

#include <cstdlib>

#include "h265.h"
#include "support/sps_rewriting.h"

namespace test {
namespace {

TEST(ReleaseSpsBuffer, TakesTheBuffersOfBothRewritings) {
    const ParsedSps input(SpsWithTail(BitString().U(1, 0)));
    for (const SpsRewriter &rewriter : {kSpsModification, kSpsVuiReplacement}) {
        unsigned char *buffer = nullptr;
        UINT length = 0;
        ASSERT_EQ(rewriter.rewrite_nal(input.nal.data(), static_cast<unsigned int>(input.nal.size()),
                                       input.sps.get(), &buffer, &length),
                  TRUE);
        ASSERT_NE(buffer, nullptr);
        buffer[input.nal.size() + 255] = 1;  // its last byte
        const TraceCapture trace;
        H265Lib_Release_sps_buffer(buffer);
        EXPECT_TRUE(trace.messages().empty());
    }
}

TEST(ReleaseSpsBuffer, TakesAnyBlockOfTheHeapAndNone) {
    const TraceCapture trace;
    H265Lib_Release_sps_buffer(std::calloc(1, 1));
    H265Lib_Release_sps_buffer(nullptr);
    EXPECT_TRUE(trace.messages().empty());
}

}  // namespace
}  // namespace test
