#include <gmock/gmock.h>

#include <climits>
#include <random>
#include <string>
#include <vector>

#include "bitbuffer.h"
#include "support/nal_unit.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned char kUntouched = 0xA5;

int Encapsulate(const Bytes &rbsp, Bytes *destination, size_t capacity) {
    return RBSP_encapsulation_within_NAL(rbsp.data(), static_cast<int>(rbsp.size()), destination->data(),
                                         static_cast<int>(capacity));
}

// Encapsulates from and into exactly-sized heap blocks: with the room it takes, and with one byte less.
void ExpectEncapsulated(const Bytes &rbsp) {
    const Bytes expected = Encapsulated(rbsp);
    Bytes destination(expected.size(), kUntouched);
    ASSERT_EQ(Encapsulate(rbsp, &destination, expected.size()), static_cast<int>(expected.size()))
        << testing::PrintToString(rbsp);
    ASSERT_EQ(destination, expected);

    Bytes too_small(expected.size(), kUntouched);
    too_small.pop_back();
    too_small.shrink_to_fit();
    if (too_small.empty())
        return;  // no capacity at all: has a test of its own
    ASSERT_EQ(Encapsulate(rbsp, &too_small, too_small.size()), 0) << testing::PrintToString(rbsp);
    ASSERT_EQ(too_small, Bytes(too_small.size(), kUntouched)) << testing::PrintToString(rbsp);
}

TEST(Encapsulation, Examples) {
    const auto encapsulated = [](const Bytes &rbsp) {
        Bytes destination(16);
        destination.resize(static_cast<size_t>(Encapsulate(rbsp, &destination, destination.size())));
        return destination;
    };
    EXPECT_THAT(encapsulated({0, 0, 1}), ElementsAre(0, 0, 3, 1));
    EXPECT_THAT(encapsulated({0, 0, 0, 0}), ElementsAre(0, 0, 3, 0, 0));
    EXPECT_THAT(encapsulated({0, 0, 4}), ElementsAre(0, 0, 4));
    EXPECT_THAT(encapsulated({0, 0, 0, 0, 0}), ElementsAre(0, 0, 3, 0, 0, 3, 0));
    EXPECT_THAT(encapsulated({0, 0}), ElementsAre(0, 0));
}

TEST(Encapsulation, AllShortSequences) {
    constexpr unsigned char kAlphabet[] = {0x00, 0x01, 0x03, 0x04, 0xFF};
    size_t sequences = 1;
    for (size_t length = 1; length <= 8; length++) {
        sequences *= std::size(kAlphabet);
        for (size_t sequence = 0; sequence < sequences; sequence++) {
            Bytes rbsp(length);
            size_t digits = sequence;
            for (unsigned char &byte : rbsp) {
                byte = kAlphabet[digits % std::size(kAlphabet)];
                digits /= std::size(kAlphabet);
            }
            ASSERT_NO_FATAL_FAILURE(ExpectEncapsulated(rbsp));
        }
    }
}

TEST(Encapsulation, EveryByteBehindTwoZeros) {
    for (int byte = 0; byte <= 0xFF; byte++)
        ExpectEncapsulated({0, 0, static_cast<unsigned char>(byte)});
}

// What is shorter than a block is copied by vectors, and by words: how far apart patterns are, and from both
// ends, decides which.
TEST(Encapsulation, TwoPatternsAtEveryPlaceOfShortData) {
    const Bytes pattern = {0, 0, 2};
    for (size_t length = 3; length <= 50; length++) {
        for (size_t first = 0; first + 3 <= length; first++) {
            for (size_t second = first; second + 3 <= length; second++) {
                Bytes rbsp(length, 0x80);
                for (const size_t at : {first, second})
                    std::copy(pattern.begin(), pattern.end(), rbsp.begin() + static_cast<std::ptrdiff_t>(at));
                ASSERT_NO_FATAL_FAILURE(ExpectEncapsulated(rbsp));
            }
        }
    }
}

// Clean stretches are copied in blocks of 64 bytes: patterns at, across and behind their ends.
TEST(Encapsulation, PatternsAtEveryPositionOfLongerData) {
    const std::vector<Bytes> patterns = {{0},          {0, 0},       {0, 0, 1},          {0, 0, 3},
                                         {0, 0, 4},    {0, 0, 0},    {0, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 2},
                                         {0, 0, 3, 0}, {0, 4, 0, 0}, {0, 0, 1, 0, 0, 1}};
    for (const size_t length :
         std::initializer_list<size_t>{63, 64, 65, 66, 67, 127, 128, 129, 130, 131, 192, 193, 194, 260}) {
        for (const Bytes &pattern : patterns) {
            for (size_t at = 0; at + pattern.size() <= length; at++) {
                Bytes rbsp(length, 0x80);
                std::copy(pattern.begin(), pattern.end(), rbsp.begin() + static_cast<std::ptrdiff_t>(at));
                ASSERT_NO_FATAL_FAILURE(ExpectEncapsulated(rbsp));
            }
        }
    }
}

TEST(Encapsulation, NothingButZeros) {
    for (size_t length = 1; length <= 300; length++)
        ASSERT_NO_FATAL_FAILURE(ExpectEncapsulated(Bytes(length, 0)));
}

