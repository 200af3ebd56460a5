// The verb `inspect`: takes a stream apart, NAL unit by NAL unit.

#ifndef H265TOOL_INSPECT_H
#define H265TOOL_INSPECT_H

#include <string>

#include "exit_status.h"

namespace h265tool {

struct InspectOptions {
    std::string file;  // "-": standard input
    bool json = false;
    std::string color = "auto";  // or "always", "never"
    bool human = false;          // sizes in KiB and MiB
};

// Prints to standard output; reports what goes wrong with the file on standard error. Throws OutputError.
ExitStatus Inspect(const InspectOptions &options);

}  // namespace h265tool

#endif
