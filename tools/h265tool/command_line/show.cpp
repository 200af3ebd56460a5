#include "command_line/verbs.h"

namespace h265tool {
namespace {

constexpr char kShowDescription[] =
    "Prints the parameter sets and the picture timing of a stream, or\n"
    "those that are asked for, an element a line.";

constexpr char kShowDefinitions[] = R"(
The text is that of the library's displays. Picture timing comes with the first slice
of its access unit, behind the parameter sets in front of that. Layers above the base
layer are not shown. What cannot be parsed is reported on standard error.

Examples:
  h265tool show --sps in.hevc
  h265tool show --sei --level 7 in.hevc
  head -c 100000 in.hevc | h265tool show --vps --sps --pps -
)";

}  // namespace

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

}  // namespace h265tool
