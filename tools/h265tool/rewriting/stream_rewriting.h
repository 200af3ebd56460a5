// What the verbs that write a stream again have in common: they look through it first, then write it.

#ifndef H265TOOL_REWRITING_STREAM_REWRITING_H
#define H265TOOL_REWRITING_STREAM_REWRITING_H

#include <functional>
#include <optional>
#include <string>

#include "exit_status.h"

namespace h265tool {

// Throws UsageError when the output is a terminal, or would take the place of what is read, by whatever name;
// and when both the stream and the file of an option are to come from standard input.
void CheckFiles(const std::string &source, const std::string &out, const std::string &option,
                const std::optional<std::string> &file_of_option);

// Runs `work`, which reads `source` and writes `out`; what it throws is reported on standard error, but for
// OutputError, which goes through.
ExitStatus RunRewriting(const std::string &source, const std::string &out, const std::function<void()> &work);

}  // namespace h265tool

#endif
