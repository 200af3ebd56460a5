// A file without a name, for what has to wait until the rest of it is there.

#ifndef H265TOOL_REWRITING_SCRATCH_FILE_H
#define H265TOOL_REWRITING_SCRATCH_FILE_H

#include <span>
#include <string>
#include <system_error>

namespace h265tool {

class ScratchFileError : public std::system_error {
 public:
    using std::system_error::system_error;
};

// In the directory for temporary files. It is gone with the object, and when the program is killed as well.
// Making and writing it throw ScratchFileError.
class ScratchFile {
 public:
    ScratchFile();
    ~ScratchFile();
    ScratchFile(const ScratchFile &) = delete;
    ScratchFile &operator=(const ScratchFile &) = delete;

    void Write(std::span<const unsigned char> bytes);

    std::string Path() const;  // for reading it from the start

    static std::string Directory();  // TMPDIR, or /tmp

 private:
    int descriptor_;
};

}  // namespace h265tool

#endif
