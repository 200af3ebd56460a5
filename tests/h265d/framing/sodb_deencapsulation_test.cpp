#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <memory>
#include <random>

#include "support/interposed.h"
#include "support/nal_unit.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned char kUntouched = 0xA5;

// What a payload gives, by a plain loop over the bytes.
Bytes Modelled(const Bytes &payload) {
    Bytes sodb;
    for (size_t in = 0; in < payload.size(); in++) {
        sodb.push_back(payload[in]);
        if (in + 2 < payload.size() && payload[in] == 0 && payload[in + 1] == 0 && payload[in + 2] == 3) {
            sodb.push_back(0);
            in += 2;
        }
    }
    return sodb;
}

// De-encapsulates header and payload, input and output in blocks of exactly the NAL unit's size; what stands
// behind the result has to be as it was.
Bytes Deencapsulated(const Bytes &payload) {
    const size_t size = payload.size() + 2;
    const auto nal = std::make_unique<unsigned char[]>(size);
    const auto sodb = std::make_unique<unsigned char[]>(size);
    nal[0] = 0x40;
    nal[1] = 0x01;
    std::copy(payload.begin(), payload.end(), nal.get() + 2);
    std::fill_n(sodb.get(), size, kUntouched);

    const auto length = static_cast<unsigned int>(size);
    const int written = H265Lib_SODB_deencapsulation_from_NAL(nal.get(), length, sodb.get(), length);
    if (written < 0 || written > static_cast<int>(payload.size())) {
        ADD_FAILURE() << "impossible result " << written;
        return {};
    }
    const auto end = sodb.get() + written;
    EXPECT_EQ(std::count(end, sodb.get() + size, kUntouched), sodb.get() + size - end)
        << "bytes behind the result were written";
    return {sodb.get(), end};
}

void ExpectAsModelled(const Bytes &payload) {
    ASSERT_EQ(Deencapsulated(payload), Modelled(payload)) << testing::PrintToString(payload);
}

TEST(SodbDeencapsulation, DropsTheHeaderAndTheEmulationPreventionBytes) {
    EXPECT_THAT(Deencapsulated({0x0C, 0, 0, 3, 1}), ElementsAre(0x0C, 0, 0, 1));
    EXPECT_THAT(Deencapsulated({0x0C, 0xFF}), ElementsAre(0x0C, 0xFF));
}

TEST(SodbDeencapsulation, DropsTheByteWhateverFollowsIt) {
    EXPECT_THAT(Deencapsulated({0, 0, 3, 0xFF}), ElementsAre(0, 0, 0xFF));
    EXPECT_THAT(Deencapsulated({0, 0, 3, 3, 0}), ElementsAre(0, 0, 3, 0));
}

TEST(SodbDeencapsulation, ThePatternMayEndOnTheLastByteButNotBeginInTheLastTwo) {
    EXPECT_THAT(Deencapsulated({0x0C, 0, 0, 3}), ElementsAre(0x0C, 0, 0));
    EXPECT_THAT(Deencapsulated({0, 0, 3}), ElementsAre(0, 0));
    EXPECT_THAT(Deencapsulated({0, 0}), ElementsAre(0, 0));
    EXPECT_THAT(Deencapsulated({0x0C, 0, 3}), ElementsAre(0x0C, 0, 3));
}

TEST(SodbDeencapsulation, TheHeaderIsNotPartOfAPattern) {
    const Bytes nal = {0, 0, 3, 1};
    unsigned char sodb[4];
    ASSERT_EQ(H265Lib_SODB_deencapsulation_from_NAL(nal.data(), 4, sodb, 4), 2);
    EXPECT_EQ(sodb[0], 3);
    EXPECT_EQ(sodb[1], 1);
}

TEST(SodbDeencapsulation, AHeaderAloneGivesNothing) {
    EXPECT_THAT(Deencapsulated({}), IsEmpty());
}

TEST(SodbDeencapsulation, LessThanAHeaderIsRefusedUnread) {
    for (const unsigned int length : {0u, 1u}) {
        const auto nal = std::make_unique<unsigned char[]>(length);
        unsigned char sodb[] = {kUntouched, kUntouched};
        const TraceCapture trace;
        EXPECT_EQ(H265Lib_SODB_deencapsulation_from_NAL(nal.get(), length, sodb, sizeof sodb), -1);
        EXPECT_THAT(sodb, Each(kUntouched));
        EXPECT_THAT(trace.messages(), IsEmpty());
    }
}

TEST(SodbDeencapsulation, EveryShortPayload) {
    constexpr unsigned char kAlphabet[] = {0, 1, 3, 4};
    for (size_t length = 0; length <= 8; length++) {
        Bytes payload(length);
        for (unsigned int digits = 0; digits < 1u << 2 * length; digits++) {
            for (size_t i = 0; i < length; i++)
                payload[i] = kAlphabet[digits >> 2 * i & 3];
            ASSERT_NO_FATAL_FAILURE(ExpectAsModelled(payload));
        }
    }
}

