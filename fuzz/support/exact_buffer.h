// Heap memory of exactly the size that a function is told, so that a sanitizer sees one byte too many.

#ifndef FUZZ_SUPPORT_EXACT_BUFFER_H
#define FUZZ_SUPPORT_EXACT_BUFFER_H

#include <algorithm>
#include <memory>

#include "support/fuzz_input.h"

namespace fuzz {

class ExactBuffer {
 public:
    // An empty block still has one byte for the sanitizer: the pointer then goes behind it.
    explicit ExactBuffer(size_t size)
        : size_(size),
          block_(std::make_unique<unsigned char[]>(std::max<size_t>(size, 1))),
          data_(block_.get() + (size == 0 ? 1 : 0)) {}
    explicit ExactBuffer(const Bytes &bytes) : ExactBuffer(bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), data_);
    }

    unsigned char *data() { return data_; }
    size_t size() const { return size_; }
    int length() const { return static_cast<int>(size_); }
    unsigned int unsigned_length() const { return static_cast<unsigned int>(size_); }
    Bytes Content(size_t count) const { return Bytes(data_, data_ + std::min(count, size_)); }
    Bytes Content() const { return Content(size_); }

 private:
    size_t size_;
    std::unique_ptr<unsigned char[]> block_;
    unsigned char *data_;
};

}  // namespace fuzz

#endif
