#include "rewriting/spool.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <system_error>

#include "input.h"

namespace h265tool {
namespace {

void WriteAll(int descriptor, std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count >= 0)
            bytes = bytes.subspan(static_cast<size_t>(count));
        else if (errno != EINTR)
            throw std::system_error(errno, std::generic_category());
    }
}

}  // namespace

Spool::Spool(const std::string &path) : path_(path) {
    struct stat status {};
    const bool can_be_read_twice = path != "-" && (stat(path.c_str(), &status) != 0 ||
                                                   S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
    if (can_be_read_twice)
        return;
    Input input(path);
    path_ = (std::filesystem::temp_directory_path() / "h265tool-XXXXXX").string();
    descriptor_ = mkostemp(path_.data(), O_CLOEXEC);
    if (descriptor_ < 0)
        throw std::system_error(errno, std::generic_category());
    try {
        for (auto chunk = input.Read(); !chunk.empty(); chunk = input.Read())
            WriteAll(descriptor_, chunk);
    } catch (...) {
        close(descriptor_);
        unlink(path_.c_str());
        throw;
    }
}

Spool::~Spool() {
    if (descriptor_ < 0)
        return;
    close(descriptor_);
    unlink(path_.c_str());
}

}  // namespace h265tool
