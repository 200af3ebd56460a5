// The libraries with nobody listening: what they do must not depend on that.

#ifndef TESTS_SUPPORT_SILENCE_H
#define TESTS_SUPPORT_SILENCE_H

#include <gtest/gtest.h>

#include "support/trace_capture.h"

namespace test {

enum class Silence {
    kLevel,      // the libraries' channels let no message through; failed assertions have their own channel
    kNoChannel,  // the libraries have no channels
};

// Silences the libraries while it is alive, and then expects that none of them has said a word. The H.264
// library's failed assertions, which need no channel, are let pass.
class Silenced {
 public:
    explicit Silenced(Silence silence);
    ~Silenced();
    Silenced(const Silenced &) = delete;
    Silenced &operator=(const Silenced &) = delete;

 private:
    const Silence silence_;
    TraceCapture trace_;
    const HDBG h264_channel_;
    const HDBG h265_channel_;
    const int h264_level_;
};

// Does something, and checks what comes of it, once in each silence.
template <typename Check>
void InSilence(Check check) {
    {
        SCOPED_TRACE("with a level that lets nothing through");
        const Silenced silenced(Silence::kLevel);
        check();
    }
    SCOPED_TRACE("without channels");
    const Silenced silenced(Silence::kNoChannel);
    check();
}

}  // namespace test

#endif
