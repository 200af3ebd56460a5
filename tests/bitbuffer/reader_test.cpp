#include <gmock/gmock.h>
#include <sys/mman.h>

#include <climits>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "bitbuffer.h"
#include "support/bit_string.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr uint64_t kUntouched = 0xA5A5'A5A5'A5A5'A5A5;

// A cursor over its own exactly-sized heap block. The bits behind the last valid one are ones, so that a
// reader that takes them is found out.
class Source {
 public:
    explicit Source(const BitString &bits, size_t offset = 0) : bytes_(bits.Bytes()) {
        if (bits.size() % 8 != 0)
            bytes_.back() = static_cast<unsigned char>(bytes_.back() | 0xFF >> bits.size() % 8);
        bb = {bytes_.data(), static_cast<unsigned int>(offset), static_cast<unsigned int>(bits.size())};
    }
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    bitbuffer_t bb;

 private:
    std::vector<unsigned char> bytes_;
};

BitString RandomBits(size_t n, std::mt19937_64 *random) {
    BitString bits;
    for (size_t i = 0; i < n; i++)
        bits.U(1, (*random)());
    return bits;
}

// Ones, so that whatever precedes a field cannot be taken for its zeros.
BitString Ones(size_t n) {
    BitString bits;
    for (size_t i = 0; i < n; i++)
        bits.U(1, 1);
    return bits;
}

uint64_t Number(const BitString &bits, size_t offset, size_t n) {
    uint64_t number = 0;
    for (size_t i = offset; i < offset + n; i++)
        number = number << 1 | bits[i];
    return number;
}

// One fixed-width read operation. What it reads is widened to 64 bits, with its sign if it has one.
struct FieldReader {
    const char *name;
    unsigned int max_bits;
    bool is_signed;
    std::function<int(bitbuffer_t *, unsigned int n, uint64_t *value)> read;
};

void PrintTo(const FieldReader &reader, std::ostream *out) {
    *out << reader.name;
}

template <typename Value, typename Read>
FieldReader MakeReader(const char *name, unsigned int max_bits, bool is_signed, Read read) {
    return {name, max_bits, is_signed, [read](bitbuffer_t *bb, unsigned int n, uint64_t *value) {
                if (value == nullptr)
                    return read(bb, n, nullptr);
                Value field = static_cast<Value>(kUntouched);
                const int result = read(bb, n, &field);
                *value = field == static_cast<Value>(kUntouched) && result == -1
                             ? kUntouched
                             : static_cast<uint64_t>(field);
                return result;
            }};
}

const FieldReader kReaders[] = {
    MakeReader<int>("GetNextBitEx", 1, false,
                    [](bitbuffer_t *bb, unsigned int, int *value) { return GetNextBitEx(bb, value); }),
    MakeReader<uint8_t>("GetNextNBitsAsUint8", 8, false, GetNextNBitsAsUint8),
    MakeReader<uint16_t>("GetNextNBitsAsUint16", 16, false, GetNextNBitsAsUint16),
    MakeReader<uint32_t>("GetNextNBitsAsUint32", 32, false, GetNextNBitsAsUint32),
    MakeReader<uint64_t>("GetNextNBitsAsUint64", 64, false, GetNextNBitsAsUint64),
    MakeReader<int32_t>("GetNextNBitsAsInt32", 32, true, GetNextNBitsAsInt32),
};

class FieldRead : public testing::TestWithParam<FieldReader> {
 protected:
    static uint64_t Expected(const BitString &bits, size_t offset, unsigned int n) {
        const uint64_t number = Number(bits, offset, n);
        const bool negative = GetParam().is_signed && bits[offset];
        return negative ? number - (uint64_t{1} << n) : number;
    }

