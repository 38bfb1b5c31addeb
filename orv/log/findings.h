// All calls and notes of a finished log, in the order of its lines.
#pragma once

#include <string_view>
#include <vector>

#include "orv/log/analysis.h"

namespace orv::log {

struct Findings {
    bool hasResults = false;
    Threads threads = Threads::One;
    Totals totals;
    std::vector<Call> calls;
    std::vector<Note> notes;  // those of the whole log last
};

Findings FindAll(std::string_view bytes, Threads threads);

}  // namespace orv::log
