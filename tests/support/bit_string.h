// A bit string built bit by bit: the plain model that the libraries are tested against.

#ifndef TESTS_SUPPORT_BIT_STRING_H
#define TESTS_SUPPORT_BIT_STRING_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace test {

class BitString {
 public:
    BitString &U(unsigned int n, uint64_t value);  // u(n): the low n bits
    BitString &Ue(uint64_t value);                 // ue(v), clause 9.2
    BitString &Se(int64_t value);                  // se(v), clause 9.2.2
    BitString &Append(const BitString &other);
    BitString &TrailingBits();  // rbsp_trailing_bits( ): a 1, then zeros to the byte boundary

    std::size_t size() const { return bits_.size(); }
    bool operator[](std::size_t i) const { return bits_[i]; }
    BitString Prefix(std::size_t n) const;

    // Packed, first bit on top; the unused bits of the last byte are 0.
    std::vector<unsigned char> Bytes() const;

 private:
    std::vector<bool> bits_;
};

}  // namespace test

#endif
