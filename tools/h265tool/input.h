// The bytes of a file, or of standard input, in chunks.

#ifndef H265TOOL_INPUT_H
#define H265TOOL_INPUT_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace h265tool {

// Opening and reading throw std::system_error.
class Input {
 public:
    explicit Input(const std::string &path);  // "-": standard input
    ~Input();
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    // The next bytes, valid until the next call; empty at the end.
    std::span<const unsigned char> Read();

    // The size of a regular file, else 0.
    uint64_t Size() const { return size_; }

 private:
    int descriptor_;
    uint64_t size_ = 0;
    std::vector<unsigned char> buffer_;
};

}  // namespace h265tool

#endif
