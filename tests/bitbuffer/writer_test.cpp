#include <gmock/gmock.h>

#include <climits>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "bit_writer.h"
#include "bitbuffer.h"
#include "support/bit_string.h"
#include "support/nal_unit.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;

Bytes RandomBytes(size_t n, std::mt19937_64 *random) {
    Bytes bytes(n);
    for (unsigned char &byte : bytes)
        byte = static_cast<unsigned char>((*random)());
    return bytes;
}

// The bytes with the bits from `offset` on replaced.
Bytes Overwritten(Bytes bytes, size_t offset, const BitString &bits) {
    for (size_t i = 0; i < bits.size(); i++) {
        const unsigned int mask = 0x80u >> (offset + i) % 8;
        unsigned char &byte = bytes[(offset + i) / 8];
        byte = static_cast<unsigned char>(bits[i] ? byte | mask : byte & ~mask);
    }
    return bytes;
}

using Write = std::function<int(bitbuffer_t *)>;

// Writes at `offset` into a heap block of random bytes whose last valid bit is `num_bits`.
void ExpectWritten(const Write &write, size_t offset, size_t num_bits, const BitString &bits,
                   std::mt19937_64 *random) {
    const Bytes before = RandomBytes((num_bits + 7) / 8, random);
    Bytes bytes = before;
    bitbuffer_t bb{bytes.data(), static_cast<unsigned int>(offset), static_cast<unsigned int>(num_bits)};
    ASSERT_EQ(write(&bb), 0);
    ASSERT_EQ(bytes, Overwritten(before, offset, bits));
    ASSERT_EQ(bb.bit_offset, offset + bits.size());
    ASSERT_EQ(bb.num_bits, num_bits);
}

void ExpectNotWritten(const Write &write, size_t offset, size_t num_bits, std::mt19937_64 *random) {
    const Bytes before = RandomBytes((num_bits + 7) / 8, random);
    Bytes bytes = before;
    bitbuffer_t bb{bytes.data(), static_cast<unsigned int>(offset), static_cast<unsigned int>(num_bits)};
    ASSERT_EQ(write(&bb), -1);
    ASSERT_EQ(bytes, before);
    ASSERT_EQ(bb.bit_offset, offset);
    ASSERT_EQ(bb.num_bits, num_bits);
}

// With exactly the room it needs, with more, and with one bit less.
void ExpectWrites(const Write &write, size_t offset, const BitString &bits, std::mt19937_64 *random) {
    SCOPED_TRACE(std::to_string(bits.size()) + " bits at " + std::to_string(offset));
    const size_t end = offset + bits.size();
    for (const size_t num_bits : {end, end + 1, end + 77})
        ASSERT_NO_FATAL_FAILURE(ExpectWritten(write, offset, num_bits, bits, random));
    ASSERT_NO_FATAL_FAILURE(ExpectNotWritten(write, offset, end - 1, random));
}

// One fixed-width write operation.
struct FieldWriter {
    const char *name;
    unsigned int max_bits;
    std::function<int(bitbuffer_t *, unsigned int n, uint64_t value)> write;
};

void PrintTo(const FieldWriter &writer, std::ostream *out) {
    *out << writer.name;
}

template <typename Value>
FieldWriter MakeWriter(const char *name, int (*write)(bitbuffer_t *, unsigned int, Value)) {
    return {name, 8 * sizeof(Value), [write](bitbuffer_t *bb, unsigned int n, uint64_t value) {
                return write(bb, n, static_cast<Value>(value));
            }};
}

const FieldWriter kWriters[] = {
    {"__DoSetNextBit", 1,
     [](bitbuffer_t *bb, unsigned int, uint64_t value) {
         return __DoSetNextBit(bb, value & 1, "Caller", "caller.cpp", 17);
     }},
    MakeWriter<uint8_t>("SetNextNBitsFromUint8", SetNextNBitsFromUint8),
    MakeWriter<uint16_t>("SetNextNBitsFromUint16", SetNextNBitsFromUint16),
    MakeWriter<uint32_t>("SetNextNBitsFromUint32", SetNextNBitsFromUint32),
    MakeWriter<int32_t>("SetNextNBitsFromInt32", SetNextNBitsFromInt32),
};

class FieldWrite : public testing::TestWithParam<FieldWriter> {
 protected:
    static Write Writing(unsigned int n, uint64_t value) {
        return [=](bitbuffer_t *bb) { return GetParam().write(bb, n, value); };
    }

    std::mt19937_64 random_{1};
};

