#include "insert.h"

#include <sys/stat.h>

#include "annexb_scanner.h"
#include "file_walk.h"
#include "input.h"
#include "insert/access_units.h"
#include "insert/messages.h"
#include "insert/output_file.h"
#include "insert/request.h"
#include "insert/rewriter.h"
#include "insert/spool.h"
#include "progress.h"
#include "report.h"
#include "text.h"
#include "unit_error.h"

namespace h265tool {
namespace {

// A source that the output would take the place of, by whatever name.
void CheckOverwriting(const std::string &source, const std::string &out) {
    struct stat in_status {};
    struct stat out_status {};
    const int in_result = source == "-" ? fstat(0, &in_status) : stat(source.c_str(), &in_status);
    if (in_result == 0 && stat(out.c_str(), &out_status) == 0 && S_ISREG(in_status.st_mode) &&
        in_status.st_dev == out_status.st_dev && in_status.st_ino == out_status.st_ino)
        throw UsageError(out, Text("it is the same file as ", FileName(source)));
}

// Hands the stream to `sink`; returns its size.
uint64_t Scan(const std::string &path, NalUnitSink *sink) {
    AnnexBScanner scanner(*sink);
    Input input(path);
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

StreamLayout FindLayout(const std::string &path) {
    AccessUnitSplitter splitter;
    NalUnitCollector collector(AccessUnitSplitter::HeadSize, [&](const NalUnit &unit) {
        try {
            splitter.Take(unit);
        } catch (const UnitError &error) {
            throw UnitError(Text("NAL unit at offset ", unit.offset, ": ", error.what()));
        }
    });
    Scan(path, &collector);
    return splitter.Finish();
}

// What was asked for and not done, because it is there already.
void ReportKept(const MessageBuilder &messages, const StreamLayout &layout) {
    for (const auto &[option, count] : messages.Kept(layout.access_units))
        Report(option, Text(count, " of ", layout.access_units.size(),
                            " access units have one already, which stays (--replace would replace it)"));
}

// What lies behind the end of the stream.
void ReportLostCaptions(const MessageBuilder &messages, const StreamLayout &layout) {
    const uint64_t lost = messages.CaptionsBehind(layout.access_units);
    if (lost > 0)
        Report("--captions", Text(lost, " byte pairs lie behind the end of the stream"));
}

void Process(const InsertOptions &options) {
    CheckOverwriting(options.file, options.out);
    if (options.captions.has_value())
        CheckOverwriting(*options.captions, options.out);
    const Request request = MakeRequest(options);
    const Spool source(options.file);
    const StreamLayout layout = FindLayout(source.path());
    const MessageBuilder messages(request, layout.access_units);

    OutputFile out(options.out);
    Rewriter rewriter(request, layout, messages,
                      [&out](std::span<const unsigned char> bytes) { out.Write(bytes); });
    const uint64_t size = Scan(source.path(), &rewriter);
    rewriter.Finish(size);
    out.Commit();
    ReportKept(messages, layout);
    ReportLostCaptions(messages, layout);
}

}  // namespace

ExitStatus Insert(const InsertOptions &options) {
    const std::string source = FileName(options.file);
    try {
        Process(options);
        return kAllWell;
    } catch (const UsageError &error) {
        Report(error.subject(), error.what());
    } catch (const OutputFileError &error) {
        Report(options.out, error.code().message());
    } catch (const std::system_error &error) {
        Report(source, error.code().message());
    } catch (const NotAByteStream &error) {
        Report(source, error.what());
        return kStreamError;
    } catch (const UnitError &error) {
        Report(source, error.what());
        return kStreamError;
    }
    return kFailure;
}

}  // namespace h265tool
