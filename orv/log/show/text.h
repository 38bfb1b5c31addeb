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

    // Similar calls, such as polls of one link, share one line if they need no explanation. Flush
    // or a different call writes this line.
    void Print(const Call& call);
    void Print(const Note& note);
    void PrintLine(const std::string& text);
    void Flush();
    // Writes the pending line. Of repeated polls, writes only the first; Flush later writes the
    // number of further polls.
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

void PrintLog(std::FILE* file, bool colours, LogFile& log, Threads threads);

}  // namespace orv::log