// The operation's name without leading underscores, which names of tests do not have.
std::string TestName(const testing::TestParamInfo<FieldWriter> &writer) {
    const std::string name = writer.param.name;
    return name.substr(name.find_first_not_of('_'));
}

INSTANTIATE_TEST_SUITE_P(, FieldWrite, testing::ValuesIn(kWriters), TestName);

// All but the first, which has no width.
class SizedFieldWrite : public FieldWrite {};

INSTANTIATE_TEST_SUITE_P(, SizedFieldWrite, testing::ValuesIn(kWriters + 1, std::end(kWriters)), TestName);

TEST_P(FieldWrite, PutsTheLowBitsAtEveryPosition) {
    for (size_t offset = 0; offset < 72; offset++) {
        for (unsigned int n = 1; n <= GetParam().max_bits; n++) {
            for (const uint64_t value : {uint64_t{0}, ~uint64_t{0}, random_()}) {
                ExpectWrites(Writing(n, value), offset, BitString().U(n, value), &random_);
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_P(SizedFieldWrite, RefusesWidthsOutOfRange) {
    for (const unsigned int n : {0u, GetParam().max_bits + 1, 64u, 65u, UINT_MAX - 2, UINT_MAX})
        ExpectNotWritten(Writing(n, 0), 3, 256, &random_);
}

TEST_P(FieldWrite, FailsBehindTheEnd) {
    for (const unsigned int offset : {8u, 9u, 1000u, UINT_MAX - 7, UINT_MAX})
        ExpectNotWritten(Writing(1, 1), offset, 8, &random_);
    ExpectNotWritten(Writing(1, 1), 0, 0, &random_);
}

TEST_P(FieldWrite, ANullCursorIsReportedAndFails) {
    const TraceCapture trace;
    EXPECT_EQ(GetParam().write(nullptr, 1, 1), -1);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL")));
}

TEST(BitWrite, ReportsInTheNameOfTheCaller) {
    const TraceCapture trace;
    EXPECT_EQ(__DoSetNextBit(nullptr, 1, "Caller", "caller.cpp", 17), -1);
    ASSERT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, "Caller");
    EXPECT_EQ(trace.messages()[0].file, "caller.cpp");
    EXPECT_EQ(trace.messages()[0].line, 17);
}

// ---- Exp-Golomb codes ------------------------------------------------------------------------------------

class GolombWrite : public testing::Test {
 protected:
    void ExpectValueWritten(uint32_t value) {
        SCOPED_TRACE(value);
        const Write write = [=](bitbuffer_t *bb) { return SetUint32Golomb(bb, value); };
        for (size_t offset = 0; offset < 8; offset++)
            ASSERT_NO_FATAL_FAILURE(ExpectWrites(write, offset, BitString().Ue(value), &random_));
    }

    std::mt19937_64 random_{2};
};

TEST_F(GolombWrite, SmallValues) {
    for (uint32_t value = 0; value < 600; value++)
        ASSERT_NO_FATAL_FAILURE(ExpectValueWritten(value));
}

TEST_F(GolombWrite, PowersOfTwoAndTheirNeighbours) {
    for (unsigned int power = 9; power <= 31; power++) {
        const uint32_t value = 1u << power;
        for (const uint32_t near : {value - 2, value - 1, value, value + 1})
            ASSERT_NO_FATAL_FAILURE(ExpectValueWritten(near));
    }
    ExpectValueWritten(UINT32_MAX - 1);
    ExpectValueWritten(UINT32_MAX);
}

TEST_F(GolombWrite, RoomForAPartIsNotUsed) {
    for (const uint32_t value : {1u, 255u, 65534u, UINT32_MAX}) {
        const Write write = [=](bitbuffer_t *bb) { return SetUint32Golomb(bb, value); };
        for (size_t room = 0; room < BitString().Ue(value).size(); room++)
            ASSERT_NO_FATAL_FAILURE(ExpectNotWritten(write, 5, 5 + room, &random_));
        ExpectNotWritten(write, UINT_MAX, 80, &random_);
    }
}

TEST_F(GolombWrite, ANullCursorIsReportedAndFails) {
    const TraceCapture trace;
    EXPECT_EQ(SetUint32Golomb(nullptr, 0), -1);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL")));
}

// ---- bit strings -----------------------------------------------------------------------------------------

class StringWrite : public testing::Test {
 protected:
    // The first n bits of a packed string, which may have more.
    static BitString Unpacked(const Bytes &packed, size_t n) {
        BitString bits;
        for (size_t i = 0; i < n; i++)
            bits.U(1, packed[i / 8] >> (7 - i % 8));
        return bits;
    }
    static Write Writing(size_t n, const Bytes &packed) {
        return [&packed, n](bitbuffer_t *bb) {
            return SetNextNBitsFromString(bb, static_cast<unsigned int>(n), packed.data());
        };
    }

    std::mt19937_64 random_{3};
};

TEST_F(StringWrite, EveryLengthAtEveryAlignment) {
    for (size_t offset = 0; offset < 8; offset++) {
        for (size_t n = 1; n <= 210; n++) {
            const Bytes packed = RandomBytes((n + 7) / 8, &random_);
            ASSERT_NO_FATAL_FAILURE(ExpectWrites(Writing(n, packed), offset, Unpacked(packed, n), &random_));
        }
    }
}

TEST_F(StringWrite, OfNoBits) {
    const Bytes packed(1, 0xFF);
    for (size_t offset = 0; offset <= 8; offset++)
        ExpectWritten(Writing(0, packed), offset, 8, BitString(), &random_);
}

TEST_F(StringWrite, LengthsNearTheLimitDoNotWrap) {
    const Bytes packed(100, 0xFF);
    for (const unsigned int n : {78u, UINT_MAX - 3, UINT_MAX})
        ExpectNotWritten(Writing(n, packed), 3, 80, &random_);
    ExpectNotWritten(Writing(1, packed), 9, 8, &random_);
}

TEST_F(StringWrite, NullArgumentsAreReportedAndFail) {
    const unsigned char packed = 0xFF;
    const TraceCapture trace;
    EXPECT_EQ(SetNextNBitsFromString(nullptr, 8, &packed), -1);
    ExpectNotWritten([](bitbuffer_t *bb) { return SetNextNBitsFromString(bb, 8, nullptr); }, 0, 8, &random_);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL"), AssertionOf("source != NULL")));
}

// ---- one writer for several elements ---------------------------------------------------------------------

// So that codes of every length come behind every number of bits that the writer holds back.
TEST(BitWriter, CodesFollowEachOtherAtEveryPosition) {
    std::mt19937_64 random(5);
    for (unsigned int zeros = 0; zeros <= 32; zeros++) {
        // all ones behind the zeros; with 32 of them there is one code only
        const uint32_t value = zeros == 32 ? UINT32_MAX : static_cast<uint32_t>((uint64_t{2} << zeros) - 2);
        for (unsigned int in_front = 1; in_front <= 32; in_front++) {
            SCOPED_TRACE(testing::Message() << zeros << " zeros behind " << in_front << " bits");
            BitString bits;
            bits.U(in_front, 0xA5A5'A5A5);
            for (int i = 0; i < 8; i++)
                bits.Ue(value);
            const Write write = [=](bitbuffer_t *bb) {
                bitbuffer::BitWriter writer(bb);
                int result = writer.PutBits(in_front, 32, 0xA5A5'A5A5);
                for (int i = 0; i < 8 && result == 0; i++)
                    result = writer.PutGolomb(value);
                return result;
            };
            ASSERT_NO_FATAL_FAILURE(ExpectWritten(write, 0, bits.size(), bits, &random));
        }
    }
}

// ---- all together ----------------------------------------------------------------------------------------

TEST(RandomWrites, AgreeWithTheModel) {
    std::mt19937_64 random(4);
    for (int round = 0; round < 400; round++) {
        SCOPED_TRACE(round);
        const size_t capacity = random() % 600;
        const Bytes before = RandomBytes((capacity + 7) / 8, &random);
        Bytes bytes = before;
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(capacity)};
        BitString written;
        for (bool fits = true; fits;) {
            const uint64_t value = random();
            BitString bits;
            int result = 0;
            if (random() % 4 == 0) {
                const uint32_t number = static_cast<uint32_t>(value) >> random() % 32;
                bits.Ue(number);
                result = SetUint32Golomb(&bb, number);
            } else {
                const FieldWriter &writer = kWriters[random() % std::size(kWriters)];
                const unsigned int n = static_cast<unsigned int>(1 + random() % writer.max_bits);
                bits.U(n, value);
                result = writer.write(&bb, n, value);
            }
            fits = written.size() + bits.size() <= capacity;
            ASSERT_EQ(result, fits ? 0 : -1);
            if (fits)
                written.Append(bits);
            ASSERT_EQ(bb.bit_offset, written.size());
            ASSERT_EQ(bytes, Overwritten(before, 0, written));
        }
    }
}

}  // namespace
}  // namespace test
