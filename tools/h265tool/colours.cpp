#include "colours.h"

#include <unistd.h>

#include <cstdlib>

namespace h265tool {
namespace {

constexpr Colours kNoColours;

// Of the 16 that all terminals have, those that are read on a dark ground and on a light one.
constexpr Colours kTerminalColours = {
    .minor = "\033[2m", .key_picture = "\033[1;32m", .parameter_set = "\033[36m", .error = "\033[1;31m"};

std::string_view Environment(const char *variable) {
    const char *const value = std::getenv(variable);
    return value == nullptr ? "" : value;
}

bool TerminalHasColours() {
    const std::string_view term = Environment("TERM");
    return isatty(STDOUT_FILENO) == 1 && !term.empty() && term != "dumb";
}

}  // namespace

const Colours &ColoursFor(std::string_view when) {
    const bool wanted =
        when == "always" || (when == "auto" && Environment("NO_COLOR").empty() && TerminalHasColours());
    return wanted ? kTerminalColours : kNoColours;
}

}  // namespace h265tool
