#include "command_line/verbs.h"

namespace h265tool {
namespace {

constexpr char kInsertDescription[] =
    "Puts SEI messages and delimiters into a stream. Everything else stays\n"
    "as it is, byte for byte.";

constexpr char kInsertDefinitions[] = R"(
An access unit that has a message of a kind keeps it and gets no second one; with
--replace it is taken out, and the other messages of its NAL unit stay.

Captions, time codes and times count the pictures in the order of output, at the rate
of the stream's VUI or of --rate. Fields that are pictures of their own count each.

SCC time codes count at 29.97 frames/s. Each frame carries one byte pair, of field 1:
lines that come before the one in front of them is through are delayed.
)";

constexpr char kInsertExamples[] = R"(
Examples:
  h265tool insert in.hevc -o out.hevc --captions words.scc --afd 10
  h265tool insert in.hevc -o out.hevc --timecode '01:00:00;02' --replace
  h265tool insert in.hevc -o out.hevc --pic-timing 4,6,3,5 --aud --eos
  ffmpeg -i in.mp4 -c copy -f hevc - | h265tool insert - -o - --aud >out.hevc
)";

}  // namespace

CLI::App *AddInsert(CLI::App *app, InsertOptions *options) {
    CLI::App *const verb = app->add_subcommand("insert", kInsertDescription);
    verb->add_option("IN", options->file, "The stream; - reads standard input")->required();
    verb->add_option("-o,--output", options->out, "The file to write; - writes standard output")
        ->required()
        ->type_name("OUT");
    verb->add_option("--captions", options->captions,
                     "CEA-608 captions from a Scenarist SCC file; - reads standard input")
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
    verb->footer(std::string(kInsertDefinitions) + kRewritingOutput + kInsertExamples + kRewritingExitStatus);
    return verb;
}

}  // namespace h265tool
