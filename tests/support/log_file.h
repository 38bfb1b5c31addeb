#pragma once

#include <string>
#include <vector>

#include "quelvixwinlib.h"

namespace orv {

using Lines = std::vector<std::string>;

constexpr const char* PlatformFailure = "Exception: unknown type";
constexpr const char* OutOfMemory = "Exception: bad allocation";

std::string LibraryFile();
std::string LogPath();

// Returns all bytes of the log, or an empty string if it does not exist.
std::string LogBytes();

// Returns the texts after the time stamps. A text may contain line ends: only CR LF before a stamp
// or at the end of the file ends a line. Fails the test if a stamp or line end is missing.
Lines LogLines();

// Empties the log and returns the lines that `body` writes.
template <typename Body>
Lines LinesOf(Body&& body) {
    Logging_Enable();
    body();
    return LogLines();
}

}  // namespace orv
