// The command line: verbs and their options.

#include <CLI/CLI.hpp>
#include <exception>

#include "exit_status.h"
#include "inspect.h"
#include "output.h"
#include "report.h"

namespace h265tool {
namespace {

constexpr char kInspectDescription[] =
    "Takes an H.265 byte stream (Annex B) apart: prints one line for each NAL unit,\n"
    "with its offset, size, type, layer, temporal id and a summary of what it holds.";

constexpr char kInspectDefinitions[] = R"(
Definitions:
  offset       position in the stream of the first byte of the start code
  size         bytes from there to the end of the NAL unit: with the start code,
               without the zero bytes behind the NAL unit (trailing_zero_8bits)
  start code   4 bytes when the byte in front of 00 00 01 is 00, else 3; zero
               bytes in front of it belong to no NAL unit
  temporal id  nuh_temporal_id_plus1 - 1

With --json, one JSON object for each NAL unit, on a line of its own:
  offset, size, start_code, nal_unit_type, nal_unit_name, nuh_layer_id,
  temporal_id  (null where the NAL unit header does not say)
and at most one of
  vps, sps, pps, slice, aud  the syntax elements that the NAL unit carries; null
               stands for array entries that the syntax skips
  error        why the NAL unit could not be parsed
  not_parsed   why it was not tried: layers above the base layer

Exit status:
  0  all went well
  1  something in the stream could not be parsed
  2  usage; the file cannot be opened or read, or the output not written)";

ExitStatus Run(int argc, char **argv) {
    CLI::App app("Inspects H.265 streams.", "h265tool");
    app.set_version_flag("--version", "h265tool " H265TOOL_VERSION);
    app.require_subcommand(1);

    InspectOptions inspect;
    CLI::App *const inspect_verb = app.add_subcommand("inspect", kInspectDescription);
    inspect_verb->add_option("FILE", inspect.file, "The stream; - reads standard input")->required();
    inspect_verb->add_flag("--json", inspect.json, "Print JSON Lines with every syntax element");
    inspect_verb->footer(kInspectDefinitions);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? kAllWell : kFailure;
    }
    return Inspect(inspect);
}

}  // namespace
}  // namespace h265tool

int main(int argc, char **argv) {
    try {
        return h265tool::Run(argc, argv);
    } catch (const h265tool::OutputError &error) {
        if (!error.IsClosedPipe())
            h265tool::Report("standard output", error.code().message());
    } catch (const std::exception &error) {
        h265tool::Report("internal error", error.what());
    }
    return h265tool::kFailure;
}
