// The command line: verbs and their options.

#include <CLI/CLI.hpp>
#include <exception>
#include <string>

#include "exit_status.h"
#include "extract.h"
#include "insert.h"
#include "inspect.h"
#include "output.h"
#include "report.h"
#include "show.h"

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
  sei          the SEI messages: payload_type, payload_name, payload_size,
               payload_index (in the NAL unit behind its header, without
               emulation prevention bytes), and what pic_timing, time_code,
               captions, afd, active_parameter_sets or user_data_unregistered
               carry, or error or not_parsed
  error        why the NAL unit, or what follows the SEI messages that are
               there, could not be parsed
  not_parsed   why it was not tried: layers above the base layer

SEI lines appear together with the slice that they belong to: how picture timing
is read depends on it.
)";

constexpr char kExtractDescription[] =
    "Prints what the pictures of an H.265 byte stream carry besides themselves: one line\n"
    "for each picture that carries what is asked for, in decoding order.";

constexpr char kExtractDefinitions[] = R"(
A line has
  the number of the picture in decoding order, from 0 on
  its number in output order, from 0 on: by picture order count within a coded
    video sequence, one sequence after the other; - when it is not output, or
    its slice header cannot be read
  captions     the CEA-608 bytes of both fields as text, control codes in braces,
               and the DTVCC bytes in hexadecimal, | in front of each packet
  time code    hours:minutes:seconds:frames, ; in front of the frames of a
               drop-frame count
  AFD          active_format, or none

With --json, one JSON object for each such picture, on a line of its own:
  picture, presentation, PicOrderCntVal, and lists of captions, time_code, afd
)";

constexpr char kExitStatus[] = R"(
Exit status:
  0  all went well
  1  something in the stream could not be parsed
  2  usage; the file cannot be opened or read, or the output not written)";

constexpr char kInsertDescription[] =
    "Puts SEI messages and delimiters into an H.265 byte stream. Everything else stays as it\n"
    "is, byte for byte.";

constexpr char kInsertDefinitions[] = R"(
An access unit that has a message of a kind keeps it and gets no second one; with
--replace it is taken out, and the other messages of its NAL unit stay.

Captions, time codes and times count the pictures in the order of output, at the rate
of the stream's VUI or of --rate. Fields that are pictures of their own count each.

SCC time codes count at 29.97 frames/s. Each frame carries one byte pair, of field 1:
lines that come before the one in front of them is through are delayed.

OUT appears when it is complete; a file of this name is replaced.

Exit status:
  0  all went well
  1  something in the stream cannot be parsed, or does not allow what is asked for
  2  usage; a file that cannot be read or written)";

constexpr char kShowDescription[] =
    "Prints the parameter sets and the picture timing of an H.265 byte stream as the library's\n"
    "displays have them, an element a line: VPS, SPS, PPS and picture timing, or those that\n"
    "are asked for.";

constexpr char kShowDefinitions[] = R"(
Picture timing comes with the first slice of its access unit, behind the parameter
sets in front of that. Layers above the base layer are not shown. What cannot be
parsed is reported on standard error.
)";

CLI::App *AddShow(CLI::App *app, ShowOptions *options) {
    CLI::App *const verb = app->add_subcommand("show", kShowDescription);
    verb->add_option("FILE", options->file, "The stream; - reads standard input")->required();
    verb->add_flag("--vps", options->vps, "Video parameter sets");
    verb->add_flag("--sps", options->sps, "Sequence parameter sets");
    verb->add_flag("--pps", options->pps, "Picture parameter sets");
    verb->add_flag("--sei", options->sei, "Picture timing SEI messages");
    verb->add_option("--level", options->level,
                     "5: the sets' own elements; 6: with those of the structures in them; 7: with the\n"
                     "steps of the displays [6]")
        ->type_name("N")
        ->check(CLI::Range(0, 8));
    verb->add_flag("--all", options->all, "Also parameter sets that equal an earlier one");
    verb->add_flag("--tags", options->tags, "Start lines with channel, level, function, file and line");
    verb->footer(std::string(kShowDefinitions) + kExitStatus);
    return verb;
}

