// A stream that can be read twice.

#ifndef H265TOOL_REWRITING_SPOOL_H
#define H265TOOL_REWRITING_SPOOL_H

#include <string>

namespace h265tool {

// A regular file is itself. What else there is (standard input, a pipe) is copied to a temporary file, which
// is there as long as the object. Throws std::system_error.
class Spool {
 public:
    explicit Spool(const std::string &path);
    ~Spool();
    Spool(const Spool &) = delete;
    Spool &operator=(const Spool &) = delete;

    const std::string &path() const { return path_; }

 private:
    std::string path_;
    int descriptor_ = -1;  // of the temporary file
};

}  // namespace h265tool

#endif