    static void ExpectFailure(bitbuffer_t *bb, unsigned int n) {
        const bitbuffer_t before = *bb;
        uint64_t value = 0;
        EXPECT_EQ(GetParam().read(bb, n, &value), -1);
        EXPECT_EQ(value, kUntouched);
        EXPECT_EQ(bb->bit_buffer, before.bit_buffer);
        EXPECT_EQ(bb->bit_offset, before.bit_offset);
        EXPECT_EQ(bb->num_bits, before.num_bits);
    }
};

std::string TestName(const testing::TestParamInfo<FieldReader> &reader) {
    return reader.param.name;
}

INSTANTIATE_TEST_SUITE_P(, FieldRead, testing::ValuesIn(kReaders), TestName);

// All but the first, which has no width.
class SizedFieldRead : public FieldRead {};

INSTANTIATE_TEST_SUITE_P(, SizedFieldRead, testing::ValuesIn(kReaders + 1, std::end(kReaders)), TestName);

TEST_P(FieldRead, TakesExactlyTheBitsLeftAtEveryPosition) {
    std::mt19937_64 random(1);
    for (size_t offset = 0; offset < 80; offset++) {
        for (unsigned int n = 1; n <= GetParam().max_bits; n++) {
            SCOPED_TRACE(std::to_string(n) + " bits at " + std::to_string(offset));
            const BitString bits = RandomBits(offset + n, &random);
            Source source(bits, offset);
            uint64_t value = 0;
            ASSERT_EQ(GetParam().read(&source.bb, n, &value), 0);
            ASSERT_EQ(value, Expected(bits, offset, n));
            ASSERT_EQ(source.bb.bit_offset, source.bb.num_bits);

            Source one_bit_less(bits.Prefix(offset + n - 1), offset);
            ExpectFailure(&one_bit_less.bb, n);
            if (HasFailure())
                return;
        }
    }
}

TEST_P(FieldRead, LeavesWhatFollows) {
    std::mt19937_64 random(2);
    const BitString bits = RandomBits(200, &random);
    for (size_t offset = 0; offset < 16; offset++) {
        for (unsigned int n = 1; n <= GetParam().max_bits; n++) {
            SCOPED_TRACE(std::to_string(n) + " bits at " + std::to_string(offset));
            Source source(bits, offset);
            uint64_t value = 0;
            ASSERT_EQ(GetParam().read(&source.bb, n, &value), 0);
            ASSERT_EQ(value, Expected(bits, offset, n));
            ASSERT_EQ(source.bb.bit_offset, offset + n);
        }
    }
}

TEST_P(SizedFieldRead, RefusesWidthsOutOfRange) {
    Source source(Ones(256), 3);
    for (const unsigned int n : {0u, GetParam().max_bits + 1, 65u, 128u, UINT_MAX - 2, UINT_MAX})
        ExpectFailure(&source.bb, n);
}

TEST_P(FieldRead, FailsBehindTheEnd) {
    for (const unsigned int offset : {8u, 9u, 16u, 1000u, UINT_MAX - 7, UINT_MAX}) {
        Source source(Ones(8), offset);
        ExpectFailure(&source.bb, 1);
    }
    Source nothing(BitString(), 0);
    ExpectFailure(&nothing.bb, 1);
}

TEST_P(FieldRead, NullArgumentsAreReportedOnceAndFail) {
    Source source(Ones(64));
    uint64_t value = 0;
    TraceCapture trace;
    EXPECT_EQ(GetParam().read(nullptr, 1, &value), -1);
    EXPECT_EQ(value, kUntouched);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL")));
    trace.Clear();
    EXPECT_EQ(GetParam().read(&source.bb, 1, nullptr), -1);
    EXPECT_EQ(source.bb.bit_offset, 0u);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("value != NULL")));
}

