// How far a long work has come, on standard error.

#ifndef H265TOOL_PROGRESS_H
#define H265TOOL_PROGRESS_H

#include <chrono>
#include <cstdint>

namespace h265tool {

// Appears after a second, on a terminal only, and not when standard output is one too: its lines show the
// progress themselves. Erased at the end.
class Progress {
 public:
    explicit Progress(uint64_t total);  // bytes; 0: unknown
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void Advance(uint64_t bytes);

 private:
    using Clock = std::chrono::steady_clock;

    void Show();

    bool enabled_;
    bool shown_ = false;
    uint64_t total_;
    uint64_t done_ = 0;
    Clock::time_point next_;
};

}  // namespace h265tool

#endif
