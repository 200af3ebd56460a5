#include "support/bit_string.h"

namespace test {

BitString &BitString::U(unsigned int n, uint64_t value) {
    for (unsigned int i = n; i-- > 0;)
        bits_.push_back(value >> i & 1);
    return *this;
}

BitString &BitString::Ue(uint64_t value) {
    const uint64_t code = value + 1;
    unsigned int width = 0;
    while (code >> width != 0)
        width++;
    return U(width - 1, 0).U(width, code);
}

BitString &BitString::Se(int64_t value) {
    return Ue(value > 0 ? static_cast<uint64_t>(2 * value - 1) : static_cast<uint64_t>(-2 * value));
}

BitString &BitString::Append(const BitString &other) {
    bits_.insert(bits_.end(), other.bits_.begin(), other.bits_.end());
    return *this;
}

BitString &BitString::TrailingBits() {
    bits_.push_back(true);
    while (bits_.size() % 8 != 0)
        bits_.push_back(false);
    return *this;
}

BitString BitString::Prefix(std::size_t n) const {
    BitString prefix;
    prefix.bits_.assign(bits_.begin(), bits_.begin() + static_cast<std::ptrdiff_t>(n));
    return prefix;
}

std::vector<unsigned char> BitString::Bytes() const {
    std::vector<unsigned char> bytes((bits_.size() + 7) / 8);
    for (std::size_t i = 0; i < bits_.size(); i++)
        bytes[i / 8] = static_cast<unsigned char>(bytes[i / 8] | bits_[i] << (7 - i % 8));
    return bytes;
}

}  // namespace test
