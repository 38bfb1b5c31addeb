// What all commands share: the options about the library, and the library that they name.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "orv/library/library.h"
#include "orv/problem.h"

namespace orv {

struct SessionOptions {
    std::string library;
    std::string scenario;
    bool simulated = false;
    bool log = false;
};

// The options may stand before the command and behind it.
void AddSessionOptions(CLI::App& app, SessionOptions& options);

// What the help says below the options: an example, and the exit statuses.
std::string HelpFooter(const std::string& example, const std::vector<ExitStatus>& statuses);

// Loads the library, plays the scenario, switches the log on, as the options say.
Library OpenLibrary(const SessionOptions& options);

// Throws a Problem unless there is a radio that is on.
void RequireBluetooth(Library& library);

}  // namespace orv
