// The steps that run with faults: each export that calls the platform, and both callbacks.
#pragma once

#include <functional>

#include "tests/support/world.h"

namespace orv {

// A call that runs with one fault. If it fails, State() must not change. A callback returns
// nothing, so for a callback, `run` returns the number of values or bytes that the event stored.
struct Step {
    const char* name;
    const char* trace;              // expected trace line
    std::function<void()> arrange;  // creates the initial state
    std::function<ResultCode()> run;
    ResultCode success;
    std::function<void()> undo;  // called after a success
    // For callbacks: element n is the result of `run` if platform call n fails. The first
    // `untraced` calls precede the trace line.
    int untraced = 0;
    std::vector<ResultCode> leaves = {};
};

// Returns a text of the links and sessions that the exports report.
std::string State();

extern const std::vector<Step> Steps;

}  // namespace orv
