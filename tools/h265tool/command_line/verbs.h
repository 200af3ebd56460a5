// The verbs and their options as the command line has them: a file for each verb.

#ifndef H265TOOL_COMMAND_LINE_VERBS_H
#define H265TOOL_COMMAND_LINE_VERBS_H

#include <CLI/CLI.hpp>
#include <string>

#include "edit.h"
#include "extract.h"
#include "insert.h"
#include "inspect.h"
#include "show.h"

namespace h265tool {

// Of the verbs that read one stream and print.
inline constexpr char kExitStatus[] = R"(
Exit status:
  0  all went well
  1  something in the stream could not be parsed
  2  usage; the file cannot be opened or read, or the output not written)";

// Of the verbs that write a stream again.
inline constexpr char kRewritingOutput[] = R"(
OUT appears when it is complete; a file of this name is replaced. Standard output (-),
a pipe or a device is sent nothing before all of it is there: it waits in a temporary
file, in TMPDIR or /tmp, and so does an IN that can be read only once. No stream is
written to a terminal.
)";
inline constexpr char kRewritingExitStatus[] = R"(
Exit status:
  0  all went well
  1  something in the stream cannot be parsed, or does not allow what is asked for
  2  usage; a file that cannot be read or written)";

// Each adds its verb, which fills the options; they have to outlive the parse.
CLI::App *AddInspect(CLI::App *app, InspectOptions *options);
CLI::App *AddExtract(CLI::App *app, ExtractOptions *options);
CLI::App *AddShow(CLI::App *app, ShowOptions *options);
CLI::App *AddInsert(CLI::App *app, InsertOptions *options);
CLI::App *AddEdit(CLI::App *app, EditOptions *options);

}  // namespace h265tool

#endif
