// orv check: is there a radio, and which library is this?
#include <cstdio>

#include "orv/commands/commands.h"
#include "orv/terminal/printable.h"

namespace orv {

void AddCheckCommand(CLI::App& app, SessionOptions& session) {
    CLI::App* command = app.add_subcommand(
        "check", "Says whether Bluetooth is available, and which library answers.");
    AddSessionOptions(*command, session);
    command->footer(HelpFooter("orv check && orv scan",
                               {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage,
                                ExitStatus::NoLibrary, ExitStatus::FileFailed}));
    command->callback([&session] {
        Library library = OpenLibrary(session);
        printf("library    %s\n", Printable(TextOf(library.File())).c_str());
        printf("version    %s%s\n", Printable(library.Version()).c_str(),
               library.IsSimulated() ? ", simulated" : "");
        fflush(stdout);
        const bool available = library.BluetoothAvailable() != ORV_FAILED;
        printf("Bluetooth  %s\n", available ? "available" : "not available");
        fflush(stdout);
        if (!available) {
            throw Problem(ExitStatus::NoBluetooth,
                          "no Bluetooth radio is on: switch Bluetooth on in the system's settings, "
                          "or plug a Bluetooth adapter in");
        }
    });
}

}  // namespace orv
