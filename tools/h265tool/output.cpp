#include "output.h"

#include <unistd.h>

#include <span>

#include "write_all.h"

namespace h265tool {
namespace {

constexpr size_t kBuffered = size_t{256} << 10;

}  // namespace

bool OutputError::IsClosedPipe() const {
    return code() == std::errc::broken_pipe;
}

Output::Output() : most_buffered_(isatty(STDOUT_FILENO) == 1 ? 0 : kBuffered) {}

void Output::Line(std::string_view text) {
    buffer_ += text;
    buffer_ += '\n';
    if (buffer_.size() >= most_buffered_)
        Flush();
}

void Output::Flush() {
    const std::span text(buffer_);
    const int error =
        WriteAll(STDOUT_FILENO, {reinterpret_cast<const unsigned char *>(text.data()), text.size()});
    buffer_.clear();
    if (error != 0)
        throw OutputError(error, std::generic_category());
}

}  // namespace h265tool
