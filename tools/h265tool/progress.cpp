#include "progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>

namespace h265tool {
namespace {

using namespace std::chrono_literals;

constexpr auto kSilence = 1s;
constexpr auto kInterval = 200ms;
constexpr char kEraseLine[] = "\r\033[K";

}  // namespace

Progress::Progress(uint64_t total)
    : enabled_(isatty(STDERR_FILENO) == 1 && isatty(STDOUT_FILENO) == 0),
      total_(total),
      next_(Clock::now() + kSilence) {}

Progress::~Progress() {
    if (shown_)
        std::fputs(kEraseLine, stderr);
}

void Progress::Advance(uint64_t bytes) {
    done_ += bytes;
    if (!enabled_ || Clock::now() < next_)
        return;
    Show();
    next_ = Clock::now() + kInterval;
}

void Progress::Show() {
    shown_ = true;
    std::fprintf(stderr, "%s%" PRIu64 " MB", kEraseLine, done_ / 1000000);
    if (total_ > 0)
        std::fprintf(stderr, " of %" PRIu64 " MB, %" PRIu64 " %%", total_ / 1000000,
                     done_ < total_ ? done_ * 100 / total_ : 100);
    std::fflush(stderr);
}

}  // namespace h265tool
