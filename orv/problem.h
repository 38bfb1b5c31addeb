// How a run of orv ends, and what is thrown when it cannot do what it was asked to.
#pragma once

#include <stdexcept>
#include <string>

namespace orv {

enum class ExitStatus {
    Done = 0,
    NoBluetooth = 1,
    BadUsage = 2,
    NoLibrary = 3,
    NoLink = 4,
    Stopped = 5,
    FileFailed = 6,
};

// Its text says what is wrong and what to do next. It is printable: what came from elsewhere was
// made harmless before it was put in.
struct Problem : std::runtime_error {
    Problem(ExitStatus exitStatus, const std::string& text)
        : std::runtime_error(text), status(exitStatus) {}
    ExitStatus status;
};

}  // namespace orv
