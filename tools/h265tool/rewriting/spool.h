// A stream that can be read twice.

#ifndef H265TOOL_REWRITING_SPOOL_H
#define H265TOOL_REWRITING_SPOOL_H

#include <optional>
#include <string>

#include "rewriting/scratch_file.h"

namespace h265tool {

// A regular file is itself. What else there is (standard input, a pipe) is copied to a scratch file, which is
// there as long as the object. Throws std::system_error, ScratchFileError among it.
class Spool {
 public:
    explicit Spool(const std::string &path);

    const std::string &path() const { return path_; }

 private:
    std::string path_;
    std::optional<ScratchFile> copy_;
};

}  // namespace h265tool

#endif
