// A file that appears as a whole or not at all.

#ifndef H265TOOL_REWRITING_OUTPUT_FILE_H
#define H265TOOL_REWRITING_OUTPUT_FILE_H

#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include "rewriting/interruption.h"
#include "rewriting/scratch_file.h"

namespace h265tool {

class OutputFileError : public std::system_error {
 public:
    using std::system_error::system_error;
};

// Written under a temporary name beside it, and renamed at the end. What cannot be replaced (standard output,
// which is "-", a pipe, a device) gets all of it at the end, from a scratch file. Throws OutputFileError,
// ScratchFileError, and OutputError for standard output.
class OutputFile {
 public:
    explicit OutputFile(const std::string &path);
    ~OutputFile();  // without Commit, nothing is left
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    void Write(std::span<const unsigned char> bytes);
    void Commit();

 private:
    void OpenTemporary();
    void Flush();
    void Send();

    std::string path_;
    std::string temporary_;  // the file under its temporary name; empty: it waits in scratch_
    std::optional<RemovalWhenInterrupted> removal_;  // of that
    std::optional<ScratchFile> scratch_;             // none: the file has a temporary name
    int descriptor_ = -1;                            // of the file, or of what gets it at the end
    std::vector<unsigned char> buffer_;
};

}  // namespace h265tool

#endif
