#include <cstdio>

#include "orv/commands/commands.h"
#include "orv/terminal/printable.h"

namespace orv {

void AddCheckCommand(Command program, LibraryOptions& libraryOptions) {
    Command command = program.AddCommand(
        "check", "Reports whether Bluetooth is available, and which library is loaded.");
    AddLibraryOptions(command, libraryOptions);
    command.AddFooter("orv check && orv scan",
                      {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage,
                       ExitStatus::NoLibrary, ExitStatus::FileFailed});
    command.Does([&libraryOptions] {
        Library library = OpenLibrary(libraryOptions);
        printf("library    %s\n", Printable(TextOf(library.File())).c_str());
        printf("version    %s%s\n", Printable(library.Version()).c_str(),
               library.IsSimulated() ? ", simulated" : "");
        fflush(stdout);
        const bool available = library.BluetoothAvailable() != ORV_FAILED;
        printf("Bluetooth  %s\n", available ? "available" : "not available");
        fflush(stdout);
        if (!available) {
            throw Problem(ExitStatus::NoBluetooth, WhyNoRadioIsOn(library));
        }
    });
}

}  // namespace orv