TEST(Encapsulation, RandomBytesOfEveryDensity) {
    std::mt19937 random(1);
    for (int round = 0; round < 2000; round++) {
        const unsigned int span = 2u << random() % 8;  // the smaller, the more zeros
        Bytes rbsp(1 + random() % 500);
        for (unsigned char &byte : rbsp)
            byte = static_cast<unsigned char>(random() % span);
        ASSERT_NO_FATAL_FAILURE(ExpectEncapsulated(rbsp));
    }
}

TEST(Encapsulation, AnyUnalignedPlace) {
    Bytes rbsp(200, 0x55);
    rbsp[100] = rbsp[101] = rbsp[102] = 0;
    const Bytes expected = Encapsulated(rbsp);
    for (size_t shift = 0; shift < 32; shift++) {
        Bytes source(shift, 0);  // zeros in front are not looked at
        source.insert(source.end(), rbsp.begin(), rbsp.end());
        Bytes destination(shift + expected.size() + 5, 0);
        ASSERT_EQ(RBSP_encapsulation_within_NAL(source.data() + shift, 200, destination.data() + shift,
                                                static_cast<int>(expected.size()) + 5),
                  201);
        Bytes whole(shift, 0);
        whole.insert(whole.end(), expected.begin(), expected.end());
        whole.resize(whole.size() + 5);
        ASSERT_EQ(destination, whole);
    }
}

TEST(Encapsulation, BytesInFrontOfTheDestinationAreNotLookedAt) {
    unsigned char destination[] = {0, 0, kUntouched, kUntouched};
    const unsigned char source[] = {1};
    EXPECT_EQ(RBSP_encapsulation_within_NAL(source, 1, destination + 2, 2), 1);
    EXPECT_THAT(destination, ElementsAre(0, 0, 1, kUntouched));
}

TEST(Encapsulation, EverySmallerCapacityLeavesTheDestination) {
    const Bytes rbsp(100, 0);
    const size_t needed = Encapsulated(rbsp).size();
    for (size_t capacity = 1; capacity < needed; capacity++) {
        Bytes destination(capacity, kUntouched);
        ASSERT_EQ(Encapsulate(rbsp, &destination, capacity), 0);
        ASSERT_EQ(destination, Bytes(capacity, kUntouched));
    }
}

// Both services, which but for the mode are one.
int WithoutMode(const unsigned char *source, int length, unsigned char *destination, int capacity) {
    return RBSP_encapsulation_within_NAL(source, length, destination, capacity);
}

int WithMode(const unsigned char *source, int length, unsigned char *destination, int capacity) {
    return RBSP_encapsulation_within_NAL_Ex(source, length, destination, capacity,
                                            RBSP_ENCAPSULATION_MODE_BYTES);
}

class EncapsulationArguments : public testing::TestWithParam<decltype(&WithMode)> {
 protected:
    void TearDown() override { EXPECT_THAT(destination_, Each(kUntouched)); }

    const Bytes source_ = Bytes(1, 0x80);
    Bytes destination_ = Bytes(4, kUntouched);
};

INSTANTIATE_TEST_SUITE_P(, EncapsulationArguments, testing::Values(&WithoutMode, &WithMode),
                         [](const auto &service) {
                             return service.param == &WithMode ? "WithMode" : "WithoutMode";
                         });

TEST_P(EncapsulationArguments, LengthsThatAreNone) {
    const TraceCapture trace;
    for (const int length : {0, -1, INT_MIN})
        EXPECT_EQ(GetParam()(source_.data(), length, destination_.data(), 4), 0);
    for (const int capacity : {0, -1, INT_MIN})
        EXPECT_EQ(GetParam()(source_.data(), 1, destination_.data(), capacity), 0);
    EXPECT_EQ(GetParam()(source_.data(), -1, destination_.data(), -1), 0);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST_P(EncapsulationArguments, ALengthThatCannotFitIsNotRead) {
    EXPECT_EQ(GetParam()(source_.data(), INT_MAX, destination_.data(), 4), 0);
}

TEST_P(EncapsulationArguments, NullPointersAreReported) {
    const TraceCapture trace;
    EXPECT_EQ(GetParam()(nullptr, 1, destination_.data(), 4), 0);
    EXPECT_EQ(GetParam()(source_.data(), 1, nullptr, 4), 0);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("source != NULL"), AssertionOf("destination != NULL")));
}

TEST_P(EncapsulationArguments, NothingElseIsReported) {
    const TraceCapture trace;
    unsigned char byte = 0;
    EXPECT_EQ(GetParam()(source_.data(), 1, &byte, 1), 1);
    EXPECT_EQ(byte, 0x80);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST(EncapsulationMode, OtherThanBytesIsReported) {
    const Bytes source = {0, 0, 1};
    for (const int mode : {0, 2, -1}) {
        Bytes destination(4, kUntouched);
        const TraceCapture trace;
        EXPECT_EQ(RBSP_encapsulation_within_NAL_Ex(source.data(), 3, destination.data(), 4, mode), 0);
        EXPECT_THAT(destination, Each(kUntouched));
        EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("mode == RBSP_ENCAPSULATION_MODE_BYTES")));
    }
}

TEST(EncapsulationMode, BytesIsOneAndGivesTheSame) {
    const Bytes source = {0, 0, 1};
    Bytes destination(5, kUntouched);
    EXPECT_EQ(RBSP_encapsulation_within_NAL_Ex(source.data(), 3, destination.data(), 5, 1), 4);
    EXPECT_THAT(destination, ElementsAre(0, 0, 3, 1, kUntouched));
}

}  // namespace
}  // namespace test
