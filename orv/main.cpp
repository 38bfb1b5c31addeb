// orv: a command-line host for devices of the ORV family.
#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "orv/commands/commands.h"
#include "orv/log/commands.h"
#include "orv/problem.h"
#include "orv/scan/search.h"
#include "orv/terminal/terminal.h"

namespace {

// Moves --simulated behind a device that follows it, because the parser would read the device as a
// scenario.
void SeparateScenario(std::vector<std::string>& arguments) {
    for (auto at = arguments.begin(); at != arguments.end(); ++at) {
        const bool isLast = arguments.end() - at == 1;
        if (*at == "--simulated=" || (*at == "--simulated" && !isLast && at[1].empty())) {
            throw orv::Problem(orv::ExitStatus::BadUsage,
                               "--simulated: the scenario's name is empty. Leave it out for the "
                               "default world");
        }
        if (isLast) {
            return;
        }
        if (*at == "--simulated" && orv::IsDevice(at[1]) && !at[1].ends_with(".json")) {
            std::rotate(arguments.begin(), at, at + 1);
        }
    }
}

// Accepts `orv help scan` and `orv --version`, as other programs do.
void ReplaceHabits(std::vector<std::string>& arguments) {
    if (!arguments.empty() && arguments.front() == "help") {
        arguments.erase(arguments.begin());
        arguments.push_back("--help");
    }
    // --version may follow options of the library, but not a command.
    if (!arguments.empty() && arguments.front().starts_with('-')) {
        std::replace(arguments.begin(), arguments.end(), std::string("--version"),
                     std::string("version"));
    }
}

orv::ExitStatus Run(std::vector<std::string> arguments) {
    orv::CommandLine line(
        "orv", "Bluetooth Low Energy devices whose names begin with \"ORV\", on a command line.",
        "orv --simulated scan");
    orv::Command program = line.Program();
    orv::LibraryOptions library;
    orv::AddLibraryOptions(program, library);
    orv::AddCheckCommand(program, library);
    orv::AddScanCommand(program, library);
    orv::AddTalkCommand(program, library);
    orv::AddSendCommand(program, library);
    orv::AddReceiveCommand(program, library);
    orv::AddBridgeCommand(program, library);
    orv::AddDoctorCommand(program, library);
    orv::log::AddLogCommands(program);
    orv::AddVersionCommand(program, library);
    try {
        ReplaceHabits(arguments);
        SeparateScenario(arguments);
        return line.Run(std::move(arguments));
    } catch (orv::Problem& problem) {
        return orv::Report(problem);
    } catch (const std::exception& failure) {
        orv::Problem problem(orv::ExitStatus::FileFailed, failure.what());
        return orv::Report(problem);
    }
}

// Returns an error status if the output was not written. Prints nothing if the reader closed the
// pipe.
int StatusWithOutput(int status) {
    if (fflush(stdout) == 0 && !ferror(stdout)) {
        return status;
    }
    if (errno != EPIPE) {
        fputs("orv: the output cannot be written. Check the free space and your permissions\n",
              stderr);
    }
    return status != 0 ? status : static_cast<int>(orv::ExitStatus::FileFailed);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return StatusWithOutput(static_cast<int>(Run(orv::terminal::Start(argc, argv))));
    } catch (...) {
        fputs("orv: out of memory\n", stderr);
        return static_cast<int>(orv::ExitStatus::FileFailed);
    }
}
