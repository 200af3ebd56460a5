// Messages to the user.

#ifndef H265TOOL_REPORT_H
#define H265TOOL_REPORT_H

#include <string>

namespace h265tool {

// "h265tool: SUBJECT: REASON" on standard error.
void Report(const std::string &subject, const std::string &reason);

}  // namespace h265tool

#endif
