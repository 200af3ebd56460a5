#include <cstdio>

#include "h265d/display/expected_display.h"
#include "h265d/display/sub_structures.h"

namespace test {
namespace {

TEST(ScalingListDisplay, SaysThatTheListsAreNotPrinted) {
    const scaling_list_data_t lists{};
    char text[128];
    std::snprintf(text, sizeof text, "Scaling list Data:%p parsing is NOT done at the moment.\n",
                  static_cast<const void *>(&lists));
    ExpectedDisplay expected("_display_scaling_list_data", 6);
    expected.Text(text);
    ExpectDisplay(
        lists, [](const scaling_list_data_t *record) { EXPECT_EQ(_display_scaling_list_data(record), 0); },
        expected);
}

TEST(ScalingListDisplay, NullIsReported) {
    const TraceCapture trace(3);
    EXPECT_EQ(_display_scaling_list_data(nullptr), 0);
    EXPECT_THAT(trace.Assertions(), testing::ElementsAre(AssertionOf("sld != NULL")));
}

}  // namespace
}  // namespace test
