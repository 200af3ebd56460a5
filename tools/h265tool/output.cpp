#include "output.h"

#include <unistd.h>

#include <cerrno>

namespace h265tool {
namespace {

constexpr size_t kBuffered = size_t{256} << 10;

}  // namespace

bool OutputError::IsClosedPipe() const {
    return code() == std::errc::broken_pipe;
}

void Output::Line(std::string_view text) {
    buffer_ += text;
    buffer_ += '\n';
    if (buffer_.size() >= kBuffered)
        Flush();
}

void Output::Flush() {
    std::string_view rest = buffer_;
    while (!rest.empty()) {
        const ssize_t count = write(STDOUT_FILENO, rest.data(), rest.size());
        if (count >= 0) {
            rest.remove_prefix(static_cast<size_t>(count));
        } else if (errno != EINTR) {
            const int error = errno;
            buffer_.clear();
            throw OutputError(error, std::generic_category());
        }
    }
    buffer_.clear();
}

}  // namespace h265tool
