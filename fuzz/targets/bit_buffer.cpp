// Random operations of the bit buffer service, each against a model that goes bit by bit: __DoInitBitBuffer,
// AdvanceBitOffset, DisplayBitBuffer, BitBufferSetTraceChannel, GetNextBitEx, GetNextNBitsAsUint8,
// GetNextNBitsAsUint16, GetNextNBitsAsUint32, GetNextNBitsAsUint64, GetNextNBitsAsInt32,
// GetNextNBitsAsStringEx, GetUint32Golomb, GetInt32Golomb, __DoSetNextBit, SetNextNBitsFromUint8,
// SetNextNBitsFromUint16, SetNextNBitsFromUint32, SetNextNBitsFromInt32, SetNextNBitsFromString,
// SetUint32Golomb.

#include <optional>

#include "bitbuffer.h"
#include "support/bit_string.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/target.h"
#include "support/trace.h"

namespace {

using fuzz::Bytes;
using fuzz::ExactBuffer;
using fuzz::FuzzInput;
using test::BitString;

// The cursor under test, and the same bits one by one.
class Cursors {
 public:
    Cursors(const Bytes &bytes, unsigned int num_bits) : buffer_(bytes), num_bits_(num_bits) {
        for (const unsigned char byte : bytes) {
            for (int bit = 7; bit >= 0; bit--)
                bits_.push_back((byte >> bit & 1) != 0);
        }
        FUZZ_CHECK(__DoInitBitBuffer(&bb_, buffer_.data(), num_bits, __func__, "bit_buffer.cpp", __LINE__) ==
                   0);
    }

    // The next n bits as a number; none when they are not there, or n is none of 1 to `most`.
    std::optional<uint64_t> Expected(unsigned int n, unsigned int most) const {
        if (n < 1 || n > most || offset_ > num_bits_ || n > num_bits_ - offset_)
            return {};
        uint64_t value = 0;
        for (uint64_t i = offset_; i < offset_ + n; i++)
            value = value << 1 | (bits_[i] ? 1U : 0U);
        return value;
    }

    // The next code word of ue(v), and its length.
    struct Code {
        uint32_t value;
        unsigned int length;
    };
    std::optional<Code> ExpectedGolomb() const {
        unsigned int zeros = 0;
        while (offset_ + zeros < num_bits_ && !bits_[offset_ + zeros])
            zeros++;
        if (offset_ > num_bits_ || zeros > 32 || 2 * uint64_t{zeros} + 1 > num_bits_ - offset_)
            return {};
        uint64_t code = 0;
        for (uint64_t i = offset_ + zeros; i <= offset_ + 2 * uint64_t{zeros}; i++)
            code = code << 1 | (bits_[i] ? 1U : 0U);
        if (code - 1 > UINT32_MAX)
            return {};
        return Code{static_cast<uint32_t>(code - 1), 2 * zeros + 1};
    }

    void Advance(uint64_t n) { offset_ = std::min<uint64_t>(offset_ + n, UINT32_MAX); }

    // Writes into the model; tells whether that is possible.
    bool Put(const BitString &written) {
        if (offset_ > num_bits_ || written.size() > num_bits_ - offset_)
            return false;
        for (size_t i = 0; i < written.size(); i++)
            bits_[offset_ + i] = written[i];
        offset_ += written.size();
        return true;
    }

    void Check() const {
        BitString bits;
        for (const bool bit : bits_)
            bits.U(1, bit ? 1 : 0);
        FUZZ_CHECK(bb_.bit_offset == offset_ && bb_.num_bits == num_bits_);
        FUZZ_CHECK(buffer_.Content() == bits.Bytes());
    }

    bitbuffer_t *bb() { return &bb_; }

