// What the fault loops run: each export that asks the platform for something, and both callbacks.
#pragma once

#include <functional>

#include "tests/support/world.h"

namespace orv {

// What is run with one fault. The state before and after tells whether a failure left traces. A
// callback returns nothing; how much of its event arrived is taken for its result.
struct Step {
    const char* name;
    const char* trace;              // its trace line
    std::function<void()> arrange;  // what must exist before
    std::function<ResultCode()> run;
    ResultCode success;
    std::function<void()> undo;  // after a success
    // Of a callback only: the platform calls in whose place the n-th fails, by what then arrives. A
    // fault of the first `untraced` comes before the trace line.
    int untraced = 0;
    std::vector<ResultCode> leaves = {};
};

// Links and sessions as the host can see them.
std::string State();

extern const std::vector<Step> Steps;

}  // namespace orv
