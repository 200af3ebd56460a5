#include "reading/sei_walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "annexb_scanner.h"
#include "h265.h"
#include "nal_unit.h"
#include "run_tool.h"

namespace h265tool {
namespace {

using test::Bytes;
using ::testing::IsEmpty;
using ::testing::SizeIs;

struct Found {
    uint64_t payload_type;
    uint64_t payload_size;
    uint64_t payload_index;
    bool operator==(const Found &) const = default;
};

std::vector<Found> Walked(const Bytes &rbsp) {
    std::vector<Found> found;
    for (const RawSeiMessage &message : WalkSei(rbsp).messages) {
        EXPECT_EQ(message.payload.data(), rbsp.data() + message.payload_index);
        EXPECT_EQ(message.payload.size(), message.payload_size);
        found.push_back({message.payload_type, message.payload_size, message.payload_index});
    }
    return found;
}

std::vector<Found> WalkedByLibrary(const Bytes &nal_unit) {
    std::vector<Found> found;
    int payload_offset = 0;
    int nal_type_offset = 0;
    BOOL more = TRUE;
    while (more) {
        SEI_message_t header{};
        int suid = 0;
        EXPECT_TRUE(H265Lib_DetermineSEIType(nal_unit.data(), static_cast<int>(nal_unit.size()),
                                             &payload_offset, &nal_type_offset, &header, &suid, &more));
        found.push_back({header.payload_type, header.payload_size, header.payload_index});
    }
    return found;
}

// The SEI NAL units of all samples.
std::vector<NalUnit> SampleSei() {
    std::vector<NalUnit> units;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(SAMPLES_DIR)) {
        if (entry.path().extension() != ".hevc" && entry.path().extension() != ".nal")
            continue;
        NalUnitCollector collector([](unsigned int) { return size_t{1} << 20; },
                                   [&](const NalUnit &unit) {
                                       if (IsSei(unit.Header()->nal_unit_type))
                                           units.push_back(unit);
                                   });
        AnnexBScanner scanner(collector);
        scanner.Scan(FileBytes(entry.path().string()));
        scanner.Finish();
    }
    return units;
}

TEST(WalkSei, AgreesWithTheLibraryBelow255) {
    const std::vector<NalUnit> units = SampleSei();
    EXPECT_GT(units.size(), 60U);
    size_t messages = 0;
    for (const NalUnit &unit : units) {
        const std::span nal = unit.HeadBehindStartCode();
        Bytes rbsp(nal.size());
        const auto size = static_cast<unsigned int>(nal.size());
        const int length = H265Lib_SODB_deencapsulation_from_NAL(nal.data(), size, rbsp.data(), size);
        rbsp.resize(static_cast<size_t>(length));
        EXPECT_EQ(Walked(rbsp), WalkedByLibrary(unit.head));
        EXPECT_THAT(WalkSei(rbsp).error, IsEmpty());
        messages += Walked(rbsp).size();
    }
    EXPECT_GT(messages, units.size());
}

TEST(WalkSei, ReadsTypesAndSizesOf255AndMore) {
    Bytes rbsp = {0xFF, 0x00, 0xFE};
    rbsp.insert(rbsp.end(), 254, 1);
    rbsp.insert(rbsp.end(), {0xFF, 0xFF, 0x07, 0xFF, 0x2D});
    rbsp.insert(rbsp.end(), 300, 2);
    rbsp.insert(rbsp.end(), {0x05, 0x00, 0x80});
    EXPECT_EQ(Walked(rbsp), (std::vector<Found>{{255, 254, 3}, {517, 300, 262}, {5, 0, 564}}));
    EXPECT_THAT(WalkSei(rbsp).error, IsEmpty());
}

TEST(WalkSei, EndsAtTheTrailingBits) {
    EXPECT_EQ(Walked({1, 1, 0x80, 0x80, 0, 0}), (std::vector<Found>{{1, 1, 2}}));
    EXPECT_EQ(Walked({1, 1, 0x55}), (std::vector<Found>{{1, 1, 2}}));  // none, but all is there
    EXPECT_EQ(WalkSei(Bytes{}).error, "it holds no SEI message");
    EXPECT_EQ(WalkSei(Bytes{0x80}).error, "it holds no SEI message");
    EXPECT_EQ(WalkSei(Bytes{0, 0}).error, "it holds no SEI message");
}

TEST(WalkSei, SaysWhatIsWrong) {
    const SeiWalk behind_the_end = WalkSei(Bytes{1, 1, 7, 5, 9, 7, 7, 0x80});
    EXPECT_THAT(behind_the_end.messages, SizeIs(1));
    EXPECT_EQ(behind_the_end.error, "the payload of a SEI message of type 5 has 9 bytes, but there are 2");
    const std::string truncated = "the header of a SEI message is truncated";
    EXPECT_EQ(WalkSei(Bytes{1, 1, 7, 5, 0x80}).error, truncated);
    EXPECT_EQ(WalkSei(Bytes{1, 1, 7, 0xFF}).error, truncated);
    EXPECT_EQ(WalkSei(Bytes{1, 0xFF, 0xFF, 0xFF}).error, truncated);
    EXPECT_EQ(WalkSei(Bytes(5000, 0xFF)).error, truncated);
}

TEST(WalkSei, StaysWithinDataCutAnywhere) {
    const Bytes whole = {1, 2, 7, 7, 0x88, 3, 1, 2, 3, 0xFF, 1, 0, 4, 5, 1, 2, 3, 4, 5, 0x80};
    EXPECT_THAT(Walked(whole), SizeIs(4));
    for (size_t length = 0; length < whole.size(); length++) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const std::vector<Found> found = Walked(cut);
        EXPECT_LE(found.size(), 4U) << length;
        for (const Found &message : found)
            EXPECT_LE(message.payload_index + message.payload_size, length);
    }
}

}  // namespace
}  // namespace h265tool
