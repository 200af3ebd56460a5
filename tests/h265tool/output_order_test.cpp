#include "output_order.h"

#include <gtest/gtest.h>

#include <vector>

namespace h265tool {
namespace {

TEST(OutputOrder, NumbersPicturesAsSoonAsTheirPlaceIsCertain) {
    using Pairs = std::vector<std::pair<uint64_t, uint64_t>>;
    Pairs numbered;
    const auto take = [&](uint64_t key, uint64_t number) { numbered.emplace_back(key, number); };
    OutputOrder order;
    order.Add(10, 0, 2, take);
    order.Add(11, 8, 2, take);
    EXPECT_EQ(numbered, Pairs());
    order.Add(12, 4, 2, take);
    EXPECT_EQ(numbered, (Pairs{{10, 0}}));
    order.Add(13, 2, 2, take);
    EXPECT_EQ(numbered, (Pairs{{10, 0}, {13, 1}}));
    order.Finish(take);
    EXPECT_EQ(numbered, (Pairs{{10, 0}, {13, 1}, {12, 2}, {11, 3}}));
    // the next sequence is behind, whatever its counts; without reordering nothing waits
    order.Add(14, -5, 0, take);
    EXPECT_EQ(numbered.back(), std::pair(uint64_t{14}, uint64_t{4}));
}

}  // namespace
}  // namespace h265tool
