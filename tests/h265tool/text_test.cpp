#include "text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace h265tool {
namespace {

template <typename Number>
std::string Extremes() {
    return Text(std::numeric_limits<Number>::min(), " ", std::numeric_limits<Number>::max());
}

TEST(Text, HasRoomForEveryNumber) {
    EXPECT_EQ(Extremes<int8_t>(), "-128 127");
    EXPECT_EQ(Extremes<uint8_t>(), "0 255");
    EXPECT_EQ(Extremes<int16_t>(), "-32768 32767");
    EXPECT_EQ(Extremes<uint16_t>(), "0 65535");
    EXPECT_EQ(Extremes<int32_t>(), "-2147483648 2147483647");
    EXPECT_EQ(Extremes<uint32_t>(), "0 4294967295");
    EXPECT_EQ(Extremes<int64_t>(), "-9223372036854775808 9223372036854775807");
    EXPECT_EQ(Extremes<uint64_t>(), "0 18446744073709551615");
    EXPECT_EQ(Extremes<bool>(), "0 1");
}

TEST(Text, PutsPartsOfEveryKindBehindEachOther) {
    const char *const pointer = "pointer";
    const std::string string = "string";
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(Text("", std::string(), "literal ", pointer, " ", string, 7), "literal pointer string7");
}

TEST(Text, SetsColumnsToTheRight) {
    EXPECT_EQ(Text("|", ToTheRight{"12", 4}, "|", ToTheRight{"1234", 4}, "|", ToTheRight{"12345", 4}, "|"),
              "|  12|1234|12345|");
}

TEST(Text, IsAppendedToWhatIsThere) {
    std::string text = "in front";
    AppendText(&text, ", ", 1, " behind");
    AppendText(&text, " twice");
    EXPECT_EQ(text, "in front, 1 behind twice");
}

}  // namespace
}  // namespace h265tool
