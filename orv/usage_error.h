#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orv {

bool HasUnknownCommand(CLI::App* program);

// Returns a message that states the mistake in a command line and how to get help.
std::string WhyWrong(CLI::App* program, const CLI::ParseError& error);

}  // namespace orv
