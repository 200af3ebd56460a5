// The verb `edit`: changes what the headers of a stream say.

#ifndef H265TOOL_EDIT_H
#define H265TOOL_EDIT_H

#include <optional>
#include <string>

#include "exit_status.h"

namespace h265tool {

struct EditOptions {
    std::string file;  // "-": standard input
    std::string out;   // "-": standard output
    bool interlaced = false;
    std::optional<std::string> size;
    std::optional<std::string> crop;
    std::optional<std::string> sar;
    std::optional<std::string> colour;
    std::optional<std::string> range;
    std::optional<std::string> timing;
    std::optional<std::string> fps;
    bool field_seq = false;
    std::optional<unsigned char> pic_struct;
    std::optional<std::string> hrd;  // a file, as `file`
};

// Writes OUT as a whole or not at all; reports what goes wrong on standard error. Throws OutputError.
ExitStatus Edit(const EditOptions &options);

}  // namespace h265tool

#endif
