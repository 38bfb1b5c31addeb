#include <cstdio>

#include "orv/commands/commands.h"
#include "orv/terminal/printable.h"

namespace orv {

void AddVersionCommand(Command program, LibraryOptions& libraryOptions) {
    Command command =
        program.AddCommand("version", "Prints the versions of orv and of the library.");
    AddLibraryOptions(command, libraryOptions);
    command.AddFooter("orv version",
                      {ExitStatus::Done, ExitStatus::BadUsage, ExitStatus::NoLibrary});
    command.Does([&libraryOptions] {
        printf("orv %s, ", QUELVIXWINLIB_VERSION);
        try {
            const Library library = OpenLibrary(libraryOptions);
            printf("library %s%s %s\n", Printable(library.Version()).c_str(),
                   library.IsSimulated() ? ", simulated," : "",
                   Printable(TextOf(library.File())).c_str());
        } catch (const Problem&) {
            puts("no library");
            throw;
        }
    });
}

}  // namespace orv