// Stretches of every kind, free of zeros to dense with patterns, at every length.
TEST(SodbDeencapsulation, EveryLengthOfRepeatedBytes) {
    const Bytes periods[] = {{0xFF},       {0},          {0, 0xFF},         {0, 0, 3},
                             {0, 0, 0, 3}, {0, 0, 4, 3}, {3, 0, 0, 0xFF, 9}};
    for (const Bytes &period : periods) {
        Bytes payload;
        for (size_t length = 0; length <= 330; length++) {
            ASSERT_NO_FATAL_FAILURE(ExpectAsModelled(payload));
            payload.push_back(period[length % period.size()]);
        }
    }
}

// Bytes are copied in blocks of 64: each pattern at every place of payloads of one to three blocks.
TEST(SodbDeencapsulation, EveryPlaceOfAPattern) {
    const Bytes patterns[] = {{0, 0, 3}, {0, 0, 3, 0, 0, 3}, {0, 0, 0, 3}, {0, 0},
                              {0, 3},    {0, 0, 1, 0, 0, 3}};
    for (const size_t length : {64u, 65u, 66u, 67u, 68u, 127u, 128u, 129u, 130u, 131u, 195u}) {
        for (const Bytes &pattern : patterns) {
            for (size_t place = 0; place + pattern.size() <= length; place++) {
                Bytes payload(length, 0x77);
                std::copy(pattern.begin(), pattern.end(), payload.begin() + static_cast<ptrdiff_t>(place));
                ASSERT_NO_FATAL_FAILURE(ExpectAsModelled(payload)) << "place " << place;
            }
        }
    }
}

// What is shorter than a block is copied by vectors, and by words: how far apart patterns are, and from both
// ends, decides which.
TEST(SodbDeencapsulation, TwoPatternsAtEveryPlaceOfShortPayloads) {
    const Bytes pattern = {0, 0, 3};
    for (size_t length = 3; length <= 50; length++) {
        for (size_t first = 0; first + 3 <= length; first++) {
            for (size_t second = first; second + 3 <= length; second++) {
                Bytes payload(length, 0x77);
                for (const size_t place : {first, second})
                    std::copy(pattern.begin(), pattern.end(),
                              payload.begin() + static_cast<ptrdiff_t>(place));
                ASSERT_NO_FATAL_FAILURE(ExpectAsModelled(payload));
            }
        }
    }
}

TEST(SodbDeencapsulation, RandomBytesOfEveryDensity) {
    constexpr unsigned char kAlphabet[] = {0, 3, 0, 4, 0, 0xFF, 1, 0x80, 2};
    std::mt19937 random(1);
    for (int round = 0; round < 20000; round++) {
        const size_t letters = 2 + random() % (std::size(kAlphabet) - 1);  // the fewer, the more zeros
        const size_t others = random() % 16;                               // and bytes that are seldom zero
        Bytes payload(random() % 200);
        for (unsigned char &byte : payload)
            byte =
                random() % 16 < others ? static_cast<unsigned char>(random()) : kAlphabet[random() % letters];
        ASSERT_NO_FATAL_FAILURE(ExpectAsModelled(payload));
    }
}

TEST(SodbDeencapsulation, AnyUnalignedPlace) {
    Bytes payload(200, 0x55);
    for (const size_t place : {17u, 100u, 190u}) {
        payload[place] = payload[place + 1] = 0;
        payload[place + 2] = 3;
    }
    const Bytes expected = Modelled(payload);
    for (size_t shift = 0; shift < 32; shift++) {
        for (size_t other_shift = 0; other_shift < 32; other_shift++) {
            Bytes nal(shift, 0);
            nal.insert(nal.end(), {0x40, 0x01});
            nal.insert(nal.end(), payload.begin(), payload.end());
            Bytes sodb(other_shift + 202, kUntouched);
            ASSERT_EQ(H265Lib_SODB_deencapsulation_from_NAL(nal.data() + shift, 202,
                                                            sodb.data() + other_shift, 202),
                      197);
            Bytes whole(other_shift, kUntouched);
            whole.insert(whole.end(), expected.begin(), expected.end());
            whole.resize(sodb.size(), kUntouched);
            ASSERT_EQ(sodb, whole);
        }
    }
}

TEST(SodbDeencapsulation, UndoesEncapsulation) {
    Bytes rbsp;
    for (unsigned int i = 0, state = 1; i < 5000; i++, state = state * 1103515245 + 12345)
        rbsp.push_back(static_cast<unsigned char>(state >> 16 & (i / 500 % 2 != 0 ? 0xFF : 0x03)));
    EXPECT_EQ(Deencapsulated(Encapsulated(rbsp)), rbsp);
}

