// What the verbs that write a stream again have in common: they look through it first, then write it.

#ifndef H265TOOL_REWRITING_STREAM_REWRITING_H
#define H265TOOL_REWRITING_STREAM_REWRITING_H

#include <functional>
#include <string>

#include "exit_status.h"

namespace h265tool {

// Throws UsageError when the output would take the place of the source, by whatever name.
void CheckOverwriting(const std::string &source, const std::string &out);

// Runs `work`, which reads `source` and writes `out`; what it throws is reported on standard error.
ExitStatus RunRewriting(const std::string &source, const std::string &out, const std::function<void()> &work);

}  // namespace h265tool

#endif
