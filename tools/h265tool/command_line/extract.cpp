#include "command_line/verbs.h"

namespace h265tool {
namespace {

constexpr char kExtractDescription[] =
    "Prints what the pictures of a stream carry besides themselves: a line\n"
    "for each picture that has what is asked for, in decoding order.";

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

Examples:
  h265tool extract --captions --timecodes in.hevc
  h265tool extract --captions in.hevc | sort -n -k 2    # in output order
  ffmpeg -i in.ts -c copy -f hevc - | h265tool extract --json --afd -
)";

}  // namespace

CLI::App *AddExtract(CLI::App *app, ExtractOptions *options) {
    CLI::App *const verb = app->add_subcommand("extract", kExtractDescription);
    verb->add_option("FILE", options->file, "The stream; - reads standard input")->required();
    verb->add_flag("--json", options->json, "Print JSON Lines");
    CLI::Option_group *const kinds = verb->add_option_group("What to print", "At least one of them");
    kinds->add_flag("--captions", options->captions, "Closed captions (CEA-608 and DTVCC)");
    kinds->add_flag("--timecodes", options->timecodes, "Time codes");
    kinds->add_flag("--afd", options->afd, "Active format descriptions");
    kinds->require_option(1, 3);
    verb->footer(std::string(kExtractDefinitions) + kExitStatus);
    return verb;
}

}  // namespace h265tool
