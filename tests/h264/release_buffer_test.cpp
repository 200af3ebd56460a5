#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>

#include "h264.h"

namespace test {
namespace {

// Bytes taken from the heap; always 0 under a sanitizer, which looks for leaks itself.
size_t HeapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

TEST(ReleaseBuffer, GivesBackWhatCallocGave) {
    const size_t before = HeapInUse();
    void *volatile buffer = std::calloc(1, 1 << 20);
    ASSERT_NE(buffer, nullptr);
    H26XLib_Release_sps_buffer(buffer);
    EXPECT_EQ(HeapInUse(), before);
}

TEST(ReleaseBuffer, NullIsAllowed) {
    const size_t before = HeapInUse();
    H26XLib_Release_sps_buffer(nullptr);
    EXPECT_EQ(HeapInUse(), before);
}

}  // namespace
}  // namespace test
