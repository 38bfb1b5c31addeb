#pragma once

#include <gtest/gtest.h>

#include <string>

#include "orv/log/infer/causes.h"
#include "orv/log/show/cause_texts.h"
#include "support/world.h"
#include "tests/orv/findings.h"

namespace orv {

template <typename Export>
ResultCode CallLogged(bool results, Export&& call) {
    const std::int64_t start = OrvWorld_Now();
    const std::size_t before = LogLines().size();
    const ResultCode result = call();
    if (results) {
        const std::string line = "Returned " + std::to_string(result) + " after " +
                                 std::to_string(OrvWorld_Now() - start) +
                                 " ms: " + LogLines()[before];
        Logging_AppendLine(line.data(), static_cast<std::int32_t>(line.size()));
    }
    return result;
}

inline log::Findings ReadLog(log::Threads threads = log::Threads::One) {
    return log::FindAll(LogBytes(), threads);
}

// Requires that the log reader names `cause` among the possible causes of `call`. If `step` is
// not -1, the cause must be possible for the call's platform operation with this index.
inline void ExpectNamed(const log::Call& call, log::Cause cause, int step = -1) {
    std::string named;
    for (const log::Suspect& suspect : log::Explain(call)) {
        named += std::string(log::TextsOf(suspect.cause).id) + ' ';
        if (suspect.cause == cause &&
            (step < 0 || suspect.steps == 0 || suspect.steps >> step & 1)) {
            return;
        }
    }
    ADD_FAILURE() << log::TextsOf(cause).id << ' ' << step << " is not among: " << named;
}

}  // namespace orv
