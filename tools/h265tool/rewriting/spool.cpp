#include "rewriting/spool.h"

#include <sys/stat.h>

#include "input.h"

namespace h265tool {

Spool::Spool(const std::string &path) : path_(path) {
    struct stat status {};
    const bool can_be_read_twice = path != "-" && (stat(path.c_str(), &status) != 0 ||
                                                   S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
    if (can_be_read_twice)
        return;
    Input input(path);
    copy_.emplace();
    for (auto chunk = input.Read(); !chunk.empty(); chunk = input.Read())
        copy_->Write(chunk);
    path_ = copy_->Path();
}

}  // namespace h265tool
