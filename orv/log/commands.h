// The part of the command line that reads logs: `orv log explain`, `follow` and `report`.
#pragma once

#include <CLI/CLI.hpp>

namespace orv::log {

// `exitStatus` is set when one of the commands has run: 0, 1 when the file cannot be read or
// written.
void AddLogCommands(CLI::App& app, int& exitStatus);

}  // namespace orv::log
