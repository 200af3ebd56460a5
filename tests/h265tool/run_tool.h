// Runs the program as a user does, from a shell.

#ifndef TESTS_H265TOOL_RUN_TOOL_H
#define TESTS_H265TOOL_RUN_TOOL_H

#include <string>
#include <vector>

#include "support/nal_unit.h"

namespace h265tool {

struct Outcome {
    int status;
    std::string out;
    std::string err;

    std::vector<std::string> Lines() const;  // of `out`
};

// Runs a shell command in which TOOL stands for the program.
Outcome Shell(const std::string &command);

// The same on a terminal, of the type xterm, to which the program's standard input and output lead; `out` is
// what arrives there.
Outcome ShellOnTerminal(const std::string &command);

std::string Sample(const std::string &name);  // the path of tests/samples/NAME
test::Bytes FileBytes(const std::string &path);

// A file that is there as long as the object.
class TemporaryFile {
 public:
    explicit TemporaryFile(const test::Bytes &bytes = {});
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    const std::string &path() const { return path_; }

 private:
    std::string path_;
};

}  // namespace h265tool

#endif