CLI::App *AddInsert(CLI::App *app, InsertOptions *options) {
    CLI::App *const verb = app->add_subcommand("insert", kInsertDescription);
    verb->add_option("IN", options->file, "The stream; - reads standard input")->required();
    verb->add_option("-o,--output", options->out, "The file to write")->required()->type_name("OUT");
    verb->add_option("--captions", options->captions, "CEA-608 captions from a Scenarist SCC file")
        ->type_name("FILE");
    verb->add_option("--captions-start", options->captions_start,
                     "The SCC time code of the first picture [00:00:00:00]")
        ->type_name("TC");
    verb->add_option("--afd", options->afd, "Active format description, 0 to 15")
        ->type_name("CODE")
        ->check(CLI::Range(0, 15));
    verb->add_option("--timecode", options->time_code,
                     "SMPTE ST 12-1 time code of the first picture; HH:MM:SS;FF is drop-frame")
        ->type_name("HH:MM:SS:FF");
    verb->add_option("--precision-time", options->precision_time,
                     "MISB ST 0604 time of the first picture, as 2026-01-31T12:00:00.5Z")
        ->type_name("UTC");
    verb->add_option("--pic-timing", options->pic_timing,
                     "Picture timing with this pic_struct, or with a pattern of some that repeats: 4,6,3,5")
        ->type_name("N[,N...]");
    verb->add_option("--rate", options->rate, "Pictures per second, as 30000/1001")->type_name("N[/D]");
    verb->add_flag("--aud", options->aud, "An access unit delimiter in front of each access unit");
    verb->add_flag("--eos", options->eos, "An end of sequence NAL unit at the end");
    verb->add_flag("--replace", options->replace, "Replace what the stream has of the same kinds");
    verb->footer(kInsertDefinitions);
    return verb;
}

ExitStatus Run(int argc, char **argv) {
    CLI::App app("Takes H.265 streams apart, prints them, and puts SEI messages into them.", "h265tool");
    app.set_version_flag("--version", "h265tool " H265TOOL_VERSION);
    app.require_subcommand(1);

    InspectOptions inspect;
    CLI::App *const inspect_verb = app.add_subcommand("inspect", kInspectDescription);
    inspect_verb->add_option("FILE", inspect.file, "The stream; - reads standard input")->required();
    inspect_verb->add_flag("--json", inspect.json, "Print JSON Lines with every syntax element");
    inspect_verb->footer(std::string(kInspectDefinitions) + kExitStatus);

    ExtractOptions extract;
    CLI::App *const extract_verb = app.add_subcommand("extract", kExtractDescription);
    extract_verb->add_option("FILE", extract.file, "The stream; - reads standard input")->required();
    extract_verb->add_flag("--json", extract.json, "Print JSON Lines");
    CLI::Option_group *const kinds = extract_verb->add_option_group("What to print", "At least one of them");
    kinds->add_flag("--captions", extract.captions, "Closed captions (CEA-608 and DTVCC)");
    kinds->add_flag("--timecodes", extract.timecodes, "Time codes");
    kinds->add_flag("--afd", extract.afd, "Active format descriptions");
    kinds->require_option(1, 3);
    extract_verb->footer(std::string(kExtractDefinitions) + kExitStatus);

    InsertOptions insert;
    const CLI::App *const insert_verb = AddInsert(&app, &insert);

    ShowOptions show;
    const CLI::App *const show_verb = AddShow(&app, &show);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? kAllWell : kFailure;
    }
    if (insert_verb->parsed())
        return Insert(insert);
    if (show_verb->parsed())
        return Show(show);
    if (extract_verb->parsed())
        return Extract(extract);
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