// The longest buffer that a cursor can describe. It is backed by zero pages, so that only the ends cost
// memory, and a page that cannot be touched follows it.
class LongestBuffer {
 public:
    LongestBuffer() {
        const size_t guard = 65536;  // a multiple of every page size
        area_ = ::mmap(nullptr, kSize + guard, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (area_ != MAP_FAILED && ::mprotect(bytes() + kSize, guard, PROT_NONE) == 0)
            size_ = kSize + guard;
    }
    ~LongestBuffer() {
        if (area_ != MAP_FAILED)
            ::munmap(area_, size_);
    }
    LongestBuffer(const LongestBuffer &) = delete;
    LongestBuffer &operator=(const LongestBuffer &) = delete;

    bool usable() const { return size_ > 0; }
    unsigned char *bytes() { return static_cast<unsigned char *>(area_); }
    unsigned char *end() { return bytes() + kSize; }

    static constexpr size_t kSize = size_t{1} << 29;

 private:
    void *area_;
    size_t size_ = 0;
};

TEST_P(FieldRead, ReachesTheLastBitThatACursorCanName) {
    LongestBuffer buffer;
    if (!buffer.usable())
        GTEST_SKIP() << "not enough address space";
    for (int i = 1; i <= 9; i++)
        buffer.end()[-i] = 0xFF;
    bitbuffer_t bb{buffer.bytes(), 0, UINT_MAX};
    for (unsigned int n = 1; n <= GetParam().max_bits; n++) {
        bb.bit_offset = UINT_MAX - n;
        uint64_t value = 0;
        ASSERT_EQ(GetParam().read(&bb, n, &value), 0);
        ASSERT_EQ(value, Expected(Ones(n), 0, n));
        ASSERT_EQ(bb.bit_offset, UINT_MAX);
        bb.bit_offset = UINT_MAX - n + 1;
        ExpectFailure(&bb, n);
    }
}

TEST(FieldReadExample, SixBitsFromTheSecondOn) {
    unsigned char bytes[] = {0x46};
    bitbuffer_t bb{bytes, 1, 8};
    uint8_t value = 0;
    EXPECT_EQ(GetNextNBitsAsUint8(&bb, 6, &value), 0);
    EXPECT_EQ(value, 35);
}

TEST(FieldReadExample, NegativeNumbers) {
    unsigned char bytes[] = {0xFE, 0x80, 0x00, 0x00, 0x00};
    bitbuffer_t bb{bytes, 0, 40};
    int32_t value = 0;
    EXPECT_EQ(GetNextNBitsAsInt32(&bb, 1, &value), 0);
    EXPECT_EQ(value, -1);
    EXPECT_EQ(GetNextNBitsAsInt32(&bb, 7, &value), 0);
    EXPECT_EQ(value, -2);
    EXPECT_EQ(GetNextNBitsAsInt32(&bb, 32, &value), 0);
    EXPECT_EQ(value, INT32_MIN);
}

// ---- Exp-Golomb codes ------------------------------------------------------------------------------------

// All small values, and powers of two with their neighbours up to the largest.
std::vector<uint32_t> GolombValues() {
    std::vector<uint32_t> values;
    for (uint32_t value = 0; value < 600; value++)
        values.push_back(value);
    for (unsigned int power = 10; power <= 32; power++) {
        for (uint64_t value = (uint64_t{1} << power) - 2; value <= (uint64_t{1} << power) + 1; value++) {
            if (value <= UINT32_MAX)
                values.push_back(static_cast<uint32_t>(value));
        }
    }
    return values;
}

template <typename Value>
void ExpectGolombFailure(int (*read)(bitbuffer_t *, Value *), bitbuffer_t *bb) {
    const unsigned int offset = bb->bit_offset;
    Value value = static_cast<Value>(kUntouched);
    EXPECT_EQ(read(bb, &value), -1);
    EXPECT_EQ(value, static_cast<Value>(kUntouched));
    EXPECT_EQ(bb->bit_offset, offset);
}

// Reads a code at every bit alignment: with the data ending behind it, with ones following it, and one bit
// short.
template <typename Value>
void ExpectGolomb(int (*read)(bitbuffer_t *, Value *), const BitString &code, Value expected) {
    SCOPED_TRACE(expected);
    for (size_t offset = 0; offset < 8; offset++) {
        for (const size_t following : std::initializer_list<size_t>{0, 1, 70}) {
            const BitString bits = Ones(offset).Append(code).Append(Ones(following));
            Source source(bits, offset);
            Value value = 0;
            ASSERT_EQ(read(&source.bb, &value), 0);
            ASSERT_EQ(value, expected);
            ASSERT_EQ(source.bb.bit_offset, offset + code.size());
        }
        Source one_bit_less(Ones(offset).Append(code.Prefix(code.size() - 1)), offset);
        ExpectGolombFailure(read, &one_bit_less.bb);
        if (testing::Test::HasFailure())
            return;
    }
}

TEST(GolombRead, Examples) {
    const auto bits = [](std::initializer_list<int> digits) {
        BitString string;
        for (const int digit : digits)
            string.U(1, static_cast<uint64_t>(digit));
        return string;
    };
    ExpectGolomb<uint32_t>(GetUint32Golomb, bits({1}), 0);
    ExpectGolomb<uint32_t>(GetUint32Golomb, bits({0, 1, 0}), 1);
    ExpectGolomb<uint32_t>(GetUint32Golomb, bits({0, 0, 1, 1, 1}), 6);
    ExpectGolomb<int32_t>(GetInt32Golomb, bits({1}), 0);
    ExpectGolomb<int32_t>(GetInt32Golomb, bits({0, 1, 0}), 1);
    ExpectGolomb<int32_t>(GetInt32Golomb, bits({0, 1, 1}), -1);
}

TEST(GolombRead, UnsignedValues) {
    for (const uint32_t value : GolombValues())
        ExpectGolomb(GetUint32Golomb, BitString().Ue(value), value);
}

TEST(GolombRead, SignedValues) {
    for (const uint32_t value : GolombValues()) {
        if (value > INT32_MAX)
            continue;
        const int32_t magnitude = static_cast<int32_t>(value);
        ExpectGolomb(GetInt32Golomb, BitString().Se(magnitude), magnitude);
        ExpectGolomb(GetInt32Golomb, BitString().Se(-magnitude), -magnitude);
    }
}

TEST(GolombRead, CutAnywhereFails) {
    for (const uint32_t value : {1u, 254u, 255u, 65535u, (1u << 28) - 2, (1u << 28) - 1, UINT32_MAX}) {
        const BitString code = BitString().Ue(value);
        for (size_t length = 0; length < code.size(); length++) {
            for (size_t offset = 0; offset < 8; offset++) {
                Source source(Ones(offset).Append(code.Prefix(length)), offset);
                ExpectGolombFailure(GetUint32Golomb, &source.bb);
                ExpectGolombFailure(GetInt32Golomb, &source.bb);
            }
        }
    }
}

TEST(GolombRead, ValuesBeyond32BitsFail) {
    for (size_t offset = 0; offset < 8; offset++) {
        for (const uint64_t value : {uint64_t{1} << 32, (uint64_t{1} << 33) - 2, (uint64_t{1} << 33) - 1,
                                     (uint64_t{1} << 40), (uint64_t{1} << 62)}) {
            Source source(Ones(offset).Append(BitString().Ue(value)).Append(Ones(80)), offset);
            ExpectGolombFailure(GetUint32Golomb, &source.bb);
            ExpectGolombFailure(GetInt32Golomb, &source.bb);
        }
        Source zeros(Ones(offset).Append(BitString().U(64, 0).U(64, 0).U(1, 1)).Append(Ones(128)), offset);
        ExpectGolombFailure(GetUint32Golomb, &zeros.bb);
        ExpectGolombFailure(GetInt32Golomb, &zeros.bb);
    }
}

TEST(GolombRead, TheSignedValueOf32BitsFails) {
    for (size_t offset = 0; offset < 8; offset++) {
        Source source(Ones(offset).Append(BitString().Ue(UINT32_MAX)), offset);
        ExpectGolombFailure(GetInt32Golomb, &source.bb);
    }
}

TEST(GolombRead, FailsBehindTheEnd) {
    for (const unsigned int offset : {8u, 9u, 1000u, UINT_MAX}) {
        Source source(Ones(8), offset);
        ExpectGolombFailure(GetUint32Golomb, &source.bb);
        ExpectGolombFailure(GetInt32Golomb, &source.bb);
    }
}

TEST(GolombRead, ReachesTheLastBitThatACursorCanName) {
    LongestBuffer buffer;
    if (!buffer.usable())
        GTEST_SKIP() << "not enough address space";
    buffer.end()[-1] = 0x03;  // 010 or 011: the last bit is one that no cursor can name
    bitbuffer_t bb{buffer.bytes(), UINT_MAX - 2, UINT_MAX};
    ExpectGolombFailure(GetUint32Golomb, &bb);
    bb.bit_offset = UINT_MAX - 1;
    uint32_t value = 9;
    EXPECT_EQ(GetUint32Golomb(&bb, &value), 0);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(bb.bit_offset, UINT_MAX);
}

TEST(GolombRead, NullArgumentsAreReportedOnceAndFail) {
    Source source(Ones(8));
    uint32_t value = 7;
    int32_t signed_value = 7;
    const TraceCapture trace;
    EXPECT_EQ(GetUint32Golomb(nullptr, &value), -1);
    EXPECT_EQ(GetUint32Golomb(&source.bb, nullptr), -1);
    EXPECT_EQ(GetInt32Golomb(nullptr, &signed_value), -1);
    EXPECT_EQ(GetInt32Golomb(&source.bb, nullptr), -1);
    EXPECT_EQ(value, 7u);
    EXPECT_EQ(signed_value, 7);
    EXPECT_EQ(source.bb.bit_offset, 0u);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("bb != NULL"), AssertionOf("value != NULL"),
                                                AssertionOf("bb != NULL"), AssertionOf("value != NULL")));
}

