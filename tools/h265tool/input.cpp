#include "input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace h265tool {
namespace {

// Large enough for few system calls, small enough to stay in the second-level cache while it is scanned.
constexpr size_t kChunk = size_t{256} << 10;

[[noreturn]] void ThrowSystemError() {
    throw std::system_error(errno, std::generic_category());
}

}  // namespace

Input::Input(const std::string &path)
    : descriptor_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)), buffer_(kChunk) {
    if (descriptor_ < 0)
        ThrowSystemError();
    struct stat status {};
    if (fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode))
        size_ = static_cast<uint64_t>(status.st_size);
    posix_fadvise(descriptor_, 0, 0, POSIX_FADV_SEQUENTIAL);  // a pipe refuses the advice: no harm
}

Input::~Input() {
    if (descriptor_ != STDIN_FILENO)
        close(descriptor_);
}

std::span<const unsigned char> Input::Read() {
    ssize_t count = -1;
    do {
        count = read(descriptor_, buffer_.data(), buffer_.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0)
        ThrowSystemError();
    return std::span(buffer_).first(static_cast<size_t>(count));
}

}  // namespace h265tool
