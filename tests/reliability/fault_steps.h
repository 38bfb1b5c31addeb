// The calls that are tested with faults: each export that calls the platform, and the library's two
// callbacks.
#pragma once

#include <functional>

#include "tests/support/world.h"

namespace orv {

// `run` calls an export or callback while one fault occurs. If the call fails, State() must not
// change. A callback has no result, so `run` returns how many values or bytes it stored.
struct Step {
    const char* name;
    const char* trace;
    std::function<void()> arrange;
    std::function<ResultCode()> run;
    ResultCode success;
    std::function<void()> undo;  // called after a success
    // For callbacks: leaves[0] is the result of `run` if the first platform call fails, and so on.
    // The first `untraced` platform calls precede the trace line.
    int untraced = 0;
    std::vector<ResultCode> leaves = {};
};

// Returns a text with the device count of each session and whether the link exists.
std::string State();

extern const std::vector<Step> Steps;

}  // namespace orv
