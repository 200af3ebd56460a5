#include "h265d/sei/trailing_bits.h"

#include <gmock/gmock.h>

#include "support/nal_unit.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Field;

// Behind a start code of three bytes and the two bytes of the header.
TrailingBits Find(const Bytes &payload) {
    Bytes nal = {0, 0, 1, 0x4E, 1};
    nal.insert(nal.end(), payload.begin(), payload.end());
    return FindTrailingBits({"Caller", "caller.cpp", 7}, nal.data(), static_cast<int>(nal.size()), 3);
}

auto Is(int last, int stop_bit_pos, int length_without) {
    return AllOf(Field("last", &TrailingBits::last, last),
                 Field("StopBitPos", &TrailingBits::StopBitPos, stop_bit_pos),
                 Field("length_without", &TrailingBits::length_without, length_without));
}

TEST(TrailingBits, AByteOfTrailingBitsAloneDoesNotCount) {
    EXPECT_THAT(Find({1, 1, 0x31, 0x80}), Is(8, 8, 5));
    EXPECT_THAT(Find({0x80}), Is(5, 8, 2));
    EXPECT_THAT(Find({1, 1, 0x80, 0x80}), Is(8, 8, 5)) << "only one such byte";
}

TEST(TrailingBits, ZeroBytesBehindThemDoNotCount) {
    EXPECT_THAT(Find({1, 1, 0x31, 0x80, 0}), Is(8, 8, 5));
    EXPECT_THAT(Find({1, 1, 0x31, 0x80, 0, 0, 0}), Is(8, 8, 5));
    EXPECT_THAT(Find({1, 1, 0x31, 0x10, 0, 0}), Is(8, 5, 6));
}

TEST(TrailingBits, TheLowestSetBitIsTheStopBit) {
    for (int position = 1; position <= 8; position++) {
        SCOPED_TRACE(position);
        const unsigned int stop_bit = 1U << (position - 1);
        EXPECT_THAT(Find({1, 1, static_cast<unsigned char>(stop_bit)}),
                    Is(7, position, position == 8 ? 4 : 5));
        EXPECT_THAT(Find({1, 1, static_cast<unsigned char>(0x100 - stop_bit)}),
                    Is(7, position, position == 8 ? 4 : 5));
    }
}

TEST(TrailingBits, AnEmulationPreventionByteAtTheEndIsData) {
    EXPECT_THAT(Find({1, 2, 0, 0, 3}), Is(9, 1, 7));
    EXPECT_THAT(Find({1, 2, 0, 0, 3, 0x80}), Is(10, 8, 7));
}

TEST(TrailingBits, TheSearchEndsAtTheHeader) {
    EXPECT_THAT(Find({0, 0, 0, 0}), Is(4, 1, 2));
    EXPECT_THAT(Find({}), Is(4, 1, 2));
}

TEST(TrailingBits, AHeaderByteOf80IsNoTrailingBits) {
    const Bytes nal = {0, 0, 1, 0x4E, 0x80, 0};
    EXPECT_THAT(FindTrailingBits(TRACE_SITE, nal.data(), 6, 3), Is(4, 8, 2));
}

TEST(TrailingBits, AHeaderOfOneByteOrOfZerosIsTheEnd) {
    const Bytes cut = {0, 0, 1, 0x4E};
    EXPECT_THAT(FindTrailingBits(TRACE_SITE, cut.data(), 4, 3), Is(3, 2, 1));
    const Bytes zeros(7, 0);
    EXPECT_THAT(FindTrailingBits(TRACE_SITE, zeros.data(), 7, 0), Is(1, 0, 2));
}

TEST(TrailingBits, EveryByteLookedAtIsTracedInTheNameOfTheCaller) {
    const TraceCapture trace(7);
    Find({1, 1, 0x31, 0x80, 0, 0});
    EXPECT_THAT(trace.Texts(7),
                ElementsAre("Attempting to find the stop bit position for the LastByte[10]:00.\n",
                            "Attempting to find the stop bit position for the LastByte[9]:00.\n",
                            "Attempting to find the stop bit position for the LastByte[8]:80.\n"));
    EXPECT_THAT(trace.messages(),
                Each(AllOf(Field(&TracedMessage::function, "Caller"),
                           Field(&TracedMessage::file, "caller.cpp"), Field(&TracedMessage::line, 7))));
}

TEST(TrailingBits, Level6TracesNoBytes) {
    const TraceCapture trace(6);
    Find({1, 1, 0x31, 0x80});
    EXPECT_TRUE(trace.messages().empty());
}

}  // namespace
}  // namespace test
