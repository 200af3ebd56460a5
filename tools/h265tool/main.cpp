// Runs the verb that the command line names.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>

#include "command_line/verbs.h"
#include "exit_status.h"
#include "output.h"
#include "report.h"
#include "text.h"

namespace h265tool {
namespace {

constexpr char kDescription[] =
    "Takes H.265 streams (Annex B) apart, prints them, edits them, and puts SEI messages into them.";

constexpr char kFurther[] = R"(
Examples:
    h265tool inspect in.hevc
    h265tool edit in.hevc -o out.hevc --range limited --fps 30000/1001

"h265tool VERB --help" explains a verb and its options, with examples; so does
the man page, h265tool(1).

Exit status:
    0  all went well
    1  something in the stream is wrong
    2  usage; a file that cannot be read or written)";

// A standard stream that the caller closed stays unusable: no file that is opened later takes its number.
void OccupyStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF)
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

void PrintWrongUsage(const CLI::App &app, const CLI::Error &error) {
    const std::vector<CLI::App *> verbs = app.get_subcommands();
    std::string command = "h265tool";
    std::string reason = error.what();
    if (!verbs.empty()) {
        command += " " + verbs.front()->get_name();
    } else if (const std::vector<std::string> rest = app.remaining(); !rest.empty()) {
        reason = Text("\"", rest.front(), "\" is no verb");
    }
    std::fprintf(stderr, "%s: %s\nRun \"%s --help\" for more information.\n", command.c_str(), reason.c_str(),
                 command.c_str());
}

void Print(std::string_view text) {
    Output output;
    output.Line(text.substr(0, text.find_last_not_of('\n') + 1));
    output.Flush();
}

// The lines of the verbs, close together.
std::shared_ptr<CLI::Formatter> OverviewFormatter() {
    auto formatter = std::make_shared<CLI::Formatter>();
    formatter->column_width(13);
    formatter->label("SUBCOMMAND", "VERB");
    return formatter;
}

ExitStatus Run(int argc, char **argv) {
    CLI::App app(kDescription, "h265tool");
    app.set_version_flag("--version", "h265tool " H265TOOL_VERSION, "Print name and version and exit");
    app.require_subcommand(1);

    InspectOptions inspect;
    AddInspect(&app, &inspect);
    ExtractOptions extract;
    const CLI::App *const extract_verb = AddExtract(&app, &extract);
    ShowOptions show;
    const CLI::App *const show_verb = AddShow(&app, &show);
    InsertOptions insert;
    const CLI::App *const insert_verb = AddInsert(&app, &insert);
    EditOptions edit;
    const CLI::App *const edit_verb = AddEdit(&app, &edit);
    app.formatter(OverviewFormatter());
    app.footer(kFurther);

    if (argc < 2) {
        std::fputs(app.help().c_str(), stderr);
        return kFailure;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        Print(app.help());
        return kAllWell;
    } catch (const CLI::CallForVersion &version) {
        Print(version.what());
        return kAllWell;
    } catch (const CLI::ParseError &error) {
        PrintWrongUsage(app, error);
        return kFailure;
    }
    if (edit_verb->parsed())
        return Edit(edit);
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
    h265tool::OccupyStandardStreams();
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
