// orv: a command-line host for devices of the ORV family.
#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "orv/address.h"
#include "orv/commands/commands.h"
#include "orv/log/commands.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace {

// An address behind --simulated is not its scenario, but the device of the command. In front of the
// command the option takes nothing, because a command's name follows it.
void SeparateScenario(std::vector<std::string>& arguments) {
    for (auto at = arguments.begin(); arguments.end() - at > 1; ++at) {
        if (*at == "--simulated" && orv::FindAddress(at[1])) {
            std::rotate(arguments.begin(), at, at + 1);
        }
    }
}

int Run(std::vector<std::string> arguments) {
    CLI::App app("Bluetooth Low Energy devices whose names begin with \"ORV\", on a command line.",
                 "orv");
    app.require_subcommand(1);
    app.footer(
        "\nExample:\n  orv --simulated scan\n\nHelp on a command, with its exit statuses:\n"
        "  orv scan --help");
    orv::SessionOptions session;
    orv::AddSessionOptions(app, session);
    orv::AddCheckCommand(app, session);
    orv::AddScanCommand(app, session);
    orv::AddTalkCommand(app, session);
    orv::AddSendCommand(app, session);
    orv::AddReceiveCommand(app, session);

    orv::log::AddLogCommands(app);
    SeparateScenario(arguments);
    try {
        std::reverse(arguments.begin(), arguments.end());  // as the parser wants them
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : static_cast<int>(orv::ExitStatus::BadUsage);
    } catch (const orv::Problem& problem) {
        fflush(stdout);
        fprintf(stderr, "orv: %s\n", problem.what());
        return static_cast<int>(problem.status);
    } catch (const std::exception& failure) {
        fprintf(stderr, "orv: %s\n", orv::Printable(failure.what()).c_str());
        return static_cast<int>(orv::ExitStatus::FileFailed);
    }
    return static_cast<int>(orv::ExitStatus::Done);
}

// What was printed has to be where it was meant to go. Who closes a pipe wants no more of it, and
// no complaint.
int StatusWithOutput(int status) {
    if (fflush(stdout) == 0 && !ferror(stdout)) {
        return status;
    }
    if (errno != EPIPE) {
        fputs("orv: the output cannot be written: is there room, and may you write there?\n",
              stderr);
    }
    return status != 0 ? status : static_cast<int>(orv::ExitStatus::FileFailed);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return StatusWithOutput(Run(orv::terminal::Start(argc, argv)));
    } catch (...) {
        fputs("orv: out of memory\n", stderr);
        return static_cast<int>(orv::ExitStatus::FileFailed);
    }
}
