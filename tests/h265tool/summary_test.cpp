#include "summary.h"

#include <gtest/gtest.h>

namespace h265tool {
namespace {

TEST(HumanSizeTest, HasTwoDigitsAtLeast) {
    constexpr uint64_t kKiB = 1024;
    constexpr uint64_t kMiB = kKiB * kKiB;
    const struct {
        uint64_t bytes;
        const char *text;
    } kCases[] = {
        {0, "0 B  "},
        {7, "7 B  "},
        {1023, "1023 B  "},
        {1024, "1.0 KiB"},
        {1075, "1.0 KiB"},
        {1076, "1.1 KiB"},
        {2430, "2.4 KiB"},
        {10 * kKiB - 52, "9.9 KiB"},
        {10 * kKiB - 51, "10 KiB"},
        {10 * kKiB, "10 KiB"},
        {10 * kKiB + 511, "10 KiB"},
        {10 * kKiB + 512, "11 KiB"},
        {1024 * kKiB - 513, "1023 KiB"},
        {1024 * kKiB - 512, "1.0 MiB"},
        {3 * kMiB / 2, "1.5 MiB"},
        {300 * kMiB, "300 MiB"},
        {5 * kKiB * kMiB, "5.0 GiB"},
        {7 * kMiB * kMiB, "7.0 TiB"},
        {5000 * kMiB * kMiB, "5000 TiB"},
        {UINT64_MAX, "16777216 TiB"},
    };
    for (const auto &[bytes, text] : kCases)
        EXPECT_EQ(HumanSize(bytes), text) << bytes;
}

}  // namespace
}  // namespace h265tool
