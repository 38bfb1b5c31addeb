// Collects the calls and notes (other observations) that the log reader finds in a log.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "orv/log/infer/overview.h"

namespace orv::log {

struct Findings {
    std::vector<Call> calls;
    std::vector<Note> notes;
};

inline Findings FindAll(std::string_view bytes, Threads threads) {
    LogFile log = LogFile::OfBytes(std::string(bytes));
    const Overview overview = Survey(log, threads);
    Findings findings{{}, overview.notes};
    ForEachCall(log, overview, [&](const Call& call) { findings.calls.push_back(call); });
    return findings;
}

}  // namespace orv::log
