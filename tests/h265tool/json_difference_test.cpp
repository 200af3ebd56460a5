#include "json/difference.h"

#include <gtest/gtest.h>

#include "text.h"

namespace h265tool {
namespace {

std::string Difference(const char *expected, const char *actual) {
    const auto difference = FirstDifference(Json::parse(expected), Json::parse(actual));
    if (!difference.has_value())
        return "none";
    return Text(difference->path, ": ", difference->expected, " or ", difference->actual);
}

TEST(JsonDifferenceTest, EqualDocumentsHaveNone) {
    EXPECT_EQ(Difference("1", "1"), "none");
    EXPECT_EQ(Difference("{}", "{}"), "none");
    EXPECT_EQ(
        Difference(R"({"a": 1, "b": [1, null, {"c": "d"}]})", R"({"b": [1, null, {"c": "d"}], "a": 1})"),
        "none");
}

TEST(JsonDifferenceTest, NumbersAreComparedByValue) {
    EXPECT_FALSE(FirstDifference(Json(1), Json(1U)));
    EXPECT_FALSE(FirstDifference(Json(UINT64_MAX), Json(UINT64_MAX)));
}

TEST(JsonDifferenceTest, TheFirstOneIsNamed) {
    EXPECT_EQ(Difference("1", "2"), ": 1 or 2");
    EXPECT_EQ(Difference(R"({"a": 1, "b": 2, "c": 3})", R"({"a": 1, "b": 3, "c": 4})"), "b: 2 or 3");
    EXPECT_EQ(Difference(R"({"a": {"b": [0, {"c": 1}]}})", R"({"a": {"b": [0, {"c": null}]}})"),
              "a.b[1].c: 1 or null");
    EXPECT_EQ(Difference(R"({"a": [1]})", R"({"a": {"b": 1}})"), R"(a: [1] or {"b":1})");
}

TEST(JsonDifferenceTest, WhatIsThereOnOneSideAloneIsOne) {
    EXPECT_EQ(Difference(R"({"a": 1})", "{}"), "a: 1 or nothing");
    EXPECT_EQ(Difference("{}", R"({"a": 1})"), "a: nothing or 1");
    EXPECT_EQ(Difference("[1, 2]", "[1]"), "[1]: 2 or nothing");
    EXPECT_EQ(Difference("[1]", "[1, null]"), "[1]: nothing or null");
}

}  // namespace
}  // namespace h265tool
