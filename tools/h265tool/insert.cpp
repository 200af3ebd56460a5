#include "insert.h"

#include "file_walk.h"
#include "insert/access_units.h"
#include "insert/messages.h"
#include "insert/request.h"
#include "insert/rewriter.h"
#include "report.h"
#include "rewriting/output_file.h"
#include "rewriting/spool.h"
#include "rewriting/stream_rewriting.h"
#include "text.h"
#include "unit_error.h"

namespace h265tool {
namespace {

StreamLayout FindLayout(const std::string &path) {
    AccessUnitSplitter splitter;
    NalUnitCollector collector(AccessUnitSplitter::HeadSize, [&](const NalUnit &unit) {
        WithPlace(unit.offset, [&] { splitter.Take(unit); });
    });
    ScanFile(path, &collector);
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
    CheckFiles(options.file, options.out, "--captions", options.captions);
    const Request request = MakeRequest(options);
    const Spool source(options.file);
    const StreamLayout layout = FindLayout(source.path());
    const MessageBuilder messages(request, layout.access_units);

    OutputFile out(options.out);
    Rewriter rewriter(request, layout, messages,
                      [&out](std::span<const unsigned char> bytes) { out.Write(bytes); });
    const uint64_t size = ScanFile(source.path(), &rewriter);
    rewriter.Finish(size);
    out.Commit();
    ReportKept(messages, layout);
    ReportLostCaptions(messages, layout);
}

}  // namespace

ExitStatus Insert(const InsertOptions &options) {
    return RunRewriting(options.file, options.out, [&] { Process(options); });
}

}  // namespace h265tool
