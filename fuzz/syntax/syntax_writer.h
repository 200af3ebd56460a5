// Writes syntax elements whose values are drawn from a fuzzer's input. A function that uses it reads like a
// syntax table of the standard: one line an element.

#ifndef FUZZ_SYNTAX_SYNTAX_WRITER_H
#define FUZZ_SYNTAX_SYNTAX_WRITER_H

#include "support/bit_string.h"
#include "support/fuzz_input.h"

namespace fuzz {

class SyntaxWriter {
 public:
    explicit SyntaxWriter(FuzzInput *input) : input_(input) {}

    // Each returns the value.
    uint64_t U(unsigned int n) { return Put(n, input_->Bits(n)); }
    bool Flag() { return Put(1, input_->Flag() ? 1 : 0) != 0; }
    uint64_t Put(unsigned int n, uint64_t value) {
        bits_.U(n, value);
        return value;
    }
    uint32_t Ue() { return PutUe(input_->Number()); }
    uint32_t Ue(uint32_t most) {  // one in 256 is any number, also above that
        const uint8_t choice = input_->Byte();
        if (choice == 0xFF)
            return PutUe(static_cast<uint32_t>(input_->Bits(32)));
        return PutUe((most < 0xFF ? choice : static_cast<uint32_t>(choice) << 8 | input_->Byte()) %
                     (most + 1));
    }
    uint32_t PutUe(uint32_t value) {
        bits_.Ue(value);
        return value;
    }
    void Se() { bits_.Ue(input_->Number()); }  // every code word of ue(v) is one of se(v)

    FuzzInput &input() { return *input_; }
    test::BitString &bits() { return bits_; }

 private:
    FuzzInput *input_;
    test::BitString bits_;
};

}  // namespace fuzz

#endif
