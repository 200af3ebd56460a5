#include "file_walk.h"

#include <system_error>

#include "annexb_scanner.h"
#include "input.h"
#include "output.h"
#include "progress.h"
#include "reading/unit_reader.h"
#include "report.h"

namespace h265tool {
namespace {

void Walk(const std::string &file, const std::function<void(const NalUnit &)> &take) {
    NalUnitCollector collector(UnitReader::HeadSize, take);
    AnnexBScanner scanner(collector);
    Input input(file);
    Progress progress(input.Size());
    for (auto chunk = input.Read(); !chunk.empty(); chunk = input.Read()) {
        scanner.Scan(chunk);
        progress.Advance(chunk.size());
    }
    scanner.Finish();
}

}  // namespace

std::string FileName(const std::string &file) {
    return file == "-" ? "standard input" : file;
}

ExitStatus WalkFile(const std::string &file, const std::function<void(const NalUnit &)> &take,
                    const std::function<void()> &end) {
    ExitStatus status = kAllWell;
    std::string reason;
    try {
        Walk(file, take);
    } catch (const OutputError &) {
        throw;
    } catch (const std::system_error &error) {
        reason = error.code().message();
        status = kFailure;
    } catch (const NotAByteStream &error) {
        reason = error.what();
        status = kStreamError;
    }
    end();
    if (!reason.empty())
        Report(FileName(file), reason);
    return status;
}

}  // namespace h265tool
