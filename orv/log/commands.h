#pragma once

#include <string>

#include "orv/log/infer/call_tracker.h"
#include "orv/options.h"

namespace orv::log {

// Adds `orv log explain`, `follow` and `report`, which throw a Problem if they fail.
void AddLogCommands(Command program);

// Writes the HTML report of the log `path` to the file `output`. Throws a Problem if it cannot
// read or write a file.
void WriteReport(const std::string& path, Threads threads, const std::string& output);

}  // namespace orv::log
