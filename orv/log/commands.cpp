#include "orv/log/commands.h"

#include <map>
#include <memory>
#include <string>

#include "orv/log/explain_command.h"
#include "orv/log/follow_command.h"
#include "orv/log/report_command.h"

namespace orv::log {

namespace {

// What all three ask for.
struct Options {
    std::string path;
    Threads threads = Threads::One;
    bool json = false;
    std::string output = "report.html";
};

CLI::App* AddCommand(CLI::App* log, const char* name, const char* description, Options& options) {
    CLI::App* command = log->add_subcommand(name, description);
    command->footer("\nExample:\n  orv log " + std::string(name) +
                    " quelvixwinlib.dll.log\n\nExit status:\n  0  done\n"
                    "  2  the command line is wrong\n  6  a file cannot be read or written\n");
    command
        ->add_option("FILE", options.path, "The log: it lies beside the library, with .log added")
        ->required();
    command
        ->add_option("--threads", options.threads,
                     "Whether the host calls from one thread or from many; matters only for a log "
                     "without result lines")
        ->transform(CLI::CheckedTransformer(
            std::map<std::string, Threads>{{"one", Threads::One}, {"many", Threads::Many}}))
        ->option_text("one|many");
    return command;
}

}  // namespace

void AddLogCommands(CLI::App& app) {
    const auto options = std::make_shared<Options>();  // lives as long as the callbacks
    CLI::App* log =
        app.add_subcommand("log", "Reads a diagnostics log and tells why calls failed.");
    log->require_subcommand(1);

    CLI::App* explain =
        AddCommand(log, "explain", "Lists the calls with their likely causes.", *options);
    explain->add_flag("--json", options->json, "Write one JSON object");
    explain->callback([options] { ExplainLog(options->path, options->threads, options->json); });

    AddCommand(log, "follow", "Explains while the log is written, until Ctrl-C.", *options)
        ->callback([options] { FollowLog(options->path, options->threads); });

    CLI::App* report =
        AddCommand(log, "report", "Writes a page with timeline, signals and causes.", *options);
    report->add_option("--output", options->output, "The page to write")
        ->option_text("PAGE.html [report.html]");
    report->callback([options] { WriteReport(options->path, options->threads, options->output); });
}

}  // namespace orv::log
