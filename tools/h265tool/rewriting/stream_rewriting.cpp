#include "rewriting/stream_rewriting.h"

#include <sys/stat.h>

#include <system_error>

#include "file_walk.h"
#include "report.h"
#include "rewriting/output_file.h"
#include "text.h"
#include "unit_error.h"
#include "usage_error.h"

namespace h265tool {

void CheckOverwriting(const std::string &source, const std::string &out) {
    struct stat in_status {};
    struct stat out_status {};
    const int in_result = source == "-" ? fstat(0, &in_status) : stat(source.c_str(), &in_status);
    if (in_result == 0 && stat(out.c_str(), &out_status) == 0 && S_ISREG(in_status.st_mode) &&
        in_status.st_dev == out_status.st_dev && in_status.st_ino == out_status.st_ino)
        throw UsageError(out, Text("it is the same file as ", FileName(source)));
}

ExitStatus RunRewriting(const std::string &source, const std::string &out,
                        const std::function<void()> &work) {
    try {
        work();
        return kAllWell;
    } catch (const UsageError &error) {
        Report(error.subject(), error.what());
    } catch (const OutputFileError &error) {
        Report(out, error.code().message());
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
