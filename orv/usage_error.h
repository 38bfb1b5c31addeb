// Explains what is wrong with a command line.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orv {

// Returns whether the arguments name an unknown command.
bool HasUnknownCommand(CLI::App* program);

// Returns what is wrong and which help to read.
std::string WhyWrong(CLI::App* program, const CLI::ParseError& error);

}  // namespace orv
