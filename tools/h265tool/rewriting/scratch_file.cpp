#include "rewriting/scratch_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "text.h"
#include "write_all.h"

namespace h265tool {

ScratchFile::ScratchFile() {
    std::string name = Directory() + "/h265tool-XXXXXX";
    descriptor_ = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0)
        throw ScratchFileError(errno, std::generic_category());
    unlink(name.c_str());
}

ScratchFile::~ScratchFile() {
    close(descriptor_);
}

void ScratchFile::Write(std::span<const unsigned char> bytes) {
    if (const int error = WriteAll(descriptor_, bytes); error != 0)
        throw ScratchFileError(error, std::generic_category());
}

std::string ScratchFile::Path() const {
    return Text("/proc/self/fd/", descriptor_);
}

std::string ScratchFile::Directory() {
    const char *const directory = std::getenv("TMPDIR");
    return directory != nullptr && *directory != '\0' ? directory : "/tmp";
}

}  // namespace h265tool
