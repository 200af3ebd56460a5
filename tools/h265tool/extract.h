// The verb `extract`: what a stream says beside its pictures.

#ifndef H265TOOL_EXTRACT_H
#define H265TOOL_EXTRACT_H

#include <string>

#include "exit_status.h"

namespace h265tool {

struct ExtractOptions {
    std::string file;  // "-": standard input
    bool captions = false;
    bool timecodes = false;
    bool afd = false;
    bool json = false;
};

// Prints a line for each picture that carries what is asked for to standard output; reports what goes wrong
// on standard error. Throws OutputError.
ExitStatus Extract(const ExtractOptions &options);

}  // namespace h265tool

#endif
