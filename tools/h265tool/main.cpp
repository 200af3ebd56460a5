// Runs the verb that the command line names.

#include <exception>

#include "command_line/verbs.h"
#include "exit_status.h"
#include "output.h"
#include "report.h"

namespace h265tool {
namespace {

ExitStatus Run(int argc, char **argv) {
    CLI::App app("Takes H.265 streams apart, prints them, edits them, and puts SEI messages into them.",
                 "h265tool");
    app.set_version_flag("--version", "h265tool " H265TOOL_VERSION);
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

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? kAllWell : kFailure;
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
