#pragma once

#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "orv/log/infer/causes.h"
#include "orv/log/infer/overview.h"

namespace orv::log {

class TextPrinter {
  public:
    TextPrinter(std::FILE* file, bool colours);

    // Similar calls that need no explanation share one line, as do polls of one link or session.
    // Flush or a different call writes the line.
    void Print(const Call& call);
    void Print(const Note& note);
    void PrintLine(const std::string& text);
    void Flush();
    // Writes the pending line. Of several polls, writes only the first; Flush writes the number of
    // the others.
    void Show();

  private:
    void PrintCall(const Call& call, std::uint64_t times);
    void PrintFailures(const Call& call);
    void PrintSuspects(const Call& call, const Suspects& suspects);
    void Detail(const std::string& text);
    std::string Coloured(const char* colour, const std::string& text) const;

    std::FILE* file;
    bool colours;
    std::optional<Call> pending;
    std::uint64_t pendingTimes = 0;
    std::uint64_t pendingShown = 0;  // how many of `pendingTimes` were written: 0 or 1
    std::set<Cause> told;            // causes whose advice was printed
    std::set<NoteKind> toldNotes;
};

// Prints a summary, then the calls and notes of a log.
void PrintLog(std::FILE* file, bool colours, LogFile& log, Threads threads);

}  // namespace orv::log