// ---- bit strings -----------------------------------------------------------------------------------------

// The bits of `bits` from `offset` on, packed.
std::vector<unsigned char> Packed(const BitString &bits, size_t offset, size_t n) {
    BitString part;
    for (size_t i = offset; i < offset + n; i++)
        part.U(1, bits[i]);
    return part.Bytes();
}

void ExpectStringFailure(bitbuffer_t *bb, size_t n, size_t capacity) {
    const unsigned int offset = bb->bit_offset;
    std::vector<unsigned char> destination(capacity, 0xA5);
    destination.reserve(1);  // never a null pointer
    EXPECT_EQ(GetNextNBitsAsStringEx(bb, static_cast<unsigned int>(n), destination.data(),
                                     static_cast<unsigned int>(capacity)),
              -1);
    EXPECT_THAT(destination, Each(0xA5));
    EXPECT_EQ(bb->bit_offset, offset);
}

TEST(StringRead, EveryLengthAtEveryAlignment) {
    std::mt19937_64 random(3);
    for (size_t offset = 0; offset < 8; offset++) {
        for (size_t n = 1; n <= 210; n++) {
            SCOPED_TRACE(std::to_string(n) + " bits at " + std::to_string(offset));
            const BitString bits = RandomBits(offset + n, &random);
            const size_t size = (n + 7) / 8;
            Source source(bits, offset);
            std::vector<unsigned char> destination(size, 0xA5);
            ASSERT_EQ(GetNextNBitsAsStringEx(&source.bb, static_cast<unsigned int>(n), destination.data(),
                                             static_cast<unsigned int>(size)),
                      0);
            ASSERT_EQ(destination, Packed(bits, offset, n));
            ASSERT_EQ(source.bb.bit_offset, offset + n);

            source.bb.bit_offset = static_cast<unsigned int>(offset);
            ExpectStringFailure(&source.bb, n, size - 1);
            Source one_bit_less(bits.Prefix(offset + n - 1), offset);
            ExpectStringFailure(&one_bit_less.bb, n, size);
            if (HasFailure())
                return;
        }
    }
}

