#include "command_line/verbs.h"

namespace h265tool {
namespace {

constexpr char kInspectDescription[] =
    "Takes a stream apart: prints one line for each NAL unit, with its\n"
    "offset, size, type, layer, temporal id and what it holds.";

constexpr char kInspectDefinitions[] = R"(
Definitions:
  offset       position in the stream of the first byte of the start code
  size         bytes from there to the end of the NAL unit: with the start code,
               without the zero bytes behind the NAL unit (trailing_zero_8bits)
  start code   4 bytes when the byte in front of 00 00 01 is 00, else 3; zero
               bytes in front of it belong to no NAL unit
  temporal id  nuh_temporal_id_plus1 - 1

Colours tell apart key pictures (IRAP), parameter sets, and what could not be parsed.
They change nothing else, and --json has none. --color auto heeds NO_COLOR and TERM.

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

Examples:
  h265tool inspect in.hevc
  h265tool inspect --color always --human in.hevc | less -R
  h265tool inspect --json in.hevc | jq -r .nal_unit_name | sort | uniq -c
  ffmpeg -i in.mp4 -c copy -f hevc - | h265tool inspect -
)";

}  // namespace

CLI::App *AddInspect(CLI::App *app, InspectOptions *options) {
    CLI::App *const verb = app->add_subcommand("inspect", kInspectDescription);
    verb->add_option("FILE", options->file, "The stream; - reads standard input")->required();
    CLI::Option *const json =
        verb->add_flag("--json", options->json, "Print JSON Lines with every syntax element");
    verb->add_option("--color", options->color, "Colours: auto (on a terminal), always or never [auto]")
        ->type_name("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    verb->add_flag("--human,--human-readable", options->human, "Print sizes in KiB, MiB or GiB")
        ->excludes(json);
    verb->footer(std::string(kInspectDefinitions) + kExitStatus);
    return verb;
}

}  // namespace h265tool
