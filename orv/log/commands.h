// The part of the command line that reads logs: `orv log explain`, `follow` and `report`.
#pragma once

#include <CLI/CLI.hpp>

namespace orv::log {

// The commands raise a Problem when they cannot do what was asked.
void AddLogCommands(CLI::App& app);

}  // namespace orv::log
