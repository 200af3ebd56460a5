// SCC files: their lines, and the frames that their byte pairs belong to.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "insert/scc.h"

namespace h265tool {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const TimeCode kMidnight{};

std::vector<CaptionPair> Read(const std::string &lines, const TimeCode &start = kMidnight) {
    std::istringstream file("Scenarist_SCC V1.0\n" + lines);
    return ReadScc(file, start);
}

std::string ErrorOf(const std::string &text, const TimeCode &start = kMidnight) {
    std::istringstream file(text);
    try {
        ReadScc(file, start);
    } catch (const SccError &error) {
        return error.what();
    }
    return "none";
}

std::string ErrorOfLine(const std::string &line) {
    return ErrorOf("Scenarist_SCC V1.0\n\n" + line + "\n");
}

TEST(Scc, ReadsByteAfterByte) {
    EXPECT_THAT(
        Read("\n00:00:01:05\t9420 94AE c8e5\n"),
        ElementsAre(CaptionPair{35, 0x94, 0x20}, CaptionPair{36, 0x94, 0xAE}, CaptionPair{37, 0xC8, 0xE5}));
    EXPECT_THAT(Read(""), IsEmpty());
}

TEST(Scc, TakesWindowsFilesAndSpaces) {
    std::istringstream file("\xEF\xBB\xBFScenarist_SCC V1.0\r\n\r\n00:00:00:01 9420  942c \r\n");
    EXPECT_THAT(ReadScc(file, kMidnight),
                ElementsAre(CaptionPair{1, 0x94, 0x20}, CaptionPair{2, 0x94, 0x2C}));
}

TEST(Scc, CountsDropFrameAndNonDropFrame) {
    EXPECT_THAT(Read("00:01:00:02 8080"), ElementsAre(CaptionPair{1802, 0x80, 0x80}));
    EXPECT_THAT(Read("00:01:00;02 8080"), ElementsAre(CaptionPair{1800, 0x80, 0x80}));
    EXPECT_THAT(Read("01:00:00;00 8080"), ElementsAre(CaptionPair{107892, 0x80, 0x80}));
}

TEST(Scc, CountsFromTheStart) {
    EXPECT_THAT(Read("01:00:00:04 8080", {1, 0, 0, 0, false}), ElementsAre(CaptionPair{4, 0x80, 0x80}));
    EXPECT_THAT(Read("01:00:00;04 8080", {1, 0, 0, 0, false}), ElementsAre(CaptionPair{4, 0x80, 0x80}));
    EXPECT_EQ(ErrorOf("Scenarist_SCC V1.0\n00:59:59:29 8080", {1, 0, 0, 0, false}),
              "line 2: 00:59:59:29 is before the start of the captions");
}

TEST(Scc, DelaysLinesThatComeTooEarly) {
    EXPECT_THAT(Read("00:00:00:01 0101 0202 0303\n00:00:00:02 0404\n00:00:00:02 0505\n00:00:00:09 0606"),
                ElementsAre(CaptionPair{1, 1, 1}, CaptionPair{2, 2, 2}, CaptionPair{3, 3, 3},
                            CaptionPair{4, 4, 4}, CaptionPair{5, 5, 5}, CaptionPair{9, 6, 6}));
}

TEST(Scc, NamesTheBadLine) {
    EXPECT_EQ(ErrorOf(""), "it is empty");
    EXPECT_EQ(ErrorOf("WEBVTT\n"), "line 1: an SCC file begins with \"Scenarist_SCC V1.0\"");
    EXPECT_THAT(ErrorOfLine("00:00:00"), HasSubstr("line 3: \"00:00:00\" is no time code"));
    EXPECT_THAT(ErrorOfLine("00:61:00:00 9420"), HasSubstr("is no time code"));
    EXPECT_EQ(ErrorOfLine("00:00:00:30 9420"), "line 3: 29.97 frames/s have no time code 00:00:00:30");
    EXPECT_EQ(ErrorOfLine("00:01:00;01 9420"), "line 3: 29.97 frames/s have no time code 00:01:00;01");
    EXPECT_EQ(ErrorOfLine("00:00:00:01"), "line 3: no byte pairs behind the time code");
    for (const std::string word : {"942", "94200", "94x0", "-420", "0x94"})
        EXPECT_EQ(ErrorOfLine("00:00:00:01 9420 " + word),
                  "line 3: \"" + word + "\" is no byte pair (four hexadecimal digits)");
    EXPECT_EQ(ErrorOfLine("00:00:02:00 9420\n00:00:01:00 942c"),
              "line 4: 00:00:01:00 is before the time code of an earlier line");
}

}  // namespace
}  // namespace h265tool