TEST(StringRead, LeavesTheRestOfTheDestination) {
    for (size_t offset = 0; offset < 8; offset++) {
        Source source(Ones(100), offset);
        std::vector<unsigned char> destination(12, 0xA5);
        ASSERT_EQ(GetNextNBitsAsStringEx(&source.bb, 11, destination.data(), 12), 0);
        EXPECT_THAT(destination,
                    ElementsAre(0xFF, 0xE0, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5));
    }
}

TEST(StringRead, OfNoBits) {
    Source source(Ones(8), 8);
    unsigned char byte = 0xA5;
    EXPECT_EQ(GetNextNBitsAsStringEx(&source.bb, 0, &byte, 0), 0);
    EXPECT_EQ(byte, 0xA5);
    EXPECT_EQ(source.bb.bit_offset, 8u);
}

TEST(StringRead, LengthsNearTheLimitDoNotWrap) {
    Source source(Ones(80), 3);
    for (const unsigned int n : {78u, UINT_MAX - 8, UINT_MAX - 3, UINT_MAX})
        ExpectStringFailure(&source.bb, n, 100);
    Source behind(Ones(8), 9);
    ExpectStringFailure(&behind.bb, 1, 100);
}

TEST(StringRead, NullArgumentsAreReportedOnceAndFail) {
    Source source(Ones(8));
    unsigned char byte = 0xA5;
    const TraceCapture trace;
    EXPECT_EQ(GetNextNBitsAsStringEx(nullptr, 8, &byte, 1), -1);
    EXPECT_EQ(GetNextNBitsAsStringEx(&source.bb, 8, nullptr, 1), -1);
    EXPECT_EQ(byte, 0xA5);
    EXPECT_EQ(source.bb.bit_offset, 0u);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("bb != NULL"), AssertionOf("destination != NULL")));
}

