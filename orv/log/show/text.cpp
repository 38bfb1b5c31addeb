#include "orv/log/show/text.h"

#include <algorithm>

#include "orv/log/infer/causes.h"
#include "orv/log/show/cause_texts.h"
#include "orv/log/show/format.h"
#include "orv/terminal/printable.h"

namespace orv::log {

namespace {

constexpr const char* Red = "31";
constexpr const char* Yellow = "33";
constexpr const char* Green = "32";
constexpr const char* Dim = "2";

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string OutcomeWords(const Call& call) {
    if (!call.result) {
        return "unknown";
    }
    if (*call.result == -1) {
        return call.resultLogged ? "failed" : "failed, it seems";
    }
    return *call.result == 0 ? "ok" : "ok, " + std::to_string(*call.result);
}

// Returns whether hosts repeat the call to check for new data.
bool IsPoll(const Call& call) {
    return call.subject.function == Function::GetDeviceCount ||
           call.subject.function == Function::GetDeviceInfo ||
           call.subject.function == Function::Receive;
}

bool AreAlike(const Call& one, const Call& other) {
    if (IsPoll(one) && IsPoll(other)) {
        return one.subject.handle == other.subject.handle &&
               FactsOf(one.subject.function).family == FactsOf(other.subject.function).family &&
               one.result.has_value() == other.result.has_value();
    }
    return one.subject == other.subject && OutcomeWords(one) == OutcomeWords(other);
}

std::string SuspectWords(const Call& call, const Suspect& suspect) {
    std::string words(TextsOf(suspect.cause).what);
    if (suspect.steps != 0) {
        words += ", " + StepWords(call.subject.function, suspect.steps);
    }
    return words;
}

void PrintHead(TextPrinter& printer, const std::string& name, const Overview& overview) {
    const Totals& totals = overview.totals;
    printer.PrintLine(Printable(name) + ": " + Counted(totals.lines, "line") + " from " +
                      StampWords(totals.firstStamp) + " to " + StampWords(totals.lastStamp) + ", " +
                      Counted(overview.calls, "call") + ", " +
                      std::to_string(overview.failedCalls) + " failed");
    if (overview.results.none()) {
        printer.PrintLine(overview.threads == Threads::One
                              ? "No result lines: durations assume that the host calls from one "
                                "thread. If not, use --threads many."
                              : "No result lines: results and durations are mostly unknown.");
    }
    printer.PrintLine("");
}

}  // namespace

TextPrinter::TextPrinter(std::FILE* to, bool withColours) : file(to), colours(withColours) {}

std::string TextPrinter::Coloured(const char* colour, const std::string& text) const {
    return colours ? "\x1B[" + std::string(colour) + "m" + text + "\x1B[0m" : text;
}

void TextPrinter::PrintLine(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), file);
    std::fputc('\n', file);
}

void TextPrinter::Detail(const std::string& text) {
    PrintLine("              " + text);
}

void TextPrinter::Print(const Call& call) {
    const Suspects suspects = HasSign(call) ? Explain(call) : Suspects{};
    const bool quiet = suspects.empty() && call.failures.count == 0;
    if (pending && quiet && AreAlike(*pending, call)) {
        ++pendingTimes;
        return;
    }
    Flush();
    if (quiet) {
        pending = call;
        pendingTimes = 1;
        return;
    }
    PrintCall(call, 1);
    PrintFailures(call);
    PrintSuspects(call, suspects);
}

void TextPrinter::Flush() {
    if (pending && pendingTimes > pendingShown) {
        PrintCall(*pending, pendingTimes);
    }
    pending.reset();
    pendingShown = 0;
    std::fflush(file);
}

void TextPrinter::Show() {
    if (!pending || !IsPoll(*pending)) {
        Flush();
        return;
    }
    if (pendingShown == 0) {
        PrintCall(*pending, 1);
        pendingShown = 1;
    }
    std::fflush(file);
}

void TextPrinter::PrintCall(const Call& call, std::uint64_t times) {
    const bool failed = call.result == -1;
    const char* colour = failed ? Red : call.result ? Green : Dim;
    PrintLine(Coloured(Dim, StampWords(call.stamp)) + "  " + Padded(CallWords(call.subject), 44) +
              "  " + Coloured(colour, Padded(OutcomeWords(call), 10)) + "  " +
              (times == 1     ? DurationWords(call.duration)
               : IsPoll(call) ? "and " + Counted(times - 1, "more poll")
                              : std::to_string(times) + " times"));
}

void TextPrinter::PrintFailures(const Call& call) {
    const Failures& failures = call.failures;
    if (failures.count == 0) {
        return;
    }
    std::string words = Counted(failures.count, "failure line") + ", the first after " +
                        std::to_string(failures.first) + " ms: " + Printable(failures.text);
    if (call.result.value_or(-1) >= 0) {
        words += " (of a callback or another call)";
    } else if (failures.owner == Owner::ThisOrCallback) {
        words += " (or it is a callback's)";
    } else if (failures.owner == Owner::ThisOrOther) {
        words += " (or it is another call's or a callback's)";
    }
    Detail(words);
}

void TextPrinter::PrintSuspects(const Call& call, const Suspects& suspects) {
    if (suspects.size() > 1 || !call.result) {
        Detail(call.result == -1 ? "Possible causes, the likeliest first:"
               : call.result     ? "It was slow. Possible causes, the likeliest first:"
               : call.isHanging  ? "It has not returned. Possible causes, the likeliest first:"
                                 : "If it failed: possible causes, the likeliest first:");
    }
    for (const Suspect& suspect : suspects) {
        Detail(Coloured(Yellow, "* " + SuspectWords(call, suspect)));
        if (told.insert(suspect.cause).second) {
            Detail("    sign: " + std::string(TextsOf(suspect.cause).tell));
            Detail("    do:   " + std::string(TextsOf(suspect.cause).advice));
        }
    }
}

void TextPrinter::Print(const Note& note) {
    Flush();
    const std::string place =
        note.line > 0 ? Coloured(Dim, StampWords(note.stamp)) + "  " : std::string(14, ' ');
    PrintLine(place + Coloured(Yellow, "Note: " + FactsOf(note)));
    if (!toldNotes.insert(note.kind).second) {
        return;
    }
    const NoteTexts& texts = TextsOf(note.kind);
    Detail("    why:  " + std::string(texts.means));
    if (!texts.advice.empty()) {
        Detail("    do:   " + std::string(texts.advice));
    }
}

void PrintLog(std::FILE* file, bool colours, LogFile& log, Threads threads) {
    const Overview overview = Survey(log, threads);
    TextPrinter printer(file, colours);
    PrintHead(printer, log.Name(), overview);
    auto note = overview.notes.begin();
    ForEachCall(log, overview, [&](const Call& call) {
        for (; note != overview.notes.end() && note->line - 1 < call.line - 1; ++note) {
            printer.Print(*note);
        }
        printer.Print(call);
    });
    for (; note != overview.notes.end(); ++note) {
        printer.Print(*note);
    }
    printer.Flush();
    if (overview.failedCalls > 0) {
        printer.PrintLine("");
        printer.PrintLine("What to do about each symptom: docs/troubleshooting.md");
    }
}

}  // namespace orv::log
