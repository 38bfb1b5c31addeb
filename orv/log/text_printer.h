// Calls and notes as lines for people.
#pragma once

#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "orv/log/analysis.h"
#include "orv/log/cause.h"

namespace orv::log {

class TextPrinter {
  public:
    TextPrinter(std::FILE* file, bool colours);

    // Calls that are alike, or polls of one thing, and need no explanation share one line, written
    // when the next one differs or by Flush.
    void Print(const Call& call);
    void Print(const Note& note);
    void PrintLine(const std::string& text);
    void Flush();

  private:
    void PrintCall(const Call& call, int times);
    void PrintFailures(const Call& call);
    void PrintSuspects(const Call& call, const Suspects& suspects);
    void Detail(const std::string& text);
    std::string Coloured(const char* colour, const std::string& text) const;

    std::FILE* file;
    bool colours;
    std::optional<Call> pending;
    int pendingTimes = 0;
    std::set<Cause> told;  // causes whose advice has been given
    std::set<NoteKind> toldNotes;
};

}  // namespace orv::log
