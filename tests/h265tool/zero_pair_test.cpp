#include "zero_pair.h"

#include <gtest/gtest.h>

#include <vector>

namespace h265tool {
namespace {

size_t FindByteByByte(const std::vector<unsigned char> &bytes) {
    for (size_t i = 0; i + 1 < bytes.size(); i++) {
        if (bytes[i] == 0 && bytes[i + 1] == 0)
            return i;
    }
    return bytes.size();
}

TEST(FindZeroPair, FindsAPairAtEveryPositionInEveryLength) {
    for (size_t length = 0; length <= 200; length++) {
        std::vector<unsigned char> bytes(length, 1);
        ASSERT_EQ(FindZeroPair(bytes), length);
        for (size_t at = 0; at + 1 < length; at++) {
            bytes[at] = bytes[at + 1] = 0;
            ASSERT_EQ(FindZeroPair(bytes), at) << "of " << length;
            bytes[at] = bytes[at + 1] = 1;
        }
    }
}

TEST(FindZeroPair, LooksPastSingleZeros) {
    for (const unsigned int period : {2U, 3U, 7U}) {
        std::vector<unsigned char> bytes(300, 0xFF);
        for (size_t i = 0; i < bytes.size(); i += period)
            bytes[i] = 0;
        EXPECT_EQ(FindZeroPair(bytes), bytes.size());
        bytes[251] = bytes[252] = 0;
        EXPECT_EQ(FindZeroPair(bytes), FindByteByByte(bytes));
    }
}

}  // namespace
}  // namespace h265tool
