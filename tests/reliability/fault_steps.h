// The calls that are tested with faults: each export that calls the platform, and both callbacks.
#pragma once

#include <functional>

#include "tests/support/world.h"

namespace orv {

// A call during which one fault occurs. If it fails, State() must not change. A callback returns
// nothing, so its `run` returns the number of values or bytes that the event stored.
struct Step {
    const char* name;
    const char* trace;              // expected trace line
    std::function<void()> arrange;  // creates the initial state
    std::function<ResultCode()> run;
    ResultCode success;
    std::function<void()> undo;  // called after a success
    // For callbacks: `leaves` has the result of `run` if the first, second... platform call fails.
    // The first `untraced` platform calls precede the trace line.
    int untraced = 0;
    std::vector<ResultCode> leaves = {};
};

// Returns a text with the links and sessions that the exports report.
std::string State();

extern const std::vector<Step> Steps;

}  // namespace orv
