// The diagnostics log as it lies on disk.
#pragma once

#include <string>
#include <vector>

#include "quelvixwinlib.h"

namespace orv {

using Lines = std::vector<std::string>;

// What a failure leaves in the log: any failure of the platform, and its code for "out of memory".
constexpr const char* PlatformFailure = "Exception: unknown type";
constexpr const char* OutOfMemory = "Exception: bad allocation";

// The file that the library under test was loaded from, and the log beside it.
std::string LibraryFile();
std::string LogPath();

// All bytes of the file; empty when there is none.
std::string LogBytes();

// The texts behind the time stamps. A line ends where a carriage return and line feed are followed
// by the next stamp or the end, so a text may hold line ends itself. Fails the running test when
// the file does not consist of stamped lines.
Lines LogLines();

// The lines that `body` writes; empties the log before.
template <typename Body>
Lines LinesOf(Body&& body) {
    Logging_Enable();
    body();
    return LogLines();
}

}  // namespace orv
