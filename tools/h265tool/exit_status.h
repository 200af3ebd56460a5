// The exit statuses, the same for every verb.

#ifndef H265TOOL_EXIT_STATUS_H
#define H265TOOL_EXIT_STATUS_H

namespace h265tool {

enum ExitStatus : int {
    kAllWell = 0,
    kStreamError = 1,  // something in the stream could not be parsed
    kFailure = 2,      // usage; a file that cannot be opened, read or written
};

}  // namespace h265tool

#endif
