#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "h265d/sei/message_walk.h"
#include "support/samples.h"

namespace test {
namespace {

TEST(SeiMessageScanOfStreams, FiveMessagesOfARealUnit) {
    const std::vector<Bytes> nals = SampleNalUnits("units/sei-multiple.nal");
    ASSERT_EQ(nals.size(), 1u);
    const Outcome outcomes[] = {{1, 1, 2, 3, SUID_PICTURE_TIMING, TRUE},
                                {136, 6, 5, 11, SUID_TIME_CODE, TRUE},
                                {4, 71, 13, 84, SUID_CLOSED_CAPTION, TRUE},
                                {4, 9, 86, 95, SUID_AFD, TRUE},
                                {5, 28, 97, 125, SUID_UNKNOWN, FALSE}};
    Walk walk;
    for (const Outcome &outcome : outcomes) {
        ASSERT_EQ(walk.Next(nals[0]), TRUE);
        EXPECT_EQ(walk.Result(), outcome);
    }
}

TEST(SeiMessageScanOfStreams, MessagesOfRealStreams) {
    const std::pair<std::string, std::map<int, int>> streams[] = {
        // payload types and how often
        {"progressive-hrd-vui.hevc", {{0, 2}, {1, 12}, {129, 1}}},
        {"interlaced-field-hrd.hevc", {{0, 2}, {1, 16}, {129, 1}}},
        {"captions-a53.hevc", {{4, 16}}},
        {"hash-sei.hevc", {{132, 4}}}};
    for (const auto &[file, expected] : streams) {
        SCOPED_TRACE(file);
        std::map<int, int> found;
        for (const Bytes &nal : SampleNalUnits(file)) {
            if (nal[3] >> 1 != kPrefix && nal[3] >> 1 != kSuffix)
                continue;
            Walk walk;
            do {
                ASSERT_EQ(walk.Next(nal), TRUE);
                found[walk.header.payload_type]++;
            } while (walk.more);
        }
        EXPECT_EQ(found, expected);
    }
}

}  // namespace
}  // namespace test
