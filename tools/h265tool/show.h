// The verb `show`: the library's own displays of what a stream carries.

#ifndef H265TOOL_SHOW_H
#define H265TOOL_SHOW_H

#include <string>

#include "exit_status.h"

namespace h265tool {

struct ShowOptions {
    std::string file;  // "-": standard input
    bool vps = false;  // what to show; none of the four: all
    bool sps = false;
    bool pps = false;
    bool sei = false;
    int level = 6;
    bool all = false;   // also parameter sets that came before
    bool tags = false;  // with the prefix that messages have on standard error
};

// Prints to standard output; reports what goes wrong on standard error. Throws OutputError.
ExitStatus Show(const ShowOptions &options);

}  // namespace h265tool

#endif
