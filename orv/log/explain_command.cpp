#include "orv/log/explain_command.h"

#include <algorithm>
#include <cstdio>

#include "orv/log/findings.h"
#include "orv/log/json_output.h"
#include "orv/log/log_bytes.h"
#include "orv/log/text_printer.h"
#include "orv/log/words.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv::log {

namespace {

void PrintHead(TextPrinter& printer, const std::string& path, const Findings& findings) {
    const auto failed = std::count_if(findings.calls.begin(), findings.calls.end(),
                                      [](const Call& call) { return call.result == -1; });
    const Totals& totals = findings.totals;
    if (totals.lines == 0) {
        printer.PrintLine(Printable(path) + ": no line of a log is in it");
        return;
    }
    printer.PrintLine(Printable(path) + ": " +
                      Count(static_cast<std::int64_t>(totals.lines), "line") + " from " +
                      StampWords(totals.firstStamp) + " to " + StampWords(totals.lastStamp) + ", " +
                      Count(static_cast<std::int64_t>(findings.calls.size()), "call") + ", " +
                      std::to_string(failed) + " failed");
    if (!findings.hasResults) {
        printer.PrintLine(findings.threads == Threads::One
                              ? "No result lines: durations assume that the host calls from one "
                                "thread. If not, use --threads many."
                              : "No result lines: results and durations are mostly unknown.");
    }
    printer.PrintLine("");
}

void PrintText(const std::string& path, const Findings& findings) {
    TextPrinter printer(stdout, terminal::IsOutput());
    PrintHead(printer, path, findings);
    auto note = findings.notes.begin();
    for (const Call& call : findings.calls) {
        for (; note != findings.notes.end() && note->line - 1 < call.line - 1; ++note) {
            printer.Print(*note);
        }
        printer.Print(call);
    }
    for (; note != findings.notes.end(); ++note) {
        printer.Print(*note);
    }
    printer.Flush();
}

}  // namespace

void ExplainLog(const std::string& path, Threads threads, bool json) {
    const Findings findings = FindAll(ReadLogFile(path), threads);
    if (json) {
        WriteJson(stdout, path, findings);
    } else {
        PrintText(path, findings);
    }
}

}  // namespace orv::log
