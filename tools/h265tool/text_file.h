// Files that options name.

#ifndef H265TOOL_TEXT_FILE_H
#define H265TOOL_TEXT_FILE_H

#include <string>

namespace h265tool {

// All of it; "-" is standard input. Throws UsageError when it cannot be read.
std::string FileText(const std::string &path);

}  // namespace h265tool

#endif
