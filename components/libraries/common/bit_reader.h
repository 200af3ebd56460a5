// Reading at a cursor: what the bit buffer's reading operations do behind their argument checks. The readers
// of syntax structures have it in line, where a call for each flag would cost several times its reading.

#ifndef COMMON_BIT_READER_H
#define COMMON_BIT_READER_H

#include <bit>
#include <cstddef>
#include <cstdint>

#include "bitbuffer.h"
#include "words.h"

namespace bitbuffer {

// The eight bytes at a position in a buffer, with zeros behind its end.
[[gnu::noinline]] inline uint64_t LoadPadded(const unsigned char *bytes, size_t size, size_t at) {
    if (size - at >= 8)
        return LoadWord(bytes + at);
    if (size >= 8)
        return LoadWord(bytes + size - 8) << 8 * (8 - (size - at));
    uint64_t word = 0;
    if (size >= 4) {
        word = uint64_t{LoadHalfWord(bytes)} << 32 | uint64_t{LoadHalfWord(bytes + size - 4)}
                                                         << 8 * (8 - size);
    } else {
        for (size_t i = 0; i < size; i++)
            word |= uint64_t{bytes[i]} << (56 - 8 * i);
    }
    return word << 8 * at;
}

// Takes over a cursor for as long as it lives, with the position and the bits that come next in registers:
// the cursor itself follows when the reader goes, or is lent.
//
// Each reading function returns 0, or -1 with the position and the value as they were.
class BitReader {
 public:
    explicit BitReader(bitbuffer_t *bb)
        : cursor_(*bb),
          bytes_(bb->bit_buffer),
          end_(bb->bit_buffer != nullptr ? bb->num_bits : 0),
          at_(bb->bit_offset) {
        FillWindow();
    }
    ~BitReader() { cursor_.bit_offset = at_; }
    BitReader(const BitReader &) = delete;
    BitReader &operator=(const BitReader &) = delete;

    unsigned int offset() const { return at_; }

    // None when the cursor was moved behind the end, or has no bytes.
    unsigned int BitsLeft() const { return end_ > at_ ? end_ - at_ : 0; }

    // Leaves out n bits, which are there.
    [[gnu::always_inline]] void Skip(unsigned int n) {
        at_ += n;
        FillWindow();
    }

    // u(1).
    [[gnu::always_inline]] int GetFlag(int *value) {
        if (!HasInWindow(1)) [[unlikely]]
            return -1;
        *value = static_cast<int>(Take(1));
        return 0;
    }

    // A run of u(1), of which all or none are taken: returns whether they were there.
    template <typename Flag, size_t count>
    [[gnu::always_inline]] bool GetFlags(Flag (&flags)[count]) {
        static_assert(count <= kFieldInWindow);
        if (!HasInWindow(count))
            return false;
        const uint64_t bits = Take(count);
        for (size_t i = 0; i < count; i++)
            flags[i] = bits >> (count - 1 - i) & 1;
        return true;
    }

    // u(n), n from 1 to max_bits.
    template <unsigned int max_bits, typename Value>
    [[gnu::always_inline]] int GetBits(unsigned int n, Value *value) {
        if (n < 1 || n > max_bits) [[unlikely]]
            return -1;
        if constexpr (max_bits > kFieldInWindow) {
            uint64_t high = 0;
            if (n > 32) {
                if (BitsLeft() < n || !HasInWindow(n - 32)) [[unlikely]]  // GCOVR_EXCL_BR_LINE: n are there
                    return -1;
                high = Take(n - 32) << 32;
                n = 32;
            }
            if (!HasInWindow(n)) [[unlikely]]
                return -1;
            *value = high | Take(n);
        } else {
            if (!HasInWindow(n)) [[unlikely]]
                return -1;
            *value = static_cast<Value>(Take(n));
        }
        return 0;
    }

    // i(n), n from 1 to 32.
    [[gnu::always_inline]] int GetSigned(unsigned int n, int32_t *value) {
        uint32_t bits = 0;
        if (GetBits<32>(n, &bits) == -1)
            return -1;
        const unsigned int unused = 32 - n;
        *value = static_cast<int32_t>(bits << unused) >> unused;  // the sign bit fills the unused ones
        return 0;
    }

    // ue(v), clause 9.2. The longest code word that still gives 32 bits has 32 leading zeros.
    [[gnu::always_inline]] int GetGolomb(uint32_t *value) {
        unsigned int length = GolombLength();
        if (length > window_end_ - at_) [[unlikely]] {
            FillWindow();
            length = GolombLength();
            if (length > window_end_ - at_) [[unlikely]]
                return GetLongGolomb(value);
        }
        *value = static_cast<uint32_t>(Take(length) - 1);
        return 0;
    }

