#include "rewriting/stream_rewriting.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <system_error>

#include "file_walk.h"
#include "output.h"
#include "report.h"
#include "rewriting/output_file.h"
#include "rewriting/scratch_file.h"
#include "text.h"
#include "unit_error.h"
#include "usage_error.h"

namespace h265tool {
namespace {

// Of a file, or of the standard stream that "-" stands for; not there: of no kind.
struct stat Status(const std::string &path, int standard_stream) {
    struct stat status {};
    const int result = path == "-" ? fstat(standard_stream, &status) : stat(path.c_str(), &status);
    if (result != 0)
        status.st_mode = 0;
    return status;
}

bool IsTerminal(const std::string &path, const struct stat &status) {
    if (!S_ISCHR(status.st_mode))
        return false;
    if (path == "-")
        return isatty(STDOUT_FILENO) == 1;
    const int descriptor = open(path.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    const bool is_terminal = isatty(descriptor) == 1;
    if (descriptor >= 0)
        close(descriptor);
    return is_terminal;
}

}  // namespace

void CheckFiles(const std::string &source, const std::string &out, const std::string &option,
                const std::optional<std::string> &file_of_option) {
    if (source == "-" && file_of_option == "-")
        throw UsageError(option, "the stream comes from standard input already");
    const std::string out_name = out == "-" ? "standard output" : out;
    const struct stat out_status = Status(out, STDOUT_FILENO);
    if (IsTerminal(out, out_status))
        throw UsageError(out_name, "it is a terminal, which is no place for a stream");
    for (const std::string &in : {source, file_of_option.value_or(source)}) {
        const struct stat in_status = Status(in, STDIN_FILENO);
        if (S_ISREG(in_status.st_mode) && in_status.st_dev == out_status.st_dev &&
            in_status.st_ino == out_status.st_ino)
            throw UsageError(out_name, Text("it is the same file as ", FileName(in)));
    }
}

ExitStatus RunRewriting(const std::string &source, const std::string &out,
                        const std::function<void()> &work) {
    try {
        work();
        return kAllWell;
    } catch (const UsageError &error) {
        Report(error.subject(), error.what());
    } catch (const OutputError &) {
        throw;
    } catch (const OutputFileError &error) {
        Report(out, error.code().message());
    } catch (const ScratchFileError &error) {
        Report(Text("temporary file in ", ScratchFile::Directory()), error.code().message());
    } catch (const std::system_error &error) {
        Report(FileName(source), error.code().message());
    } catch (const NotAByteStream &error) {
        Report(FileName(source), error.what());
        return kStreamError;
    } catch (const UnitError &error) {
        Report(FileName(source), error.what());
        return kStreamError;
    }
    return kFailure;
}

}  // namespace h265tool
