// The verb `insert`: puts SEI messages and delimiters into a stream.

#ifndef H265TOOL_INSERT_H
#define H265TOOL_INSERT_H

#include <optional>
#include <string>

#include "exit_status.h"

namespace h265tool {

struct InsertOptions {
    std::string file;                     // "-": standard input
    std::string out;                      // "-": standard output
    std::optional<std::string> captions;  // a file, as `file`
    std::string captions_start = "00:00:00:00";
    std::optional<unsigned char> afd;
    std::optional<std::string> time_code;
    std::optional<std::string> precision_time;
    std::optional<std::string> pic_timing;
    std::optional<std::string> rate;
    bool aud = false;
    bool eos = false;
    bool replace = false;
};

// Writes OUT as a whole or not at all; reports what goes wrong on standard error. Throws OutputError.
ExitStatus Insert(const InsertOptions &options);

}  // namespace h265tool

#endif