    // se(v), clause 9.2.2.
    [[gnu::always_inline]] int GetSignedGolomb(int32_t *value) {
        const unsigned int start = at_;
        uint32_t code = 0;
        if (GetGolomb(&code) == -1)
            return -1;
        if (code == UINT32_MAX) {  // would be 2^31
            at_ = start;
            FillWindow();
            return -1;
        }
        const int32_t magnitude = static_cast<int32_t>(code / 2 + code % 2);
        *value = code % 2 != 0 ? magnitude : -magnitude;
        return 0;
    }

    // Gives the cursor to a function that moves it; this object goes on from where it then is.
    class Loan {
     public:
        explicit Loan(BitReader &reader) : reader_(reader) { reader.cursor_.bit_offset = reader.at_; }
        ~Loan() {
            reader_.at_ = reader_.cursor_.bit_offset;
            reader_.FillWindow();
        }
        Loan(const Loan &) = delete;
        Loan &operator=(const Loan &) = delete;
        operator bitbuffer_t *() const { return &reader_.cursor_; }

     private:
        BitReader &reader_;
    };
    Loan Lend() { return Loan(*this); }

    // Whether the next n bits, at most 57, are there. Brings them into the window.
    [[gnu::always_inline]] bool HasInWindow(unsigned int n) {
        if (window_end_ - at_ >= n) [[likely]]
            return true;
        if (window_end_ == end_)
            return false;
        FillWindow();
        return window_end_ - at_ >= n;
    }

    // Takes n bits, 1 to 57, which are in the window.
    [[gnu::always_inline]] uint64_t Take(unsigned int n) {
        // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): n is never 0
        const uint64_t bits = window_ >> (64 - n);
        window_ <<= n;
        at_ += n;
        return bits;
    }

 private:
    static constexpr unsigned int kFieldInWindow = 57;  // that starts at any bit of the window's first byte

    // Of the code word that comes next; more than the window holds when it does not hold the whole of it.
    unsigned int GolombLength() const {
        return 2 * static_cast<unsigned int>(std::countl_zero(window_ | 1)) + 1;
    }

    // Loads the window anew: with at least 57 bits, or all that are left.
    [[gnu::always_inline]] void FillWindow() {
        window_end_ = at_;
        if (at_ >= end_)
            return;
        window_ = LoadPadded(bytes_, (size_t{end_} + 7) / 8, at_ / 8) << at_ % 8;
        window_end_ = end_ - at_ < 64 - at_ % 8 ? end_ : at_ / 8 * 8 + 64;
    }

    // A code word that the window does not hold, or that is not there as a whole.
    [[gnu::always_inline]] int GetLongGolomb(uint32_t *value) {
        const uint64_t code_and_length = LongGolomb(bytes_, end_, at_);
        const unsigned int length = static_cast<unsigned int>(code_and_length >> 40);
        if (length == 0)
            return -1;
        *value = static_cast<uint32_t>(code_and_length);
        Skip(length);
        return 0;
    }

    // The value, and in bits 40 and up the length; 0 when there is no code word of 32 bits.
    [[gnu::noinline]] static uint64_t LongGolomb(const unsigned char *bytes, unsigned int end,
                                                 unsigned int at) {
        const size_t size = (size_t{end} + 7) / 8;
        const unsigned int left = end > at ? end - at : 0;
        if (left == 0)
            return 0;
        const uint64_t word = LoadPadded(bytes, size, at / 8) << at % 8;
        const unsigned int zeros = static_cast<unsigned int>(std::countl_zero(word));
        const unsigned int length = 2 * zeros + 1;
        if (zeros > 32 || length > left)
            return 0;
        const unsigned int one = at + zeros;
        const uint64_t code = LoadPadded(bytes, size, one / 8) << one % 8 >> (63 - zeros);
        return code - 1 > UINT32_MAX ? 0 : uint64_t{length} << 40 | (code - 1);
    }

    bitbuffer_t &cursor_;
    const unsigned char *const bytes_;
    const unsigned int end_;
    unsigned int at_;

    // The bits from at_ to window_end_, and zeros behind them or bits that are loaded again. Nothing behind
    // the end of the buffer.
    uint64_t window_ = 0;
    unsigned int window_end_ = 0;
};

}  // namespace bitbuffer

#endif
