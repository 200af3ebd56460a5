// Why the library refused something: while alive, it takes the library's messages.

#ifndef H265TOOL_DIAGNOSTICS_H
#define H265TOOL_DIAGNOSTICS_H

#include <string>

#include "dbgtrace.h"

namespace h265tool {

// One at a time. Messages more detailed than errors appear when the environment asks for them (dbgtrace.h),
// and go to standard error.
class Diagnostics {
 public:
    Diagnostics();
    ~Diagnostics();
    Diagnostics(const Diagnostics &) = delete;
    Diagnostics &operator=(const Diagnostics &) = delete;

    // Forgets what was reported: the next error is the first.
    void Clear() { first_error_.clear(); }

    // The first error since then, without line end.
    std::string FirstError() const;

 private:
    void Take(const DbgTraceMessage &message);

    std::string first_error_;
};

}  // namespace h265tool

#endif
