#include "orv/log/commands.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "orv/log/infer/follower.h"
#include "orv/log/infer/overview.h"
#include "orv/log/show/json.h"
#include "orv/log/show/report_json.h"
#include "orv/log/show/report_page.h"
#include "orv/log/show/text.h"
#include "orv/output_file.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv::log {

namespace {

// Large, because the output may have hundreds of megabytes.
constexpr std::size_t OutputBuffer = 65536;

void ExplainLog(const std::string& path, Threads threads, bool json) {
    LogFile log(path);
    std::setvbuf(stdout, nullptr, _IOFBF, OutputBuffer);
    if (json) {
        WriteJson(stdout, log, threads);
    } else {
        PrintLog(stdout, terminal::IsOutput(), log, threads);
    }
}

constexpr int FollowPollMs = 100;

struct Printing : Listener {
    explicit Printing(TextPrinter& to) : printer(to) {}
    void OnCall(const Call& call) override { printer.Print(call); }
    void OnNote(const Note& note) override { printer.Print(note); }
    TextPrinter& printer;
};

// Rejects a pipe, because `orv log follow` reads the file repeatedly. Accepts a missing file.
void RequireFollowable(const std::string& path) {
    std::error_code missing;
    const std::filesystem::file_status status = std::filesystem::status(PathOf(path), missing);
    if (path == "-" || (exists(status) && !is_regular_file(status))) {
        throw Problem(
            ExitStatus::FileFailed,
            path +
                " cannot be followed: it is not a regular file. For a pipe, use orv log explain");
    }
}

// Reports why `orv log follow` waits, each time the reason changes.
class WaitingLine {
  public:
    void Show(const std::string& path, const char* reason) {
        if (reason && said != reason) {
            std::fprintf(stderr, "%s %s; waiting. Ctrl-C ends.\n", Printable(path).c_str(), reason);
        }
        said = reason ? reason : "";
    }

  private:
    std::string said;
};

void FollowLog(const std::string& path, Threads threads) {
    using Found = Follower::Found;
    RequireFollowable(path);
    terminal::CatchInterrupts();
    TextPrinter printer(stdout, terminal::IsOutput());
    Printing printing(printer);
    Follower follower(path, threads, printing);
    WaitingLine waiting;
    Found found = Found::Nothing;
    do {
        found = follower.Poll();
        printer.Show();
        if (found == Found::Emptied) {
            printer.Flush();
            printer.PrintLine("The log was emptied.");
        } else {
            waiting.Show(path, follower.WaitsFor(found));
        }
    } while (terminal::Pause(found == Found::Lines ? 0 : FollowPollMs));
    follower.End();
    printer.Flush();
}

std::string PageOf(LogFile& log, Threads threads) {
    ReportCollector collected;
    const ResultUse results = FindResults(log);
    const Totals totals = Analyse(log, results, threads, collected);
    std::string page;
    const auto append = [&page](std::string_view piece) { page += piece; };
    std::for_each(PageBeforeData.begin(), PageBeforeData.end(), append);
    page += ReportJson({log.Name(), results.any(), threads, totals}, collected);
    std::for_each(PageAfterData.begin(), PageAfterData.end(), append);
    return page;
}

struct Options {
    std::string path;
    Threads threads = Threads::One;
    bool json = false;
    std::string output = "report.html";
};

Command AddLogCommand(Command log, const char* name, const char* description, Options& options) {
    Command command = log.AddCommand(name, description);
    command.AddFooter("orv log " + std::string(name) + " quelvixwinlib.dll.log",
                      {ExitStatus::Done, ExitStatus::BadUsage, ExitStatus::FileFailed});
    command
        .AddText("FILE", options.path,
                 "The log, which lies beside the library with .log added; - reads standard input")
        .Required();
    command.AddChoice<Threads>(
        "--threads", options.threads, {{"one", Threads::One}, {"many", Threads::Many}},
        "Whether the host calls from one thread or from many; matters only for a log without "
        "result lines");
    return command;
}

}  // namespace

void WriteReport(const std::string& path, Threads threads, const std::string& output) {
    if (PageBeforeData.empty()) {
        throw Problem(ExitStatus::FileFailed,
                      "this orv was built without the report page. Build it with -DORV_REPORT=ON, "
                      "which needs npm, or use orv log explain");
    }
    std::error_code notBoth;  // ignored: if a file is missing, the files differ
    if (std::filesystem::equivalent(PathOf(path), PathOf(output), notBoth)) {
        throw Problem(ExitStatus::FileFailed,
                      output + " is the log itself. Give the page another name");
    }
    LogFile log(path);
    const std::string page = PageOf(log, threads);
    OutputFile file(output);
    file.Write(page);
    file.Commit();
    std::printf("%s\n", Printable(output).c_str());
}

void AddLogCommands(Command program) {
    const auto options = std::make_shared<Options>();
    Command log = program.AddGroup("log", "Reads a diagnostics log and explains why calls failed.",
                                   "orv log explain quelvixwinlib.dll.log");

    Command explain =
        AddLogCommand(log, "explain", "Lists the calls with their likely causes.", *options);
    explain.AddFlag("--json", options->json, "Prints one JSON object");
    explain.Does([options] { ExplainLog(options->path, options->threads, options->json); });

    AddLogCommand(log, "follow", "Explains a log while it is written, until Ctrl-C.", *options)
        .Does([options] { FollowLog(options->path, options->threads); });

    Command report = AddLogCommand(
        log, "report", "Writes an HTML page with timeline, signals and causes.", *options);
    report.AddText("-o,--output", options->output, "The page to write; default report.html")
        .Named("FILE");
    report.Does([options] { WriteReport(options->path, options->threads, options->output); });
}

}  // namespace orv::log
