#include "edit.h"

#include "edit/planner.h"
#include "edit/request.h"
#include "edit/unit_replacer.h"
#include "file_walk.h"
#include "report.h"
#include "rewriting/output_file.h"
#include "rewriting/spool.h"
#include "rewriting/stream_rewriting.h"

namespace h265tool {
namespace {

EditPlan MakePlan(const EditRequest &request, const std::string &path) {
    EditPlanner planner(request);
    NalUnitCollector collector(EditPlanner::HeadSize, [&](const NalUnit &unit) { planner.Take(unit); });
    ScanFile(path, &collector);
    return planner.Finish();
}

void Process(const EditOptions &options) {
    CheckFiles(options.file, options.out, "--hrd", options.hrd);
    const EditRequest request = MakeEditRequest(options);
    const Spool source(options.file);
    const EditPlan plan = MakePlan(request, source.path());

    OutputFile out(options.out);
    UnitReplacer replacer(plan.replacements,
                          [&out](std::span<const unsigned char> bytes) { out.Write(bytes); });
    const uint64_t size = ScanFile(source.path(), &replacer);
    replacer.Finish(size);
    out.Commit();
    for (const std::string &note : plan.notes)
        Report(FileName(options.file), note);
}

}  // namespace

ExitStatus Edit(const EditOptions &options) {
    return RunRewriting(options.file, options.out, [&] { Process(options); });
}

}  // namespace h265tool
