// The commands `orv log explain`, `follow` and `report`.
#pragma once

#include <string>

#include "orv/log/infer/call_tracker.h"
#include "orv/options.h"

namespace orv::log {

// Adds the command group `log`. Its commands throw a Problem if they fail.
void AddLogCommands(Command program);

// Writes the report of a log to `output`. Throws a Problem if it cannot read or write a file.
void WriteReport(const std::string& path, Threads threads, const std::string& output);

}  // namespace orv::log
