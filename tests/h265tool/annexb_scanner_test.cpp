#include "annexb_scanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace h265tool {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Bytes = std::vector<unsigned char>;

struct Unit {
    uint64_t offset;
    unsigned int start_code_length;
    Bytes bytes;
    bool operator==(const Unit &) const = default;
};

void PrintTo(const Unit &unit, std::ostream *out) {
    *out << unit.offset << "/" << unit.start_code_length << ": " << testing::PrintToString(unit.bytes);
}

class Recorder : public NalUnitSink {
 public:
    void Begin(uint64_t offset, unsigned int start_code_length) override {
        EXPECT_FALSE(open_);
        open_ = true;
        units.push_back({offset, start_code_length, {}});
    }
    void Bytes(std::span<const unsigned char> bytes) override {
        EXPECT_TRUE(open_);
        EXPECT_FALSE(bytes.empty());
        units.back().bytes.insert(units.back().bytes.end(), bytes.begin(), bytes.end());
    }
    void End() override {
        EXPECT_TRUE(open_);
        open_ = false;
    }

    std::vector<Unit> units;
    bool IsOpen() const { return open_; }

 private:
    bool open_ = false;
};

std::vector<Unit> Scanned(const Bytes &stream, size_t chunk_size) {
    Recorder recorder;
    AnnexBScanner scanner(recorder);
    for (size_t at = 0; at < stream.size(); at += chunk_size)
        scanner.Scan(std::span(stream).subspan(at, std::min(chunk_size, stream.size() - at)));
    scanner.Finish();
    EXPECT_FALSE(recorder.IsOpen());
    return recorder.units;
}

std::vector<Unit> Scanned(const Bytes &stream) {
    return Scanned(stream, stream.size());
}

// The plain model: start codes first, then what lies between them.
std::vector<Unit> ScannedByteByByte(const Bytes &stream) {
    std::vector<size_t> ones;
    for (size_t i = 2; i < stream.size(); i++) {
        if (stream[i - 2] == 0 && stream[i - 1] == 0 && stream[i] == 1)
            ones.push_back(i);
    }
    std::vector<Unit> units;
    for (size_t k = 0; k < ones.size(); k++) {
        const size_t one = ones[k];
        const unsigned int length = one >= 3 && stream[one - 3] == 0 ? 4 : 3;
        size_t end = k + 1 < ones.size() ? ones[k + 1] - 2 : stream.size();
        while (end > one + 1 && stream[end - 1] == 0)
            end--;
        const auto begin = stream.begin() + static_cast<std::ptrdiff_t>(one) + 1;
        units.push_back(
            {one + 1 - length, length, Bytes(begin, stream.begin() + static_cast<std::ptrdiff_t>(end))});
    }
    return units;
}

std::string Refusal(const Bytes &stream) {
    try {
        Scanned(stream);
    } catch (const NotAByteStream &error) {
        return error.what();
    }
    return "none";
}

TEST(AnnexBScanner, TakesBothStartCodes) {
    EXPECT_THAT(Scanned({0, 0, 1, 0x40, 1, 7, 0, 0, 0, 1, 0x42, 1}),
                ElementsAre(Unit{0, 3, {0x40, 1, 7}}, Unit{6, 4, {0x42, 1}}));
}

TEST(AnnexBScanner, ZerosAroundNalUnitsBelongToNone) {
    EXPECT_THAT(Scanned({0, 0, 0, 0, 0, 1, 0x40, 1, 0, 0, 0, 0, 0, 1, 0x42, 1, 0, 0, 0, 0}),
                ElementsAre(Unit{2, 4, {0x40, 1}}, Unit{10, 4, {0x42, 1}}));
}

TEST(AnnexBScanner, ZerosWithinANalUnitAreItsOwn) {
    EXPECT_THAT(Scanned({0, 0, 1, 0x40, 0, 0, 3, 0, 0, 3, 0, 5, 0, 0, 2, 9}),
                ElementsAre(Unit{0, 3, {0x40, 0, 0, 3, 0, 0, 3, 0, 5, 0, 0, 2, 9}}));
}

TEST(AnnexBScanner, PassesManyZerosWithinANalUnit) {
    Bytes stream = {0, 0, 1, 0x40};
    stream.insert(stream.end(), 10000, 0);
    stream.push_back(2);
    EXPECT_EQ(Scanned(stream, 1000), ScannedByteByByte(stream));
}

TEST(AnnexBScanner, FindsEmptyNalUnits) {
    EXPECT_THAT(Scanned({0, 0, 1, 0, 0, 1, 0, 0, 0, 1}),
                ElementsAre(Unit{0, 3, {}}, Unit{3, 3, {}}, Unit{6, 4, {}}));
}

TEST(AnnexBScanner, AgreesWithAByteLoopAtEveryChunkBoundary) {
    const Bytes stream = {0, 0, 0,    0, 1, 0x40, 1, 0, 0, 3, 0, 0,    0,    1, 0x42, 1, 0,
                          0, 1, 0x44, 0, 9, 0,    0, 0, 0, 0, 1, 0x02, 0,    1, 0,    0, 2,
                          1, 0, 0,    1, 0, 0,    1, 0, 0, 0, 1, 0x46, 0x50, 0, 0,    0};
    const std::vector<Unit> expected = ScannedByteByByte(stream);
    ASSERT_EQ(expected.size(), 7U);
    for (size_t chunk_size = 1; chunk_size <= stream.size(); chunk_size++)
        EXPECT_EQ(Scanned(stream, chunk_size), expected) << "chunks of " << chunk_size;
}

TEST(AnnexBScanner, AgreesWithAByteLoopOnLongNalUnits) {
    // a start code at each position relative to a chunk boundary and to the blocks of the search
    for (size_t length = 120; length < 280; length++) {
        Bytes stream = {0, 0, 1};
        stream.insert(stream.end(), length, 0xAB);
        stream.insert(stream.end(), {0, 0, 1, 0x42, 1, 0xAB, 0});
        stream.insert(stream.end(), 300, 0xCD);
        EXPECT_EQ(Scanned(stream, 128), ScannedByteByByte(stream)) << length;
    }
}

TEST(AnnexBScanner, AgreesWithAByteLoopOnRandomStreams) {
    std::mt19937 random(265);
    for (int round = 0; round < 500; round++) {
        Bytes stream = {0, 0, 1};
        const size_t length = random() % 400;
        const unsigned int values = 2 + random() % 4;  // few values: many zeros and start codes
        for (size_t i = 0; i < length; i++)
            stream.push_back(static_cast<unsigned char>(random() % values));
        EXPECT_EQ(Scanned(stream, 1 + random() % 100), ScannedByteByByte(stream));
    }
}

TEST(AnnexBScanner, RefusesWhatIsNoByteStream) {
    EXPECT_EQ(Refusal({}), "it is empty");
    EXPECT_EQ(Refusal(Bytes(100, 0)), "no H.265 byte stream: it holds no start code");
    EXPECT_THAT(Refusal({0x47, 0x40, 0x11, 0x10, 0, 0, 0, 1}), HasSubstr("starts with 47 40 11 10,"));
    EXPECT_THAT(Refusal({0, 0x40}), HasSubstr("starts with 00 40,"));
    EXPECT_THAT(Refusal({0, 1, 0, 0, 1, 0x40, 1}), HasSubstr("starts with 00 01 00 00 01,"));
}

}  // namespace
}  // namespace h265tool
