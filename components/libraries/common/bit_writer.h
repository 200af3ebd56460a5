// Writing at a cursor: what the bit buffer's writing operations do behind their argument checks, in line for
// the writers of syntax structures as reading is for their readers.

#ifndef COMMON_BIT_WRITER_H
#define COMMON_BIT_WRITER_H

#include <bit>
#include <cstdint>

#include "bitbuffer.h"
#include "words.h"

namespace bitbuffer {

// Takes over a cursor for as long as it lives, with the position and the bits written last in registers: the
// buffer has them, and the cursor follows, when the writer goes, or the cursor is lent. Bits behind stay as
// they are.
//
// Each writing function returns 0, or -1 with nothing written and the position as it was.
class BitWriter {
 public:
    explicit BitWriter(bitbuffer_t *bb)
        : cursor_(*bb),
          bytes_(bb->bit_buffer),
          end_(bb->bit_buffer != nullptr ? bb->num_bits : 0),
          at_(bb->bit_offset) {
        HoldStartedByte();
    }
    ~BitWriter() { Flush(); }
    BitWriter(const BitWriter &) = delete;
    BitWriter &operator=(const BitWriter &) = delete;

    unsigned int offset() const { return at_; }

    // None when the cursor was moved behind the end, or has no bytes.
    unsigned int BitsLeft() const { return end_ > at_ ? end_ - at_ : 0; }

    // u(n) or i(n), n from 1 to max_bits, which are at most 32.
    [[gnu::always_inline]] int PutBits(unsigned int n, unsigned int max_bits, uint32_t value) {
        if (n < 1 || n > max_bits || n > BitsLeft()) [[unlikely]]
            return -1;
        Put(n, value & (~uint64_t{0} >> (64 - n)));
        return 0;
    }

    // ue(v), clause 9.2.
    [[gnu::always_inline]] int PutGolomb(uint32_t value) {
        const uint64_t code = uint64_t{value} + 1;
        const unsigned int width = static_cast<unsigned int>(std::bit_width(code));  // 1 to 33
        const unsigned int zeros = width - 1;
        if (zeros + width > BitsLeft()) [[unlikely]]
            return -1;
        if (zeros + width > 32) [[unlikely]] {
            Put(zeros, 0);
            Put(1, 1);
            // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): zeros is 16 to 32 here
            Put(zeros, code & (~uint64_t{0} >> (64 - zeros)));
        } else {
            Put(zeros + width, code);
        }
        return 0;
    }

    // Puts the n bits of a value, 1 to 32; the caller has checked that there is room.
    [[gnu::always_inline]] void Put(unsigned int n, uint64_t value) {
        held_bits_ = held_bits_ << n | value;
        held_ += n;
        at_ += n;
        if (held_ >= 32) {
            held_ -= 32;
            StoreHalfWord(bytes_ + (at_ - held_) / 8 - 4, static_cast<uint32_t>(held_bits_ >> held_));
        }
    }

    // Gives the cursor to a function that moves it; this object goes on from where it then is.
    class Loan {
     public:
        explicit Loan(BitWriter &writer) : writer_(writer) { writer.Flush(); }
        ~Loan() {
            writer_.at_ = writer_.cursor_.bit_offset;
            writer_.HoldStartedByte();
        }
        Loan(const Loan &) = delete;
        Loan &operator=(const Loan &) = delete;
        operator bitbuffer_t *() const { return &writer_.cursor_; }

     private:
        BitWriter &writer_;
    };
    Loan Lend() { return Loan(*this); }

 private:
    // The bits of the byte at the cursor that are in front of it.
    [[gnu::always_inline]] void HoldStartedByte() {
        held_ = at_ < end_ ? at_ % 8 : 0;
        held_bits_ = held_ > 0 ? static_cast<unsigned int>(bytes_[at_ / 8]) >> (8 - held_) : 0;
    }

    [[gnu::always_inline]] void Flush() {
        cursor_.bit_offset = at_;
        if (held_ == 0)  // there need not be a byte here then
            return;
        unsigned char *byte = bytes_ + (at_ - held_) / 8;
        for (; held_ >= 8; byte++) {
            held_ -= 8;
            *byte = static_cast<unsigned char>(held_bits_ >> held_);
        }
        if (held_ > 0) {
            const unsigned int behind = 0xFFU >> held_;
            *byte = static_cast<unsigned char>((*byte & behind) | (held_bits_ << (8 - held_) & ~behind));
        }
    }

    bitbuffer_t &cursor_;
    unsigned char *const bytes_;
    const unsigned int end_;
    unsigned int at_;

    // The last bits in front of at_, less than 32, that are not in the buffer or share a byte with such;
    // above them there may be others that are.
    uint64_t held_bits_ = 0;
    unsigned int held_ = 0;
};

}  // namespace bitbuffer

#endif
