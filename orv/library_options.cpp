#include "orv/library_options.h"

#include <cstdio>
#include <set>

#include "orv/library/diagnosis.h"
#include "orv/terminal/printable.h"

namespace orv {

namespace {

std::filesystem::path Beside(const std::filesystem::path& name) {
    return module::OwnFolder() / name;
}

std::filesystem::path LibraryFile(const LibraryOptions& options) {
    if (!options.library.empty()) {
        return PathOf(options.library);
    }
    const std::filesystem::path simulated = Beside("simulated") / module::LibraryName;
    return options.simulated && std::filesystem::exists(simulated) ? simulated
                                                                   : Beside(module::LibraryName);
}

// Returns the file of a scenario. `named` is a path, or a name in scenarios/ beside the library.
std::filesystem::path ScenarioFile(const Library& library, const std::string& named) {
    const std::filesystem::path folder = library.File().parent_path() / "scenarios";
    std::filesystem::path path = PathOf(named);
    std::filesystem::path shipped = folder / PathOf(named + ".json");
    std::error_code missing;
    if (std::filesystem::exists(path, missing) && !std::filesystem::is_directory(path, missing)) {
        return path;
    }
    if (named.find_first_of("/\\") == std::string::npos &&
        std::filesystem::exists(shipped, missing)) {
        return shipped;
    }
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder, missing)) {
        const std::filesystem::path file = entry.path().filename();
        if (file.extension() == ".json" && file.stem().extension().empty()) {
            names.insert(orv::TextOf(file.stem()));
        }
    }
    std::string list;
    for (const std::string& name : names) {
        list += (list.empty() ? ", or one of " : ", ") + name;
    }
    throw Problem(ExitStatus::FileFailed,
                  "there is no scenario " + named + ": give the path of a scenario file" + list);
}

}  // namespace

void AddLibraryOptions(Command command, LibraryOptions& options) {
    const char* heading = "The library";
    command.AddText("--library", options.library, "The library's file; default: the one beside orv")
        .Named("PATH")
        .Under(heading);
    command
        .AddOptionalText(
            "--simulated",
            [&options](const std::string& scenario) {
                options.simulated = true;
                options.scenario = scenario;
            },
            "Uses a simulated Bluetooth world instead of the radio; with a scenario, the world "
            "that the file describes (a path, or a name in scenarios/ beside the library)")
        .Named("[SCENARIO]")
        .Under(heading);
    command
        .AddFlag("--log", options.log,
                 "Switches the library's log on and prints its path; an existing log is renamed")
        .Under(heading);
}

Library OpenLibrary(const LibraryOptions& options) {
    Library library(LibraryFile(options));
    if (options.simulated && !library.IsSimulated()) {
        throw Problem(ExitStatus::NoLibrary,
                      TextOf(library.File()) +
                          " is not the simulated library. Copy that to simulated/ beside orv, or "
                          "give its path with --library PATH");
    }
    if (!options.scenario.empty()) {
        library.PlayScenario(ScenarioFile(library, options.scenario), options.simulatedTime);
    }
    if (options.log) {
        const std::filesystem::path kept = library.EnableLog();
        if (!kept.empty()) {
            fprintf(stderr, "the previous log was renamed to %s\n",
                    Printable(TextOf(kept)).c_str());
        }
        fprintf(stderr, "log: %s\n", Printable(TextOf(library.LogFile())).c_str());
    }
    return library;
}

std::string WhyNoRadioIsOn(const Library& library) {
    return library.IsSimulated() ? "no Bluetooth radio is on: switch Bluetooth on in the scenario"
                                 : WhyNotAvailable();
}

void RequireBluetooth(Library& library) {
    if (library.BluetoothAvailable() == ORV_FAILED) {
        throw Problem(ExitStatus::NoBluetooth, WhyNoRadioIsOn(library) + "; or try --simulated");
    }
}

}  // namespace orv
