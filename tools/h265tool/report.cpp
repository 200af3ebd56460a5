#include "report.h"

#include <cstdio>

namespace h265tool {

void Report(const std::string &subject, const std::string &reason) {
    std::fprintf(stderr, "h265tool: %s: %s\n", subject.c_str(), reason.c_str());
}

}  // namespace h265tool
