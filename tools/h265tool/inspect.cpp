#include "inspect.h"

#include <system_error>

#include "annexb_scanner.h"
#include "input.h"
#include "json/json.h"
#include "nal_unit.h"
#include "output.h"
#include "progress.h"
#include "reading/unit_reader.h"
#include "report.h"
#include "summary.h"

namespace h265tool {
namespace {

// Bytes that are no UTF-8 do not occur, but a line must not be lost to them.
std::string JsonLine(const NalUnit &unit, const UnitContent &content) {
    return ToJson(unit, content).dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Walks through the stream and prints it. False: something in it could not be parsed.
bool PrintNalUnits(const InspectOptions &options, Output *output) {
    bool all_parsed = true;
    UnitReader reader;
    NalUnitCollector collector(UnitReader::HeadSize, [&](const NalUnit &unit) {
        const UnitContent content = reader.Read(unit);
        if (std::holds_alternative<Unparsable>(content))
            all_parsed = false;
        output->Line(options.json ? JsonLine(unit, content) : SummaryLine(unit, content));
    });
    AnnexBScanner scanner(collector);
    Input input(options.file);
    Progress progress(input.Size());
    for (auto chunk = input.Read(); !chunk.empty(); chunk = input.Read()) {
        scanner.Scan(chunk);
        progress.Advance(chunk.size());
    }
    scanner.Finish();
    return all_parsed;
}

}  // namespace

ExitStatus Inspect(const InspectOptions &options) {
    Output output;
    ExitStatus status = kAllWell;
    std::string reason;
    try {
        if (!PrintNalUnits(options, &output))
            status = kStreamError;
    } catch (const OutputError &) {
        throw;
    } catch (const std::system_error &error) {
        reason = error.code().message();
        status = kFailure;
    } catch (const NotAByteStream &error) {
        reason = error.what();
        status = kStreamError;
    }
    output.Flush();  // what was found until then
    if (!reason.empty())
        Report(options.file == "-" ? "standard input" : options.file, reason);
    return status;
}

}  // namespace h265tool
