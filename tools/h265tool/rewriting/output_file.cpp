#include "rewriting/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "input.h"
#include "output.h"
#include "write_all.h"

namespace h265tool {
namespace {

constexpr size_t kBuffered = size_t{256} << 10;

[[noreturn]] void ThrowError() {
    throw OutputFileError(errno, std::generic_category());
}

mode_t ModeOfNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string &path) : path_(path) {
    if (path == "-") {
        descriptor_ = STDOUT_FILENO;
        scratch_.emplace();
        return;
    }
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        scratch_.emplace();
        descriptor_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0)
            ThrowError();
        return;
    }
    if (exists) {
        std::error_code error;  // behind a symbolic link, the file that it names is replaced
        const std::filesystem::path target = std::filesystem::canonical(path, error);
        if (error)
            throw OutputFileError(error);
        path_ = target.string();
        if (access(path_.c_str(), W_OK) != 0)
            ThrowError();
    }
    OpenTemporary();
    if (fchmod(descriptor_, exists ? status.st_mode & 07777 : ModeOfNewFiles()) != 0) {
        const int error = errno;
        close(descriptor_);
        unlink(temporary_.c_str());
        throw OutputFileError(error, std::generic_category());
    }
}

void OutputFile::OpenTemporary() {
    const std::filesystem::path path(path_);
    temporary_ = (path.parent_path() / ("." + path.filename().string() + ".XXXXXX")).string();
    descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor_ < 0)
        ThrowError();
    removal_.emplace(temporary_);
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0 && descriptor_ != STDOUT_FILENO)
        close(descriptor_);
    if (!temporary_.empty())
        unlink(temporary_.c_str());
}

void OutputFile::Write(std::span<const unsigned char> bytes) {
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    if (buffer_.size() >= kBuffered)
        Flush();
}

void OutputFile::Flush() {
    if (scratch_.has_value())
        scratch_->Write(buffer_);
    else if (const int error = WriteAll(descriptor_, buffer_); error != 0)
        throw OutputFileError(error, std::generic_category());
    buffer_.clear();
}

void OutputFile::Send() {
    Input complete(scratch_->Path());
    for (auto chunk = complete.Read(); !chunk.empty(); chunk = complete.Read()) {
        const int error = WriteAll(descriptor_, chunk);
        if (error != 0 && descriptor_ == STDOUT_FILENO)
            throw OutputError(error, std::generic_category());
        if (error != 0)
            throw OutputFileError(error, std::generic_category());
    }
}

void OutputFile::Commit() {
    Flush();
    if (scratch_.has_value())
        Send();
    if (descriptor_ != STDOUT_FILENO && close(std::exchange(descriptor_, -1)) != 0)
        ThrowError();
    if (!temporary_.empty() && std::rename(temporary_.c_str(), path_.c_str()) != 0)
        ThrowError();
    removal_.reset();
    temporary_.clear();
}

}  // namespace h265tool