// ---- all together ----------------------------------------------------------------------------------------

TEST(RandomReads, AgreeWithTheModel) {
    std::mt19937_64 random(4);
    const auto below = [&](size_t bound) { return static_cast<size_t>(random() % bound); };
    for (int round = 0; round < 400; round++) {
        const BitString bits = RandomBits(below(600), &random);
        Source source(bits);
        for (size_t offset = 0;;) {
            SCOPED_TRACE("round " + std::to_string(round) + ", bit " + std::to_string(offset));
            const FieldReader &reader = kReaders[below(std::size(kReaders))];
            const unsigned int n = static_cast<unsigned int>(1 + below(reader.max_bits));
            uint64_t value = 0;
            const int result = reader.read(&source.bb, n, &value);
            if (offset + n > bits.size()) {
                ASSERT_EQ(result, -1);
                ASSERT_EQ(source.bb.bit_offset, offset);
                break;
            }
            const uint64_t mask = ~uint64_t{0} >> (64 - n);
            ASSERT_EQ(result, 0);
            ASSERT_EQ(value & mask, Number(bits, offset, n));
            offset += n;
            ASSERT_EQ(source.bb.bit_offset, offset);
        }
    }
}

TEST(RandomReads, OfCodesAgreeWithTheModel) {
    std::mt19937_64 random(5);
    for (int round = 0; round < 200; round++) {
        SCOPED_TRACE(round);
        std::vector<uint32_t> values;
        BitString bits;
        for (int i = 0; i < 50; i++) {
            values.push_back(static_cast<uint32_t>(random()) >> random() % 32);
            bits.Ue(values.back());
        }
        Source source(bits);
        for (const uint32_t expected : values) {
            uint32_t value = ~expected;
            ASSERT_EQ(GetUint32Golomb(&source.bb, &value), 0);
            ASSERT_EQ(value, expected);
        }
        ExpectGolombFailure(GetUint32Golomb, &source.bb);
    }
}

}  // namespace
}  // namespace test
