// Each function reads the whole log, so that it need not be kept in memory.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "orv/log/infer/analysis.h"
#include "orv/log/read/log_file.h"

namespace orv::log {

ResultUse FindResults(LogFile& log);

Totals Analyse(LogFile& log, ResultUse results, Threads threads, Listener& listener);

struct Overview {
    ResultUse results;
    Threads threads = Threads::One;
    Totals totals;
    std::uint64_t calls = 0;
    std::uint64_t failedCalls = 0;
    std::vector<Note> notes;  // ordered by line; notes about the whole log are last
};

Overview Survey(LogFile& log, Threads threads);

// Passes the calls to `take` in the order in which they began. If more than 50,000 other calls end
// during a call, `take` may receive some of them first.
void ForEachCall(LogFile& log, const Overview& overview,
                 const std::function<void(const Call&)>& take);

}  // namespace orv::log
