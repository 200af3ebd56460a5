#include "file_walk.h"

#include <system_error>

#include "input.h"
#include "output.h"
#include "progress.h"
#include "reading/unit_reader.h"
#include "report.h"

namespace h265tool {
std::string FileName(const std::string &file) {
    return file == "-" ? "standard input" : file;
}

uint64_t ScanFile(const std::string &file, NalUnitSink *sink) {
    AnnexBScanner scanner(*sink);
    Input input(file);
    Progress progress(input.Size());
    uint64_t size = 0;
    for (auto chunk = input.Read(); !chunk.empty(); chunk = input.Read()) {
        scanner.Scan(chunk);
        size += chunk.size();
        progress.Advance(chunk.size());
    }
    scanner.Finish();
    return size;
}

ExitStatus WalkFile(const std::string &file, const std::function<void(const NalUnit &)> &take,
                    const std::function<void()> &end) {
    ExitStatus status = kAllWell;
    std::string reason;
    try {
        NalUnitCollector collector(UnitReader::HeadSize, take);
        ScanFile(file, &collector);
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