 private:
    ExactBuffer buffer_;
    bitbuffer_t bb_{};
    std::vector<bool> bits_;
    uint64_t offset_ = 0;
    uint64_t num_bits_;
};

constexpr uint32_t kBefore = 0xA5A5A5A5;  // in a destination

template <typename Value>
void CheckGet(Cursors *cursors, unsigned int n, int (*get)(bitbuffer_t *, unsigned int, Value *)) {
    const auto expected = cursors->Expected(n, sizeof(Value) * 8);
    Value value = static_cast<Value>(kBefore);
    FUZZ_CHECK(get(cursors->bb(), n, &value) == (expected ? 0 : -1));
    FUZZ_CHECK(value == static_cast<Value>(expected.value_or(kBefore)));
    cursors->Advance(expected ? n : 0);
}

void CheckGetBit(Cursors *cursors) {
    const auto expected = cursors->Expected(1, 1);
    int value = -2;
    FUZZ_CHECK(GetNextBitEx(cursors->bb(), &value) == (expected ? 0 : -1));
    FUZZ_CHECK(value == (expected ? static_cast<int>(*expected) : -2));
    cursors->Advance(expected ? 1 : 0);
}

void CheckGetInt32(Cursors *cursors, unsigned int n) {
    const auto expected = cursors->Expected(n, 32);
    int32_t value = -2;
    FUZZ_CHECK(GetNextNBitsAsInt32(cursors->bb(), n, &value) == (expected ? 0 : -1));
    if (expected) {
        const int64_t weight = *expected >> (n - 1) != 0 ? int64_t{1} << n : 0;  // of the sign bit, twice
        FUZZ_CHECK(value == static_cast<int64_t>(*expected) - weight);
    } else {
        FUZZ_CHECK(value == -2);
    }
    cursors->Advance(expected ? n : 0);
}

void CheckGetGolomb(Cursors *cursors, bool is_signed) {
    auto expected = cursors->ExpectedGolomb();
    uint32_t value = kBefore;
    int32_t signed_value = -2;
    if (is_signed) {
        if (expected && expected->value == UINT32_MAX)
            expected.reset();
        FUZZ_CHECK(GetInt32Golomb(cursors->bb(), &signed_value) == (expected ? 0 : -1));
        const int64_t magnitude = expected ? (int64_t{expected->value} + 1) / 2 : 2;
        FUZZ_CHECK(signed_value == (expected && expected->value % 2 != 0 ? magnitude : -magnitude));
    } else {
        FUZZ_CHECK(GetUint32Golomb(cursors->bb(), &value) == (expected ? 0 : -1));
        FUZZ_CHECK(value == (expected ? expected->value : kBefore));
    }
    cursors->Advance(expected ? expected->length : 0);
}

void CheckGetString(Cursors *cursors, FuzzInput *input, unsigned int n) {
    constexpr unsigned char kUntouched = 0xA5;
    ExactBuffer destination(Bytes(input->Flag() ? (size_t{n} + 7) / 8 % 4096 : input->Below(40), kUntouched));
    const bool possible = n == 0 || ((size_t{n} + 7) / 8 <= destination.size() && cursors->Expected(1, 1) &&
                                     uint64_t{cursors->bb()->bit_offset} + n <= cursors->bb()->num_bits);
    Bytes expected(destination.size(), kUntouched);
    BitString bits;
    const unsigned int start = cursors->bb()->bit_offset;
    for (unsigned int i = 0; possible && i < n; i++) {
        bits.U(1, *cursors->Expected(1, 1));
        cursors->Advance(1);
    }
    const Bytes packed = bits.Bytes();
    std::copy(packed.begin(), packed.end(), expected.begin());
    FUZZ_CHECK(cursors->bb()->bit_offset == start);
    FUZZ_CHECK(GetNextNBitsAsStringEx(cursors->bb(), n, destination.data(), destination.unsigned_length()) ==
               (possible ? 0 : -1));
    FUZZ_CHECK(destination.Content() == expected);
}

template <typename Value>
void CheckSet(Cursors *cursors, unsigned int n, uint64_t value,
              int (*set)(bitbuffer_t *, unsigned int, Value)) {
    const bool possible = n >= 1 && n <= sizeof(Value) * 8 && cursors->Put(BitString().U(n, value));
    FUZZ_CHECK(set(cursors->bb(), n, static_cast<Value>(value)) == (possible ? 0 : -1));
}

void CheckSetString(Cursors *cursors, FuzzInput *input, unsigned int n) {
    constexpr unsigned int kLongest = 4000;
    n %= kLongest;
    Bytes source = input->Take((size_t{n} + 7) / 8);
    source.resize((size_t{n} + 7) / 8);
    BitString bits;
    for (const unsigned char byte : source)
        bits.U(8, byte);
    ExactBuffer exact(source);
    const bool possible = n == 0 || cursors->Put(bits.Prefix(n));
    FUZZ_CHECK(SetNextNBitsFromString(cursors->bb(), n, exact.data()) == (possible ? 0 : -1));
}

void Read(Cursors *cursors, FuzzInput *input, unsigned int n) {
    switch (input->Below(8)) {
        case 0:
            return CheckGetBit(cursors);
        case 1:
            return CheckGet<uint8_t>(cursors, n, GetNextNBitsAsUint8);
        case 2:
            return CheckGet<uint16_t>(cursors, n, GetNextNBitsAsUint16);
        case 3:
            return CheckGet<uint32_t>(cursors, n, GetNextNBitsAsUint32);
        case 4:
            return CheckGet<uint64_t>(cursors, n, GetNextNBitsAsUint64);
        case 5:
            return CheckGetInt32(cursors, n);
        case 6:
            return CheckGetGolomb(cursors, input->Flag());
        default:
            return CheckGetString(cursors, input, n);
    }
}

void Write(Cursors *cursors, FuzzInput *input, unsigned int n) {
    const uint64_t value = input->Flag() ? input->Bits(32) : input->Number();
    switch (input->Below(7)) {
        case 0: {
            const int bit = static_cast<int>(static_cast<int32_t>(value));
            const bool possible = cursors->Put(BitString().U(1, bit != 0 ? 1 : 0));
            FUZZ_CHECK(__DoSetNextBit(cursors->bb(), bit, __func__, "bit_buffer.cpp", __LINE__) ==
                       (possible ? 0 : -1));
            return;
        }
        case 1:
            return CheckSet<uint8_t>(cursors, n, value, SetNextNBitsFromUint8);
        case 2:
            return CheckSet<uint16_t>(cursors, n, value, SetNextNBitsFromUint16);
        case 3:
            return CheckSet<uint32_t>(cursors, n, value, SetNextNBitsFromUint32);
        case 4:
            return CheckSet<int32_t>(cursors, n, value, SetNextNBitsFromInt32);
        case 5: {
            const bool possible = cursors->Put(BitString().Ue(value));
            FUZZ_CHECK(SetUint32Golomb(cursors->bb(), static_cast<uint32_t>(value)) == (possible ? 0 : -1));
            return;
        }
        default:
            return CheckSetString(cursors, input, n);
    }
}

void Move(Cursors *cursors, FuzzInput *input, unsigned int n) {
    if (input->Byte() >= 32) {
        BitBufferSetTraceChannel(input->Flag() ? &g_hH265LibDbg : nullptr);
        DisplayBitBuffer(cursors->bb(), "RANDOM BITS");
        BitBufferSetTraceChannel(&g_hH265LibDbg);
        return;
    }
    AdvanceBitOffset(cursors->bb(), n);
    cursors->Advance(n);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    constexpr int kMostOperations = 200;  // each is followed by a comparison of all bits
    FuzzInput input(data, size);
    const fuzz::DiscardedTrace trace(&input);
    Bytes bytes = input.Take(input.Below(80));
    if (input.Flag())
        bytes.resize(bytes.size() + input.Below(80));
    const auto all = static_cast<uint32_t>(bytes.size() * 8);
    Cursors cursors(bytes, all - std::min(all, input.Below(9)));
    for (int operations = 0; operations < kMostOperations && !input.IsUsedUp(); operations++) {
        const uint8_t kind = input.Byte();
        const unsigned int n = input.Byte() == 0xFF ? input.Number() : input.Below(72);
        if (kind < 120)
            Read(&cursors, &input, n);
        else if (kind < 250)
            Write(&cursors, &input, n);
        else
            Move(&cursors, &input, n);
        cursors.Check();
    }
    return 0;
}
