// A file that appears as a whole or not at all.

#ifndef H265TOOL_REWRITING_OUTPUT_FILE_H
#define H265TOOL_REWRITING_OUTPUT_FILE_H

#include <span>
#include <string>
#include <system_error>
#include <vector>

namespace h265tool {

class OutputFileError : public std::system_error {
 public:
    using std::system_error::system_error;
};

// Written under a temporary name beside it, and renamed at the end. What is no regular file (a device, a
// pipe) is written directly. Everything throws OutputFileError.
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

    std::string path_;
    std::string temporary_;  // empty: written directly
    int descriptor_ = -1;
    std::vector<unsigned char> buffer_;
};

}  // namespace h265tool

#endif
