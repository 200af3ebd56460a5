// The libraries' traces during a run: formatted up to a level, then read and dropped.

#ifndef FUZZ_SUPPORT_TRACE_H
#define FUZZ_SUPPORT_TRACE_H

#include "h265.h"
#include "support/fuzz_input.h"

namespace fuzz {

inline constexpr int kMostDetailedLevel = 8;

class DiscardedTrace {
 public:
    // A byte of the input chooses the level of the library's channel and of that of assertions: half of the
    // time silence, because formatting takes most of a run; then mostly errors, else any level up to 8.
    explicit DiscardedTrace(FuzzInput *input);
    ~DiscardedTrace();
    DiscardedTrace(const DiscardedTrace &) = delete;
    DiscardedTrace &operator=(const DiscardedTrace &) = delete;
};

}  // namespace fuzz

#endif
