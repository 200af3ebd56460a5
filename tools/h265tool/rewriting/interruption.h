// What the user sees of a work that is interrupted: nothing.

#ifndef H265TOOL_REWRITING_INTERRUPTION_H
#define H265TOOL_REWRITING_INTERRUPTION_H

#include <string>

namespace h265tool {

// While alive, a signal that ends the program (SIGHUP, SIGINT, SIGTERM) removes the file first. One at a
// time; `path` stays as it is meanwhile.
class RemovalWhenInterrupted {
 public:
    explicit RemovalWhenInterrupted(const std::string &path);
    ~RemovalWhenInterrupted();
    RemovalWhenInterrupted(const RemovalWhenInterrupted &) = delete;
    RemovalWhenInterrupted &operator=(const RemovalWhenInterrupted &) = delete;
};

}  // namespace h265tool

#endif
