// Why something was not read.

#ifndef H265TOOL_READING_PROBLEM_H
#define H265TOOL_READING_PROBLEM_H

#include <string>

namespace h265tool {

// Something in the stream is wrong.
struct Unparsable {
    std::string reason;
};

// Nothing is wrong, but the tool does not read it.
struct NotParsed {
    std::string reason;
};

inline NotParsed OtherLayer() {
    return {"layers above the base layer (multilayer extensions) are not read"};
}

}  // namespace h265tool

#endif
