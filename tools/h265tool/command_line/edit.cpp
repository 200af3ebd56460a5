#include "command_line/verbs.h"

namespace h265tool {
namespace {

constexpr char kEditDescription[] =
    "Changes what the VPS, SPS and picture timing of a stream say. The\n"
    "pictures, and everything else, stay as they are, byte for byte.";

constexpr char kEditDefinitions[] = R"(
Nothing is decoded or coded again. --size changes the headers alone: it puts a wrong
size right, and a stream whose size was right can no longer be decoded.

--crop changes a conformance window that is there, and cannot add one: 0,0,0,0 stands
for none.

--interlaced, --size and --crop also set general_non_packed_constraint_flag and
general_frame_only_constraint_flag of the SPS to 0, and add an empty VUI where there is
none; the other options change the VUI alone. --interlaced leaves source_scan_type of
picture timing as it is.

COLOUR names are those of ffmpeg and H.273 (bt709, bt2020, smpte2084, bt2020nc, ...), or
numbers. --range and --colour say that the video format is unspecified where nothing
was said before.

--field-seq needs a pic_struct in all picture timing that is there. A stream that has
no picture timing gets it afterwards, from insert --pic-timing.

--hrd reads the object that inspect --json prints as sps.vui.nal_hrd; members that are
left out stay. What buffering period and picture timing messages of the stream depend
on cannot change.

All SPS of the base layer are changed; layers above it stay as they are. Each result is
read again and compared with what was asked for.
)";

constexpr char kEditExamples[] = R"(
Examples:
  h265tool edit in.hevc -o out.hevc --sar 4:3 --range limited --fps 30000/1001
  h265tool edit in.hevc -o out.hevc --colour bt2020/smpte2084/bt2020nc
  h265tool edit in.hevc -o out.hevc --interlaced --field-seq
  h265tool inspect --json in.hevc | jq 'select(.sps).sps.vui.nal_hrd' >hrd.json
  h265tool edit in.hevc -o out.hevc --hrd hrd.json
  h265tool edit in.hevc -o - --fps 50 | ffplay -f hevc -
)";

}  // namespace

CLI::App *AddEdit(CLI::App *app, EditOptions *options) {
    CLI::App *const verb = app->add_subcommand("edit", kEditDescription);
    verb->add_option("IN", options->file, "The stream; - reads standard input")->required();
    verb->add_option("-o,--output", options->out, "The file to write; - writes standard output")
        ->required()
        ->type_name("OUT");
    CLI::Option_group *const edits = verb->add_option_group("What to edit", "At least one of them");
    edits->add_flag("--interlaced", options->interlaced,
                    "Interlaced source material: general_progressive_source_flag 0 and\n"
                    "general_interlaced_source_flag 1, in VPS and SPS");
    edits->add_option("--size", options->size, "Picture size in luma samples")->type_name("WxH");
    edits->add_option("--crop", options->crop, "Luma samples outside the conformance window at each side")
        ->type_name("L,R,T,B");
    edits->add_option("--sar", options->sar, "Sample aspect ratio")->type_name("W:H");
    edits
        ->add_option("--colour", options->colour,
                     "Colour primaries, transfer characteristics and matrix coefficients")
        ->type_name("PRIMARIES/TRANSFER/MATRIX");
    edits->add_option("--range", options->range, "Range of the sample values: full or limited")
        ->type_name("RANGE")
        ->check(CLI::IsMember({"full", "limited"}));
    CLI::Option *const timing =
        edits->add_option("--timing", options->timing, "vui_num_units_in_tick and vui_time_scale")
            ->type_name("UNITS/SCALE");
    edits->add_option("--fps", options->fps, "The same as pictures per second: 30000/1001")
        ->type_name("N[/D]")
        ->excludes(timing);
    edits->add_flag("--field-seq", options->field_seq,
                    "Pictures are fields: field_seq_flag and frame_field_info_present_flag 1");
    edits
        ->add_option("--pic-struct", options->pic_struct,
                     "pic_struct of all picture timing that is there, 0 to 12")
        ->type_name("N")
        ->check(CLI::Range(0, 12));
    edits->add_option("--hrd", options->hrd, "HRD parameters from a JSON file; - reads standard input")
        ->type_name("FILE");
    edits->require_option(1, 0);
    verb->footer(std::string(kEditDefinitions) + kRewritingOutput + kEditExamples + kRewritingExitStatus);
    return verb;
}

}  // namespace h265tool
