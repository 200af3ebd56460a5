// Captures what the libraries trace while it is alive.

#ifndef TESTS_SUPPORT_TRACE_CAPTURE_H
#define TESTS_SUPPORT_TRACE_CAPTURE_H

#include <string>
#include <vector>

#include "h265.h"

namespace test {

struct TracedMessage {
    std::string channel;
    int level;
    std::string function;
    std::string file;
    int line;
    std::string text;
};

class TraceCapture {
 public:
    // Takes the place of the sink and sets the library's level; both come back at the end. One may live
    // within the life of another.
    explicit TraceCapture(int level = 8);
    ~TraceCapture();
    TraceCapture(const TraceCapture &) = delete;
    TraceCapture &operator=(const TraceCapture &) = delete;

    const std::vector<TracedMessage> &messages() const { return messages_; }
    void Clear() { messages_.clear(); }

    // The texts of one level on the library's channel, in order.
    std::vector<std::string> Texts(int level) const;
    std::vector<std::string> Errors() const { return Texts(3); }

    // The texts on the channel of assertions ("Assertion failed: pBuffer != NULL\n").
    std::vector<std::string> Assertions() const;

 private:
    void Listen();

    static TraceCapture *listening_;
    TraceCapture *outer_;
    int level_before_;
    std::vector<TracedMessage> messages_;
};

// "Assertion failed: <expression>\n"
std::string AssertionOf(const std::string &expression);

}  // namespace test

#endif
