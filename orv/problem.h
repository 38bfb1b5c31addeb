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
    Refuted = 7,
};

// A failure. The text states what failed and what to do next. It may contain untrusted names, so
// print it with Report or Printable only.
struct Problem : std::runtime_error {
    Problem(ExitStatus exitStatus, const std::string& text)
        : std::runtime_error(text), status(exitStatus) {}
    ExitStatus status;
    bool isReported = false;
};

// Prints the text on the standard error, with control characters escaped. A second call for the
// same problem prints nothing. Returns the status.
ExitStatus Report(Problem& problem);

}  // namespace orv
