// Something in the call is wrong.

#ifndef H265TOOL_USAGE_ERROR_H
#define H265TOOL_USAGE_ERROR_H

#include <stdexcept>
#include <string>
#include <utility>

namespace h265tool {

// `subject` names the option or the file, what() is the reason.
class UsageError : public std::runtime_error {
 public:
    UsageError(std::string subject, const std::string &reason)
        : std::runtime_error(reason), subject_(std::move(subject)) {}
    const std::string &subject() const { return subject_; }

 private:
    std::string subject_;
};

}  // namespace h265tool

#endif
