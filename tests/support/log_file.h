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

// Returns the texts after the time stamps. A line ends at a carriage return and line feed that
// precede the next stamp or the end of the file, so a text may contain line ends. Fails the test if
// a stamp or a line end is missing.
Lines LogLines();

// Empties the log and returns the lines that `body` writes.
template <typename Body>
Lines LinesOf(Body&& body) {
    Logging_Enable();
    body();
    return LogLines();
}

}  // namespace orv
