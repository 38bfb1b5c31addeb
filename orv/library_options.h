#pragma once

#include <string>

#include "orv/library/library.h"
#include "orv/options.h"

namespace orv {

struct LibraryOptions {
    std::string library;
    std::string scenario;
    bool simulated = false;
    bool log = false;
    bool simulatedTime = false;
};

// Adds the options to a command or the program, so that users may give them before or after the
// command.
void AddLibraryOptions(Command command, LibraryOptions& options);

// Loads the library, plays the scenario and switches the log on, as the options require.
Library OpenLibrary(const LibraryOptions& options);

// Returns why no radio is on. Call it after BluetoothAvailable has failed.
std::string WhyNoRadioIsOn(const Library& library);

// Throws a Problem if no radio is on.
void RequireBluetooth(Library& library);

}  // namespace orv
