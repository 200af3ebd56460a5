// Standard output through a large buffer.

#ifndef H265TOOL_OUTPUT_H
#define H265TOOL_OUTPUT_H

#include <string>
#include <string_view>
#include <system_error>

namespace h265tool {

// Standard output could not be written.
class OutputError : public std::system_error {
 public:
    using std::system_error::system_error;

    // Whoever read it has gone, as `head` does when it has seen enough.
    bool IsClosedPipe() const;
};

// What was not flushed is lost: call Flush at the end, also when the work ends early. Both functions throw
// OutputError. On a terminal, each line appears at once.
class Output {
 public:
    Output();

    void Line(std::string_view text);
    void Flush();

 private:
    size_t most_buffered_;
    std::string buffer_;
};

}  // namespace h265tool

#endif