TEST(SodbDeencapsulation, NullPointersAreReportedAndFail) {
    unsigned char bytes[] = {0x40, 1, 0x11};
    TraceCapture trace;
    EXPECT_EQ(H265Lib_SODB_deencapsulation_from_NAL(nullptr, 3, bytes, 3), -1);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("input_buf != NULL")));
    EXPECT_EQ(trace.messages().size(), 1u);
    EXPECT_THAT(bytes, ElementsAre(0x40, 1, 0x11));
    trace.Clear();
    EXPECT_EQ(H265Lib_SODB_deencapsulation_from_NAL(bytes, 3, nullptr, 3), -1);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("output_buf != NULL")));
    EXPECT_EQ(trace.messages().size(), 1u);
}

class SodbCapacity : public testing::Test {
 protected:
    int Fitting() { return H265Lib_SODB_deencapsulation_from_NAL(nal_.data(), 10, sodb_.data(), 10); }
    int Refused() { return H265Lib_SODB_deencapsulation_from_NAL(nal_.data(), 10, sodb_.data(), 9); }

    const Bytes nal_ = Bytes(10, 0x11);
    Bytes sodb_ = Bytes(10, kUntouched);
    const std::time_t start_ = FreshTime();
    ControlledClock clock_{start_};
};

constexpr char kTooLong[] =
    "Deencapsulation cannot be done as InputBufferLength:10 is longer than OutputBufferLength:9.\n";

TEST_F(SodbCapacity, HoldsTheNalUnitWithItsHeader) {
    const TraceCapture trace;
    EXPECT_EQ(Fitting(), 8);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST_F(SodbCapacity, OneByteLessIsRefusedWithNothingWritten) {
    const TraceCapture trace;
    EXPECT_EQ(Refused(), -1);
    EXPECT_THAT(sodb_, Each(kUntouched));
    EXPECT_THAT(trace.Errors(), ElementsAre(kTooLong));
    ASSERT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, "H265Lib_SODB_deencapsulation_from_NAL");
    EXPECT_EQ(trace.messages()[0].file, "sodb_deencapsulation.cpp");
}

TEST_F(SodbCapacity, LengthsAreUnsigned) {
    EXPECT_EQ(H265Lib_SODB_deencapsulation_from_NAL(nal_.data(), 10, sodb_.data(), 0xFFFFFFFF), 8);
    sodb_.assign(10, kUntouched);
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_SODB_deencapsulation_from_NAL(nal_.data(), 0xFFFFFFFF, sodb_.data(), 10), -1);
    EXPECT_THAT(sodb_, Each(kUntouched));
    EXPECT_THAT(trace.Errors(),
                ElementsAre("Deencapsulation cannot be done as InputBufferLength:-1 is longer "
                            "than OutputBufferLength:10.\n"));
}

TEST_F(SodbCapacity, IsReportedOnceInTenSeconds) {
    TraceCapture trace;
    const std::vector<std::vector<int>> reported_once = {{0, 1, 10}, {11, 12, 21}, {22}};
    for (const std::vector<int> &seconds : reported_once) {
        trace.Clear();
        for (const int second : seconds) {
            clock_.Set(start_ + second);
            EXPECT_EQ(Refused(), -1);
            EXPECT_THAT(trace.Errors(), ElementsAre(kTooLong)) << second;
        }
    }
}

TEST_F(SodbCapacity, AMessageThatTheLevelHidesCountsAsReported) {
    {
        const TraceCapture hidden(2);
        EXPECT_EQ(Refused(), -1);
        EXPECT_THAT(hidden.messages(), IsEmpty());
    }
    const TraceCapture trace;
    clock_.Set(start_ + 10);
    EXPECT_EQ(Refused(), -1);
    EXPECT_THAT(trace.Errors(), IsEmpty());
    clock_.Set(start_ + 11);
    EXPECT_EQ(Refused(), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre(kTooLong));
}

TEST_F(SodbCapacity, LengthsBeyondASignedOneAreRefusedUnseen) {
    const Bytes nal = {0x40, 1, 0x0C};
    Bytes sodb(1, 0xA5);
    const TraceCapture trace;
    for (const unsigned int length : {0x8000'0000U, UINT_MAX})
        EXPECT_EQ(H265Lib_SODB_deencapsulation_from_NAL(nal.data(), length, sodb.data(), UINT_MAX), -1);
    EXPECT_EQ(sodb[0], 0xA5);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

TEST_F(SodbCapacity, SuccessDoesNotCountAsReported) {
    EXPECT_EQ(Fitting(), 8);
    const TraceCapture trace;
    EXPECT_EQ(Refused(), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre(kTooLong));
}

}  // namespace
}  // namespace test
